/// @file
/// The locks of the flat interface.
#pragma once

#include "marvo/core/thread_annotations.h"
#include "marvo/core/windows.h"

namespace flat {

/// A lock for any thread, held for moments or for a whole command. Unlike the engine's it is waited for
/// without a limit: what it guards would be wrong otherwise, and no frame waits for it.
class MARVO_CAPABILITY("lock") Lock {
public:
    Lock() = default;
    Lock(const Lock&) = delete;
    Lock& operator=(const Lock&) = delete;

    /// Takes it.
    void lock() MARVO_ACQUIRE() { AcquireSRWLockExclusive(&lock_); }
    /// Gives it back.
    void unlock() MARVO_RELEASE() { ReleaseSRWLockExclusive(&lock_); }

private:
    friend class Signal;
    SRWLOCK lock_ = SRWLOCK_INIT;
};

/// Holds a lock for a scope.
class MARVO_SCOPED_CAPABILITY LockGuard {
public:
    explicit LockGuard(Lock& lock) MARVO_ACQUIRE(lock) : lock_(lock) { lock_.lock(); }
    ~LockGuard() MARVO_RELEASE() { lock_.unlock(); }
    LockGuard(const LockGuard&) = delete;
    LockGuard& operator=(const LockGuard&) = delete;

private:
    Lock& lock_;
};

/// Wakes threads that wait for something that a lock guards.
class Signal {
public:
    Signal() = default;
    Signal(const Signal&) = delete;
    Signal& operator=(const Signal&) = delete;

    /// Wakes all.
    void wakeAll() { WakeAllConditionVariable(&condition_); }
    /// Gives `held` back, waits at most `limit_ms` to be woken, and takes it again; may return without cause.
    /// False when the time has passed.
    bool wait(Lock& held, unsigned long limit_ms) MARVO_REQUIRES(held) {
        return SleepConditionVariableSRW(&condition_, &held.lock_, limit_ms, 0) != FALSE;
    }

private:
    CONDITION_VARIABLE condition_ = CONDITION_VARIABLE_INIT;
};

} // namespace flat
