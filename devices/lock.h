/// @file
/// A lock within the process and its guard.
#pragma once

#include <windows.h>

namespace devices {

/// A recursive lock within the process.
class lock {
public:
    lock() { InitializeCriticalSection(&section_); }
    ~lock() { DeleteCriticalSection(&section_); }
    lock(const lock&) = delete;
    lock& operator=(const lock&) = delete;

    void enter() { EnterCriticalSection(&section_); }
    void leave() { LeaveCriticalSection(&section_); }

    /// Leaves the lock (which must be held once only), waits for `condition` at most `ms`, takes it again.
    /// False after the time.
    bool wait(CONDITION_VARIABLE& condition, DWORD ms) {
        return SleepConditionVariableCS(&condition, &section_, ms) != FALSE;
    }

private:
    CRITICAL_SECTION section_;
};

/// Holds a lock for the length of a block.
class guard {
public:
    explicit guard(lock& held) : held_(held) { held_.enter(); }
    ~guard() { held_.leave(); }
    guard(const guard&) = delete;
    guard& operator=(const guard&) = delete;

private:
    lock& held_;
};

} // namespace devices
