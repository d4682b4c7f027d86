/// @file
/// The pace of a reference clock for a thread.
#pragma once

#include "marvo/core/semaphore.h"

struct IReferenceClock;

/// Paces a delivery thread by a reference clock: armed, the clock releases a semaphore once per period, and
/// the thread waits for it. One tick that nobody waited for stays pending; more are dropped.
///
/// Threads: `arm` and `cancel` on the graph's control thread, `waitForTick` on the delivery thread, `wake` on
/// any.
class ClockPacer {
public:
    ClockPacer();

    /// Cancels the current advice and asks `clock` for a new one every `period` (100 ns). Without a clock
    /// false; with a period of 0 the advice is only cancelled, true. The first tick comes one period from
    /// now.
    bool arm(IReferenceClock* clock, long long period);

    /// Cancels the current advice, if any, on the `clock` that gave it.
    void cancel(IReferenceClock* clock);

    /// Waits for the next tick, at most 120 ms: with a clock that stalls, or none, about eight passes a
    /// second remain. Whether it came.
    bool waitForTick() const;

    /// Ends a wait, or the next one.
    void wake() const;

private:
    vcore::semaphore tick_;
    DWORD_PTR cookie_ = 0;
};
