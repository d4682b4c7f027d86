/// @file
/// What the engine tells, for the flat interface.
#pragma once

#include "marvo/flat/callbacks.h"
#include "marvo/flat/event_queue.h"
#include "marvo/flat/lock.h"
#include "marvo/replay/play_error.h"
#include "marvo/replay/play_info.h"
#include "marvo/replay/record_status.h"
#include "marvo_c.h"

#include <string>

namespace flat {

/// Receives the signals of `dvFE` on whatever thread they come, and keeps them for the host: as events in a
/// queue, and for the callbacks. Nothing of the host's is called on the engine's threads.
class EngineEvents {
public:
    /// Connected from now on.
    EngineEvents();
    ~EngineEvents();
    EngineEvents(const EngineEvents&) = delete;
    EngineEvents& operator=(const EngineEvents&) = delete;

    /// The host's callbacks.
    Callbacks& callbacks() { return callbacks_; }
    /// Events that the host asks for.
    EventQueue& queue() { return queue_; }

    /// Something has happened. `text` is UTF-8.
    void tell(marvo_event_kind kind, unsigned long long frame, unsigned long long count, unsigned long code,
              const std::string& text);
    /// Where play is.
    static marvo_play_info play();
    /// As what the engine's state is told.
    static marvo_play_info toInfo(const play_state& state);

    /// Has the engine post a message at each tick, as `dvFrontEnd::setInfoDrain`.
    void postTicks(HWND window, unsigned message);

private:
    void onCameraLost(unsigned long long newest);
    void onCameraStalled(unsigned long long newest);
    void onCameraBack(unsigned long long first, unsigned long gap_ms);
    void onCameraChanged(unsigned long bytes);
    void onRecError(unsigned long long frame, unsigned long long frames, unsigned long systemError,
                    record_event event);
    void onRecEnd();
    void onPlayError(unsigned long long first, unsigned long long frames, unsigned long error);
    void onPlayFault(unsigned long fault, unsigned long begun);
    void onPlayEvent(long code, long long parameter);
    void onPlayTime();

    EventQueue queue_;
    Callbacks callbacks_;
    play_info ticks_;
    Lock order_;
    marvo_u64 serial_ MARVO_GUARDED_BY(order_) = 0;
};

} // namespace flat
