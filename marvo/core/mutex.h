/// @file
/// The recursive kernel mutex.
#pragma once

#include "marvo/core/handle.h"
#include "marvo/core/platform.h"
#include "marvo/core/thread_annotations.h"

#include <atomic>

namespace vcore {

/// An unnamed kernel mutex, recursive for the thread that holds it.
class MARVO_CAPABILITY("mutex") MARVO_API mutex {
public:
    /// A free mutex.
    mutex();
    /// Releases the mutex once, in case the destroying thread holds it.
    ~mutex();
    mutex(const mutex&) = delete;
    mutex& operator=(const mutex&) = delete;

    /// Takes the mutex, waiting at most `timeoutMs` (-1: without end); false on a time-out.
    bool lock(int timeoutMs) const;
    /// The same for a thread with windows: messages are dispatched meanwhile. Each batch of messages starts
    /// the time-out anew, so the whole wait may be longer.
    bool msglock(int timeoutMs) const;
    /// Gives the mutex back once; false when the caller does not hold it.
    bool unlock() const;
    /// Whether another thread holds the mutex. Deliberate: a mutex is recursive, so its holder sees it as
    /// free.
    bool isLocked() const;
    /// Id of the thread that took the mutex last, 0 when it was given back.
    unsigned long owner() const { return owner_; }

private:
    bool taken(bool success) const;

    handle mutex_;
    mutable std::atomic<unsigned long> owner_{0};
};

} // namespace vcore
