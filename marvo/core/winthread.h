/// @file
/// The worker thread.
#pragma once

#include "marvo/core/event.h"
#include "marvo/core/handle.h"
#include "marvo/core/platform.h"

#include <atomic>

namespace vwin {

/// One worker thread per object, with a cooperative stop: the body polls `finishing`, the owner asks with
/// `stop`, and a thread that does not end in time is killed. The thread is in COM's multithreaded apartment.
///
/// Warning: a thread that is killed while it allocates or frees memory leaves the heap locked for ever, and
/// the process hangs at its next allocation. So a body ends in time, or does whatever may allocate (strings,
/// COM, most of the system's functions) within an `uninterruptible` region.
///
/// Starting, stopping and destroying are for one thread at a time, the queries for any. A derived class stops
/// its thread in its own destructor: when this base's destructor runs, what `run` works on is gone. Never
/// destroyed through a pointer to this base.
class MARVO_API winthread {
public:
    /// No thread yet.
    winthread();
    /// A thread cannot be copied: the copy is a new object that was never started.
    winthread(const winthread& source);
    winthread& operator=(const winthread&) = delete;
    /// Stops the thread as `stop(120)` does. Warning: a thread that is killed then while it allocates hangs
    /// the process at its next allocation; see `uninterruptible`.
    ~winthread();

    /// Starts the thread. One that still runs is asked to stop and killed after 100 ms, with the danger that
    /// `terminate` tells of. False when the system gives no thread.
    bool start();
    /// Asks the thread to stop. With a time other than 0 waits for its end that long, and kills it on a
    /// time-out. Warning: a thread that is killed while it allocates hangs the process at its next
    /// allocation; give it time enough, or see `uninterruptible`.
    void stop(unsigned long timeoutMs);
    /// Kills the thread, whatever it does, but never within an `uninterruptible` region: it waits until the
    /// thread leaves it or ends, and takes back any suspension for that. Afterwards there is no thread. A
    /// thread that calls this itself is not killed, only forgotten. Warning: a thread that is killed while it
    /// allocates hangs the process at its next allocation; only an `uninterruptible` region keeps it from
    /// that.
    void terminate();
    /// Suspends the thread; true when it was not suspended (or cannot be), false without a thread.
    bool suspend();
    /// Takes one suspension back; true when the thread runs now (or cannot be resumed), false without a
    /// thread.
    bool resume();

    /// Waits at most `timeoutMs` for the thread's end. Deliberately the other way round: true on a time-out
    /// and when there is no thread, false when the thread ended within the time.
    bool wait(unsigned long timeoutMs) const;
    /// Whether there is no thread or it has ended.
    bool finished() const;
    /// Whether there is a thread that has not ended.
    bool running() const;
    /// The body's sleep and question in one: waits at most `timeoutMs` (-1: without end) for the request to
    /// stop, or for `extraHandle` when that is not null. True only when it was the request.
    bool finishing(int timeoutMs = 0, void* extraHandle = nullptr) const;

    /// Sets a thread's priority, clamped to -15 to 15; null means the calling thread. False when the system
    /// refuses.
    static bool setPriority(int priority, void* thread);
    /// Suggests a processor for a thread; null means the calling thread. Ignored where the system knows no
    /// such thing.
    static void setProcessor(int processor, void* thread);
    /// Number of processors.
    static int processorCount();

private:
    /// Whether the thread may be killed.
    enum class interruption {
        starting, ///< not before its body: the system holds locks of its own for a thread that begins
        allowed,
        shielded
    };

public:
    /// While it lives on a worker thread, `terminate` does not kill that thread. For work that would leave
    /// something half done for others, such as a held lock, the heap's above all: that is any work that may
    /// allocate. Does nothing on a thread that is not a winthread's. Leaves the thread's last error as it is.
    class MARVO_API uninterruptible {
    public:
        uninterruptible();
        ~uninterruptible();
        uninterruptible(const uninterruptible&) = delete;
        uninterruptible& operator=(const uninterruptible&) = delete;

    private:
        const interruption before_;
    };

    /// Opens an `uninterruptible` region again around a foreign call that may never return. Leaves the
    /// thread's last error as it is.
    class MARVO_API killable {
    public:
        killable();
        ~killable();
        killable(const killable&) = delete;
        killable& operator=(const killable&) = delete;

    private:
        const interruption before_;
    };

protected:
    /// The thread's body. An exception that leaves it ends the thread as its return does.
    virtual void run() = 0;
    /// Tells waiters that the thread has ended before it has. For a body whose object may be destroyed as
    /// soon as somebody learns of the end: it must not use the object afterwards.
    void finish();

private:
    struct Current;

    static DWORD WINAPI threadProc(void* argument);
    static interruption setInterruption(interruption state);
    bool hasEnded() const { return hasJoined(0); }
    bool hasJoined(unsigned long timeoutMs) const;
    bool kill(bool evenStarting);

    vcore::event stop_{vcore::event::manualReset};
    // Kept until the thread is forgotten and closed by this object, not by the thread: a closed value may
    // stand for another object by the time that somebody suspends or kills the thread.
    vcore::handle thread_;
    vcore::event done_{vcore::event::manualReset};
    std::atomic<interruption> interruption_{interruption::starting};
};

} // namespace vwin
