#include "app/disk.h"

namespace app {

namespace {

/// Letters as a file system without letter case takes them, as far as Latin-1; separators alike.
wchar_t folded(wchar_t letter) {
    if (letter == L'/') {
        return L'\\';
    }
    const bool upper =
        (letter >= L'A' && letter <= L'Z') || (letter >= 0xc0 && letter <= 0xde && letter != 0xd7);
    return upper ? static_cast<wchar_t>(letter + 0x20) : letter;
}

} // namespace

std::wstring joined(const std::wstring& folder, const std::wstring& name) {
    const bool separated = folder.empty() || folder.back() == L'\\' || folder.back() == L'/';
    return separated ? folder + name : folder + L"\\" + name;
}

std::wstring nameOf(const std::wstring& path) {
    return path.substr(path.find_last_of(L"\\/") + 1);
}

std::wstring folderOf(const std::wstring& path) {
    const std::size_t separator = path.find_last_of(L"\\/");
    return separator == path.npos ? L"" : path.substr(0, separator);
}

bool samePath(const std::wstring& a, const std::wstring& b) {
    if (a.size() != b.size()) {
        return false;
    }
    for (std::size_t i = 0; i < a.size(); ++i) {
        if (folded(a[i]) != folded(b[i])) {
            return false;
        }
    }
    return true;
}

} // namespace app
