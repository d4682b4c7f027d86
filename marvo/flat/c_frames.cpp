// Frames of the engine, and in memory.
#include "marvo/core/text.h"
#include "marvo/dv/sound.h"
#include "marvo/flat/engine.h"
#include "marvo/flat/frame_notes.h"
#include "marvo/flat/guarded.h"
#include "marvo/flat/open_recording.h"
#include "marvo/flat/structure.h"
#include "marvo/video/frame.h"

#include <cstring>

using namespace flat;

namespace {

/// Answers with a frame.
void give(vdv::FrameBytes frame, marvo_source source, marvo_u64 number, void* buffer, marvo_u32 capacity,
          Answer<marvo_frame_info>& info) {
    describeFrame(frame, static_cast<unsigned long>(frame.size()), *info);
    info->number = number;
    info->source = source;
    info.give();
    copyFrame(frame, buffer, capacity);
}

} // namespace

int MARVO_CALL marvo_frame_read(marvo_u64 number, void* buffer, marvo_u32 capacity, marvo_frame_info* info) {
    return guarded([&] {
        Answer<marvo_frame_info> to(info, "frame information", true);
        dvFrameStore& store = dvFE.recFilter().store();
        vvideo::dvFrame frame(store.frameSize());
        if (frame.size() != 0 && store.get(&frame, number)) {
            give({frame.data(), frame.size()}, MARVO_SOURCE_RING, number, buffer, capacity, to);
            return;
        }
        const std::wstring file = store.numberedFile();
        if (file.empty() || number >= store.lastFrame()) {
            fail(MARVO_E_RANGE, vcore::format("Frame %llu is not in the ring, and in no recording.", number));
        }
        OpenRecording recording(file);
        give(recording.read(number), MARVO_SOURCE_FILE, number, buffer, capacity, to);
    });
}

int MARVO_CALL marvo_frame_describe(const void* frame, marvo_u32 bytes, marvo_frame_info* info) {
    return guarded([&] {
        Answer<marvo_frame_info> to(info, "frame information");
        if (!frame) {
            fail(MARVO_E_ARGUMENT, "There is no frame: it is null.");
        }
        const vdv::FrameBytes all(static_cast<const unsigned char*>(frame), bytes);
        if (bytes > MARVO_MOST_FRAME_BYTES || !vdv::isFrameStart(all)) {
            fail(MARVO_E_FORMAT, "These bytes do not begin as a DV frame does.");
        }
        describeFrame(all, bytes, *to);
        to->number = MARVO_NO_FRAME;
        to.give();
    });
}

int MARVO_CALL marvo_frame_sound(const void* frame, marvo_u32 bytes, short* samples, marvo_u32 capacity,
                                 marvo_sound_info* info) {
    return guarded([&] {
        Answer<marvo_sound_info> to(info, "sound information");
        const vdv::FrameBytes all = needFrame(frame, bytes);
        dvSound sound;
        sound.decode(all.data(), bytes);
        to->rate = static_cast<marvo_u32>(sound.rate());
        to->channels = sound.channels();
        to->bits = sound.bits();
        to->samples = static_cast<marvo_u32>(sound.samples());
        to->concealed = static_cast<marvo_u32>(sound.concealed());
        to->locked = sound.locked() ? 1 : 0;
        to.give();
        const std::size_t count = sound.samples() * sound.channels();
        if ((!samples && capacity == 0) || count == 0) {
            return;
        }
        if (!samples || capacity < count) {
            fail(MARVO_E_BUFFER, vcore::format("The buffer has room for %u samples; the frame has %u.",
                                               samples ? capacity : 0, static_cast<unsigned>(count)));
        }
        std::memcpy(samples, sound.data(), count * sizeof *samples);
    });
}
