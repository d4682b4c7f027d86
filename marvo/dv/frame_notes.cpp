#include "marvo/dv/frame_notes.h"

#include "marvo/core/guarded.h"
#include "marvo/dv/packs.h"
#include "marvo/dv/recorded_at.h"
#include "marvo/dv/time_code.h"

namespace {

vdv::FrameBytes bytesOf(const void* frame, std::size_t bytes) {
    return {static_cast<const unsigned char*>(frame), frame ? bytes : 0};
}

/// Calls `take` with the frame's first VAUX source control pack, if there is one.
template <class Notes, class Take>
Notes readControl(const void* frame, std::size_t bytes, Take take) {
    return vcore::guarded(Notes(), [&] {
        Notes notes;
        vdv::visitPacks(bytesOf(frame, bytes), [&](vdv::FrameBytes pack) {
            if (pack[0] == vdv::vauxSourceControlPack) {
                take(pack, notes);
                notes.known = true;
            }
            return !notes.known;
        });
        return notes;
    });
}

} // namespace

dvTimeCode dvFrameNotes::timeCode(const void* frame, std::size_t bytes) {
    return vcore::guarded(dvTimeCode(), [&] {
        const auto code = vdv::TimeCode::read(bytesOf(frame, bytes));
        return code ? dvTimeCode{true,          code->hours,  code->minutes,
                                 code->seconds, code->frames, code->dropFrame}
                    : dvTimeCode();
    });
}

dvClockTime dvFrameNotes::recordedAt(const void* frame, std::size_t bytes) {
    return vcore::guarded(dvClockTime(), [&] {
        const vdv::RecordedAt found = vdv::RecordedAt::read(bytesOf(frame, bytes));
        const auto date = found.date.value_or(vdv::RecordedAt::Date());
        const auto time = found.time.value_or(vdv::RecordedAt::Time());
        return dvClockTime{found.date.has_value(), date.year, date.month,  date.day,
                           found.time.has_value(), time.hour, time.minute, time.second};
    });
}

dvAspect dvFrameNotes::aspect(const void* frame, std::size_t bytes) {
    return readControl<dvAspect>(frame, bytes, [&](vdv::FrameBytes pack, dvAspect& aspect) {
        constexpr unsigned squeezed = 2;
        // Some older cameras of 25 Mbit/s consumer DV say it so.
        constexpr unsigned squeezedToo = 7;
        const unsigned display = pack[2] & 7;
        const bool consumer = (bytesOf(frame, bytes)[4] & 7) == 0;
        if (display == squeezed || (display == squeezedToo && consumer)) {
            aspect.width = 16;
            aspect.height = 9;
        }
    });
}

dvFields dvFrameNotes::fields(const void* frame, std::size_t bytes) {
    return readControl<dvFields>(frame, bytes, [](vdv::FrameBytes pack, dvFields& fields) {
        constexpr unsigned interlaced = 0x10;
        constexpr unsigned lowerFieldFirst = 0x40;
        fields.interlaced = (pack[3] & interlaced) != 0;
        fields.upperFieldFirst = (pack[3] & lowerFieldFirst) == 0;
    });
}
