#include "marvo/dv/time_code.h"

#include "marvo/core/text.h"
#include "marvo/dv/packs.h"

namespace vdv {

namespace {

std::optional<TimeCode> parse(FrameBytes pack, unsigned rate) {
    const auto frames = packDigits(pack[1], 0x3F, 0, rate - 1);
    const auto seconds = packDigits(pack[2], 0x7F, 0, 59);
    const auto minutes = packDigits(pack[3], 0x7F, 0, 59);
    const auto hours = packDigits(pack[4], 0x3F, 0, 23);
    if (!frames || !seconds || !minutes || !hours) {
        return std::nullopt;
    }
    return TimeCode{*hours, *minutes, *seconds, *frames,
                    rate == system525.countedRate && (pack[1] & 0x40) != 0};
}

} // namespace

std::optional<TimeCode> TimeCode::read(FrameBytes frame) {
    std::optional<TimeCode> found;
    const unsigned rate = systemSaid(frame).countedRate;
    visitPacks(frame, [&](FrameBytes pack) {
        if (pack[0] == timeCodePack) {
            found = parse(pack, rate);
        }
        return !found;
    });
    return found;
}

unsigned long TimeCode::count(unsigned rate) const {
    const unsigned long allMinutes = hours * 60ul + minutes;
    const unsigned long dropped = dropFrame ? 2 * (allMinutes - allMinutes / 10) : 0;
    return (allMinutes * 60 + seconds) * rate + frames - dropped;
}

std::string TimeCode::text() const {
    return vcore::format("%02u:%02u:%02u%c%02u", hours, minutes, seconds, dropFrame ? ';' : ':', frames);
}

} // namespace vdv
