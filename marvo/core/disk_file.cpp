#include "marvo/core/disk_file.h"

#include "marvo/core/small_letter.h"

#include <algorithm>
#include <iterator>
#include <string>

namespace vcore {

namespace {

constexpr const wchar_t* deviceNames[] = {L"con", L"prn", L"aux", L"nul", L"conin$", L"conout$", L"clock$"};
/// With one digit behind them.
constexpr const wchar_t* portNames[] = {L"com", L"lpt"};
constexpr wchar_t digits[] = L"0123456789\u00B9\u00B2\u00B3";

/// Small letters, and backslashes for slashes.
std::wstring uniform(std::wstring path) {
    std::transform(path.begin(), path.end(), path.begin(),
                   [](wchar_t c) { return c == L'/' ? L'\\' : smallLetter(c); });
    return path;
}

/// Whether the last part of a path, without what follows its first dot or colon, is a device's name.
bool endsInDevice(const std::wstring& path) {
    std::wstring word = path.substr(path.find_last_of(L'\\') + 1);
    if (word.size() > 1 && word[1] == L':') {
        word.erase(0, 2);
    }
    word.resize(std::min(word.find_first_of(L".:"), word.size()));
    word.resize(word.find_last_not_of(L' ') + 1);
    const auto is = [&word](const wchar_t* name) { return word == name; };
    if (std::any_of(std::begin(deviceNames), std::end(deviceNames), is)) {
        return true;
    }
    if (word.size() != 4 || std::wstring(digits).find(word[3]) == std::wstring::npos) {
        return false;
    }
    word.pop_back();
    return std::any_of(std::begin(portNames), std::end(portNames), is);
}

/// Whether a full path leads into the names of devices, or to the pipes of a computer.
bool isInDeviceNames(const std::wstring& path) {
    if (path.starts_with(L"\\\\.\\") || path.starts_with(L"\\\\?\\")) {
        const bool drive = path.size() > 6 && path[5] == L':' && path[6] == L'\\';
        return !drive && !path.starts_with(L"\\\\?\\unc\\") && !path.starts_with(L"\\\\?\\volume{");
    }
    if (!path.starts_with(L"\\\\")) {
        return false;
    }
    const std::wstring share = path.substr(std::min(path.find(L'\\', 2), path.size()));
    return share.starts_with(L"\\pipe\\") || share.starts_with(L"\\mailslot\\");
}

/// The full path as the system makes it, which is that of a device for whatever it takes for one.
std::wstring fullPath(const wchar_t* name) {
    const DWORD size = GetFullPathNameW(name, 0, nullptr, nullptr);
    std::wstring path(size, L'\0');
    path.resize(size != 0 ? GetFullPathNameW(name, size, path.data(), nullptr) : 0);
    return path;
}

} // namespace

bool namesDevice(const wchar_t* name) {
    return name && (endsInDevice(uniform(name)) || isInDeviceNames(uniform(fullPath(name))));
}

unsigned long whyNotReplaced(const wchar_t* name) {
    if (!name || !*name || namesDevice(name)) {
        return ERROR_INVALID_NAME;
    }
    const DWORD attributes = GetFileAttributesW(name);
    const bool kept = attributes != INVALID_FILE_ATTRIBUTES &&
                      (attributes & (FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_DIRECTORY)) != 0;
    return kept ? ERROR_ACCESS_DENIED : ERROR_SUCCESS;
}

handle openDiskFile(const wchar_t* name, DWORD access, DWORD share, DiskFile how, DWORD flags) {
    const bool makes = how != DiskFile::existing;
    if (const unsigned long error = makes               ? whyNotReplaced(name)
                                    : namesDevice(name) ? ERROR_INVALID_NAME
                                                        : ERROR_SUCCESS) {
        SetLastError(error);
        return handle();
    }
    const DWORD disposition = how == DiskFile::existing ? OPEN_EXISTING
                              : how == DiskFile::fresh  ? CREATE_NEW
                                                        : CREATE_ALWAYS;
    handle file(
        CreateFileW(name, access, share, nullptr, disposition, FILE_ATTRIBUTE_NORMAL | flags, nullptr));
    if (file && GetFileType(file.get()) != FILE_TYPE_DISK) {
        file.reset();
        SetLastError(ERROR_INVALID_NAME);
    }
    return file;
}

} // namespace vcore
