// How the engine goes.
#include "marvo/flat/engine.h"
#include "marvo/flat/frame_notes.h"
#include "marvo/flat/guarded.h"
#include "marvo/flat/structure.h"
#include "marvo/flat/text.h"

#include <algorithm>

using namespace flat;

namespace {

void fillRecording(const record_status& record, marvo_status_info& to) {
    to.recording = record.recording ? 1 : 0;
    to.failing = record.failing ? 1 : 0;
    to.behind = record.behind ? 1 : 0;
    to.complete = record.complete ? 1 : 0;
    to.taken = record.taken;
    to.written = record.written;
    to.waiting = record.waiting();
    to.lost = record.lost;
    to.failed = record.failed;
    to.beyond_limit = record.beyondLimit;
    to.drive_frames = record.driveSpace_frames;
    to.first_error = record.firstError;
    putText(to.first_error_text, sizeof to.first_error_text, utf8(record.firstErrorText));
}

void fillPlay(const marvo_play_info& play, marvo_status_info& to) {
    to.replaying = play.replaying;
    to.paused = play.paused;
    to.speed = play.speed;
    to.shown_frame = play.frame;
    to.replay_from = play.from;
    to.replay_to = play.to;
    const play_error error = play.replaying ? dvFE.playError() : play_error{};
    to.unreadable_from = error.frames != 0 ? error.first : MARVO_NO_FRAME;
    to.unreadable_frames = error.frames;
    to.unreadable_error = error.error;
    to.picture_faults = static_cast<marvo_u32>(dvFE.playFaults());
}

/// The newest frame is looked up last, so that no other number is beyond it.
void fill(Engine& engine, marvo_status_info& to) {
    to.built = engine.built();
    const dvCameraState camera = dvFE.cameraState();
    to.camera = camera.state;
    to.camera_since_ms = static_cast<marvo_u32>(camera.since_ms);
    to.camera_lost = static_cast<marvo_u32>(camera.lost);
    fillRecording(dvFE.recordStatus(), to);
    fillPlay(EngineEvents::play(), to);
    if (to.built != MARVO_BUILT_NOTHING && to.shown_frame != MARVO_NO_FRAME) {
        to.time_ms = dvFE.getTime();
        to.raw_time_ms = dvFE.getRawTime();
    }
    const dvFrameStore& store = dvFE.recFilter().store();
    to.frame_bytes = static_cast<marvo_u32>(store.frameSize());
    to.system = systemOfBytes(store.frameSize());
    to.frames_per_second = static_cast<marvo_u32>(store.framesPerSecond());
    to.ring_frames = static_cast<marvo_u32>(store.ringFrames());
    to.arrived = dvFE.recFilter().arrivals().count();
    to.next_frame = to.ring_frames != 0 ? store.lastFrame() : 0;
    to.oldest_frame = to.next_frame - std::min<marvo_u64>(to.next_frame, to.ring_frames);
    to.events_waiting = engine.events().queue().waiting();
    to.events_lost = engine.events().queue().lost();
}

} // namespace

int MARVO_CALL marvo_status(marvo_status_info* status) {
    return guarded([&] {
        Answer<marvo_status_info> to(status, "status");
        Engine& engine = Engine::only();
        // Commands are rare: what one of them has changed meanwhile is looked up again.
        constexpr int mostLooks = 4;
        for (int look = 0; look < mostLooks; ++look) {
            const unsigned before = engine.version();
            fill(engine, *to);
            to->busy = before % 2 != 0 || before != engine.version() ? 1 : 0;
            if (before % 2 != 0 || to->busy == 0) {
                break;
            }
        }
        to.give();
    });
}

int MARVO_CALL marvo_play(marvo_play_info* play) {
    return guarded([&] {
        Answer<marvo_play_info> to(play, "play information");
        *to = EngineEvents::play();
        to.give();
    });
}

int MARVO_CALL marvo_record_file(char* buffer, marvo_u32 capacity, marvo_u32* needed) {
    return guarded([&] { answer(utf8(dvFE.recFilter().store().numberedFile()), buffer, capacity, needed); });
}
