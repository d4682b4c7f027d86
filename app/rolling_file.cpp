#include "app/rolling_file.h"

#include "app/clip_file.h"
#include "app/recording_name.h"

#include <algorithm>
#include <utility>

namespace app {

namespace {

constexpr std::size_t keptFiles = 2;
constexpr std::int64_t mostLengths = 3;

/// Whether a file has a name that `recordingName` gives; nothing else in the folder is ever deleted.
bool isOurs(const std::wstring& name) {
    constexpr wchar_t form[] = L"0000-00-00 00-00-00";
    constexpr std::size_t length = std::size(form) - 1;
    for (std::size_t i = 0; i < length; ++i) {
        const bool digit = i < name.size() && name[i] >= L'0' && name[i] <= L'9';
        if (i >= name.size() || (form[i] == L'0' ? !digit : name[i] != form[i])) {
            return false;
        }
    }
    return name.ends_with(L".avi") || name.ends_with(L".raw");
}

} // namespace

RollingFile::RollingFile(Disk& disk, const std::wstring& folder, std::wstring extension)
    : disk_(disk), folder_(joined(folder, L"rolling")), extension_(std::move(extension)) {}

std::wstring RollingFile::next(std::int64_t timeOfDay_ms, std::wstring& why) {
    if (!disk_.makeFolder(folder_, why)) {
        why = folder_ + L": " + why;
        return L"";
    }
    return recordingName(disk_, folder_, timeOfDay_ms, extension_);
}

std::vector<std::wstring> RollingFile::recycle() {
    std::vector<std::wstring> old;
    for (const std::wstring& name : disk_.files(folder_)) {
        if (isOurs(name)) {
            old.push_back(joined(folder_, name));
        }
    }
    // " (2)" sorts in front of ".avi", but is the newer one of the same second.
    std::sort(old.begin(), old.end(), [](const std::wstring& a, const std::wstring& b) {
        const auto key = [](const std::wstring& path) {
            const std::wstring name = nameOf(path);
            return std::pair(name.substr(0, 19), std::pair(name.size(), name));
        };
        return key(a) < key(b);
    });
    old.resize(old.size() - std::min(old.size(), keptFiles));
    std::erase_if(old, [this](const std::wstring& file) {
        std::wstring why;
        return disk_.exists(ClipFile::nameFor(file)) || !disk_.remove(file, why);
    });
    return old;
}

bool RollingFile::due(std::int64_t recorded_ms, std::int64_t length_ms, bool watched) {
    return recorded_ms >= (watched ? mostLengths * length_ms : length_ms);
}

} // namespace app
