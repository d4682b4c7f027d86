// Events, the log, and progress.
#include "marvo/flat/engine.h"
#include "marvo/flat/guarded.h"
#include "marvo/flat/structure.h"

using namespace flat;

int MARVO_CALL marvo_set_event_callback(marvo_event_fn callback, void* user) {
    return guarded([&] { Engine::only().events().callbacks().setEvent(callback, user); });
}

int MARVO_CALL marvo_event_next(marvo_event* event, marvo_u32 timeout_ms) {
    return guarded([&] {
        Answer<marvo_event> to(event, "event");
        if (!Engine::only().events().queue().take(*to, timeout_ms)) {
            fail(MARVO_E_EMPTY, "No event is waiting.");
        }
        to.give();
    });
}

int MARVO_CALL marvo_set_log_callback(marvo_log_fn callback, void* user) {
    return guarded([&] { Engine::only().events().callbacks().setLine(callback, user); });
}

int MARVO_CALL marvo_set_play_callback(marvo_play_fn callback, void* user) {
    return guarded([&] { Engine::only().events().callbacks().setTick(callback, user); });
}

int MARVO_CALL marvo_set_play_message(void* window, marvo_u32 message) {
    return guarded([&] {
        if (window && !IsWindow(static_cast<HWND>(window))) {
            fail(MARVO_E_ARGUMENT, "This is no window.");
        }
        Engine::only().events().postTicks(static_cast<HWND>(window), message);
    });
}
