/// @file
/// The spin lock for short critical sections.
#pragma once

#include "marvo/core/platform.h"
#include "marvo/core/thread_annotations.h"

#include <atomic>

namespace vcore {

/// A spin lock of one word, which holds the owner's thread id or 0. The owner may take it again, but that is
/// not counted: one `unlock` frees it.
class MARVO_CAPABILITY("spin lock") MARVO_API mutex2 {
public:
    mutex2() = default;
    mutex2(const mutex2&) = delete;
    mutex2& operator=(const mutex2&) = delete;

    /// Takes the lock, however long it lasts; true.
    bool lock() const;
    /// Tries to take the lock. Deliberate asymmetry: with a time-out above 0 it fails right after the first
    /// attempt, with 0 it goes on until it has the lock (so long as the tick count is below 2^31).
    bool lock(int timeoutMs) const;
    /// Frees the lock, whoever holds it.
    void unlock() const;

private:
    bool tryLock() const;

    mutable std::atomic<unsigned long> owner_{0};
};

/// Holds a spin lock for a scope. Not to be nested for one lock: the inner end would free it.
class MARVO_SCOPED_CAPABILITY spin_guard {
public:
    /// Takes the lock, however long it lasts.
    explicit spin_guard(const mutex2& lock) MARVO_ACQUIRE(lock) : lock_(lock) { lock_.lock(); }
    ~spin_guard() MARVO_RELEASE() { lock_.unlock(); }
    spin_guard(const spin_guard&) = delete;
    spin_guard& operator=(const spin_guard&) = delete;

private:
    const mutex2& lock_;
};

} // namespace vcore
