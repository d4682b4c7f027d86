#include "marvo/flat/frame_notes.h"

#include "marvo/core/text.h"
#include "marvo/dv/frame_notes.h"
#include "marvo/flat/failure.h"

#include <cstring>

namespace flat {

marvo_system systemOfBytes(unsigned long bytes) {
    const vdv::System* const system = vdv::systemOf(bytes);
    if (!system) {
        return MARVO_SYSTEM_UNKNOWN;
    }
    return system == &vdv::system625 ? MARVO_SYSTEM_625 : MARVO_SYSTEM_525;
}

void describeFrame(vdv::FrameBytes frame, unsigned long whole, marvo_frame_info& info) {
    info.bytes = whole;
    info.system = systemOfBytes(whole);
    if (const dvTimeCode code = dvFrameNotes::timeCode(frame.data(), frame.size()); code.known) {
        info.time_code_known = 1;
        info.time_code_hours = code.hours;
        info.time_code_minutes = code.minutes;
        info.time_code_seconds = code.seconds;
        info.time_code_frames = code.frames;
        info.drop_frame = code.dropFrame ? 1 : 0;
    }
    const dvClockTime clock = dvFrameNotes::recordedAt(frame.data(), frame.size());
    info.date_known = clock.dateKnown ? 1 : 0;
    info.year = clock.year;
    info.month = clock.month;
    info.day = clock.day;
    info.time_known = clock.timeKnown ? 1 : 0;
    info.hour = clock.hour;
    info.minute = clock.minute;
    info.second = clock.second;
    const dvAspect aspect = dvFrameNotes::aspect(frame.data(), frame.size());
    info.aspect_known = aspect.known ? 1 : 0;
    info.aspect_width = aspect.width;
    info.aspect_height = aspect.height;
    const dvFields fields = dvFrameNotes::fields(frame.data(), frame.size());
    info.fields_known = fields.known ? 1 : 0;
    info.interlaced = fields.interlaced ? 1 : 0;
    info.upper_field_first = fields.upperFieldFirst ? 1 : 0;
}

void copyFrame(vdv::FrameBytes frame, void* buffer, marvo_u32 capacity) {
    if (!buffer && capacity == 0) {
        return;
    }
    if (!buffer || capacity < frame.size()) {
        fail(MARVO_E_BUFFER, vcore::format("The buffer has %u bytes; the frame has %u.",
                                           buffer ? capacity : 0, static_cast<unsigned>(frame.size())));
    }
    std::memcpy(buffer, frame.data(), frame.size());
}

vdv::FrameBytes needFrame(const void* frame, marvo_u32 bytes) {
    if (!frame) {
        fail(MARVO_E_ARGUMENT, "There is no frame: it is null.");
    }
    const vdv::FrameBytes all(static_cast<const unsigned char*>(frame), bytes);
    if (!vdv::isFrameSize(bytes) || !vdv::isFrameStart(all)) {
        fail(MARVO_E_FORMAT, vcore::format("These %u bytes are no whole DV frame.", bytes));
    }
    return all;
}

} // namespace flat
