#include "marvo/dv/recorded_at.h"

#include "marvo/core/text.h"
#include "marvo/dv/packs.h"

namespace vdv {

namespace {

std::optional<RecordedAt::Date> parseDate(FrameBytes pack) {
    const auto day = packDigits(pack[2], 0x3F, 1, 31);
    const auto month = packDigits(pack[3], 0x1F, 1, 12);
    const auto year = packDigits(pack[4], 0xFF, 0, 99);
    if (!day || !month || !year) {
        return std::nullopt;
    }
    // Two digits of the year. A clock that was never set starts in 1970 with some devices.
    constexpr unsigned oldestYear = 70;
    return RecordedAt::Date{*year + (*year >= oldestYear ? 1900 : 2000), *month, *day};
}

std::optional<RecordedAt::Time> parseTime(FrameBytes pack) {
    const auto second = packDigits(pack[2], 0x7F, 0, 59);
    const auto minute = packDigits(pack[3], 0x7F, 0, 59);
    const auto hour = packDigits(pack[4], 0x3F, 0, 23);
    if (!second || !minute || !hour) {
        return std::nullopt;
    }
    return RecordedAt::Time{*hour, *minute, *second};
}

} // namespace

RecordedAt RecordedAt::read(FrameBytes frame) {
    RecordedAt found;
    visitPacks(frame, [&](FrameBytes pack) {
        if (pack[0] == recordingDatePack && !found.date) {
            found.date = parseDate(pack);
        } else if (pack[0] == recordingTimePack && !found.time) {
            found.time = parseTime(pack);
        }
        return !found.date || !found.time;
    });
    return found;
}

std::string RecordedAt::text() const {
    std::string text = date ? vcore::format("%04u-%02u-%02u", date->year, date->month, date->day) : "";
    if (time) {
        text += vcore::format("%s%02u:%02u:%02u", date ? " " : "", time->hour, time->minute, time->second);
    }
    return text;
}

} // namespace vdv
