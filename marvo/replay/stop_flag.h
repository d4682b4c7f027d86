/// @file
/// The request to stop that no start can lose.
#pragma once

#include "marvo/core/winthread.h"

#include <atomic>

/// The stop flag of a worker thread. A thread's body clears it on entry, and a stop that was asked for
/// between the start of the thread and that moment must not be lost with it: whoever asks also signals the
/// thread's stop event, which only `winthread::start` resets, and the body looks at the event after clearing
/// the flag.
class StopFlag {
public:
    /// Asks the thread to stop; does not wait. Any thread.
    void ask(vwin::winthread& thread) {
        thread.stop(0);
        asked_ = true;
    }

    /// Called by the thread's body first.
    void enter(const vwin::winthread& thread) {
        asked_ = false;
        if (thread.finishing(0, nullptr)) {
            asked_ = true;
        }
    }

    /// Whether to stop. Any thread.
    bool asked() const { return asked_; }

private:
    std::atomic<bool> asked_ = false;
};
