// Frames of the host's in place of a camera.
#include "marvo/com/capture_devices.h"
#include "marvo/core/text.h"
#include "marvo/flat/engine.h"
#include "marvo/flat/frame_notes.h"
#include "marvo/flat/guarded.h"
#include "marvo/flat/handles.h"

using namespace flat;

namespace {

/// The filter is the engine's; a handle stands for the right to use it.
struct Feed {};

Handles<marvo_feed, Feed>& feeds() {
    static Handles<marvo_feed, Feed> all(1, "feed");
    return all;
}

} // namespace

int MARVO_CALL marvo_feed_open(int system, marvo_feed** feed) {
    return guarded([&] {
        if (!feed) {
            fail(MARVO_E_ARGUMENT, "There is no place for the feed: it is null.");
        }
        if (system != MARVO_SYSTEM_625 && system != MARVO_SYSTEM_525) {
            fail(MARVO_E_ARGUMENT, vcore::format("There is no DV system number %d.", system));
        }
        const Engine::Command command;
        Engine& engine = Engine::only();
        if (engine.feedOpen || engine.feed().sending()) {
            fail(MARVO_E_STATE, engine.feedOpen
                                    ? "The feed is open already."
                                    : "The engine still runs on the feed of before; call marvo_done.");
        }
        vwin::initialiseCom();
        vvideo::dvMediaType type;
        type.initDVType(system == MARVO_SYSTEM_625 ? vdv::palFrameBytes : vdv::ntscFrameBytes, true);
        if (!engine.feed().init(type)) {
            fail(MARVO_E_MEMORY, "There is not enough memory for the feed.");
        }
        *feed = feeds().add(std::make_shared<Feed>());
        engine.feedOpen = true;
        dvFE.setSource(&engine.feed());
    });
}

int MARVO_CALL marvo_feed_add(marvo_feed* feed, const void* frame, marvo_u32 bytes) {
    return guarded([&] {
        feeds().get(feed);
        const vdv::FrameBytes all = needFrame(frame, bytes);
        dvFeedFilter& filter = Engine::only().feed();
        const unsigned long wanted = filter.frameSize();
        if (bytes != wanted || systemOfBytes(bytes) != systemOfBytes(vdv::systemSaid(all).frameBytes)) {
            fail(MARVO_E_FORMAT, vcore::format("The feed takes frames of %lu bytes of its system.", wanted));
        }
        if (!filter.add(frame, bytes)) {
            fail(MARVO_E_STATE,
                 "The engine does not run on the feed; call marvo_init behind marvo_feed_open.");
        }
    });
}

int MARVO_CALL marvo_feed_close(marvo_feed* feed) {
    return guarded([&] {
        const Engine::Command command;
        feeds().remove(feed);
        Engine::only().feedOpen = false;
        dvFE.setSource(nullptr);
    });
}
