/// @file
/// The host's callbacks and the thread that they come on.
#pragma once

#include "marvo/core/thread_annotations.h"
#include "marvo/flat/event_queue.h"
#include "marvo/flat/lock.h"
#include "marvo_c.h"

#include <atomic>
#include <deque>
#include <optional>
#include <string>

namespace flat {

/// Calls what the host has set, on a thread of its own, so that a slow host, or one that gives commands from
/// a callback, holds up no thread of the engine's. The thread runs while anything is set, and holds the
/// library as long. Events come first, then lines, then the newest tick.
///
/// Any thread. What is posted is dropped while nothing is set for it. No lock is held during a call.
class Callbacks {
public:
    Callbacks();
    Callbacks(const Callbacks&) = delete;
    Callbacks& operator=(const Callbacks&) = delete;

    /// @{
    /// Sets what is called; null for nothing. Returns when the one before is neither running nor called any
    /// more, but within that one itself at once. Throws MARVO_E_MEMORY when there is no thread to be had.
    void setEvent(marvo_event_fn callback, void* user);
    void setLine(marvo_log_fn callback, void* user);
    void setTick(marvo_play_fn callback, void* user);
    /// @}

    /// Whether ticks are wanted.
    bool wantsTicks() const { return wantsTicks_; }

    /// An event for the host.
    void post(const marvo_event& event);
    /// A line of the log, as the log's bytes are.
    void post(const char* line);
    /// Where play is.
    void post(const marvo_play_info& tick);

private:
    enum Kind { noKind, eventKind, lineKind, tickKind };

    template <class Function>
    struct Target {
        Function function = nullptr;
        void* user = nullptr;
    };

    template <class Function>
    void set(Target<Function>& target, Kind kind, Function function, void* user);
    static DWORD WINAPI threadProc(void* self);
    void start() MARVO_REQUIRES(lock_);
    void run();
    bool anySet() const MARVO_REQUIRES(lock_) { return event_.function || line_.function || tick_.function; }
    bool callNext();
    void drop(Kind kind) MARVO_REQUIRES(lock_);

    Lock lock_;
    Signal changed_;
    Target<marvo_event_fn> event_ MARVO_GUARDED_BY(lock_);
    Target<marvo_log_fn> line_ MARVO_GUARDED_BY(lock_);
    Target<marvo_play_fn> tick_ MARVO_GUARDED_BY(lock_);
    EventQueue events_;
    std::deque<std::string> lines_ MARVO_GUARDED_BY(lock_);
    unsigned long linesLost_ MARVO_GUARDED_BY(lock_) = 0;
    std::optional<marvo_play_info> newestTick_ MARVO_GUARDED_BY(lock_);
    Kind calling_ MARVO_GUARDED_BY(lock_) = noKind;
    bool running_ MARVO_GUARDED_BY(lock_) = false;
    DWORD thread_ MARVO_GUARDED_BY(lock_) = 0;
    HMODULE library_ MARVO_GUARDED_BY(lock_) = nullptr;
    std::atomic<bool> wantsTicks_{false};
};

} // namespace flat
