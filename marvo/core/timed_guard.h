/// @file
/// The one way in which the engine holds its locks.
#pragma once

#include "marvo/core/semaphore.h"
#include "marvo/core/thread_annotations.h"

namespace vcore {

/// Waits for a semaphore at most the given time, goes on whether it was had or not, and releases it on exit.
///
/// Deliberate: live video outranks exactness, so a lock that cannot be had in time does not stop a frame, and
/// the release is made in every case, which also repairs a lock whose holder was killed. For the same reason
/// the lock counts as held for clang's analysis in either case.
class MARVO_SCOPED_CAPABILITY timed_guard {
public:
    /// `timeoutMs` may be `INFINITE`.
    timed_guard(const semaphore& lock, unsigned long timeoutMs) MARVO_ACQUIRE(lock)
        : lock_(lock), held_(lock.wait(timeoutMs)) {}
    ~timed_guard() MARVO_RELEASE() { lock_.unlock(); }
    timed_guard(const timed_guard&) = delete;
    timed_guard& operator=(const timed_guard&) = delete;

    /// Whether the wait succeeded.
    bool held() const { return held_; }

private:
    const semaphore& lock_;
    const bool held_;
};

/// The same for what two threads must never use at once, such as a reader: whoever does not get the lock does
/// without, so `held` is asked first. Nothing is released then.
class MARVO_SCOPED_CAPABILITY strict_guard {
public:
    /// `timeoutMs` may be `INFINITE`.
    strict_guard(const semaphore& lock, unsigned long timeoutMs) MARVO_ACQUIRE(lock)
        : lock_(lock), held_(lock.wait(timeoutMs)) {}
    ~strict_guard() MARVO_RELEASE() {
        if (held_) {
            lock_.unlock();
        }
    }
    strict_guard(const strict_guard&) = delete;
    strict_guard& operator=(const strict_guard&) = delete;

    /// Whether the wait succeeded.
    bool held() const { return held_; }

private:
    const semaphore& lock_;
    const bool held_;
};

} // namespace vcore
