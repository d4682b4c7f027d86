#include "app/recording_name.h"

#include "app/clip_file.h"
#include "app/moment.h"

#include <cwchar>
#include <iterator>

namespace app {

std::wstring recordingName(Disk& disk, const std::wstring& folder, std::int64_t timeOfDay_ms,
                           const std::wstring& extension) {
    const Calendar day = calendarOf(timeOfDay_ms);
    wchar_t stem[96];
    std::swprintf(stem, std::size(stem), L"%04d-%02d-%02d %02d-%02d-%02d", day.year, day.month, day.day,
                  day.hour, day.minute, day.second);
    for (int copy = 1;; ++copy) {
        const std::wstring number = copy == 1 ? L"" : L" (" + std::to_wstring(copy) + L")";
        const std::wstring name = joined(folder, stem + number + extension);
        if (!disk.exists(name) && !disk.exists(ClipFile::nameFor(name))) {
            return name;
        }
    }
}

} // namespace app
