#include "marvo/replay/clock_pacer.h"

#include <strmif.h>

namespace {
constexpr unsigned long longestTick_ms = 120;
}

// A kernel semaphore: its handle is given to the clock.
ClockPacer::ClockPacer() : tick_(1, nullptr) {}

bool ClockPacer::arm(IReferenceClock* clock, long long period) {
    if (!clock) {
        cookie_ = 0;
        return false;
    }
    cancel(clock);
    if (period == 0) {
        return true;
    }
    tick_.wait(1);
    REFERENCE_TIME now = 0;
    clock->GetTime(&now);
    return clock->AdvisePeriodic(now + period, period, reinterpret_cast<HSEMAPHORE>(tick_.handle()),
                                 &cookie_) == S_OK;
}

void ClockPacer::cancel(IReferenceClock* clock) {
    if (clock && cookie_ != 0) {
        clock->Unadvise(cookie_);
    }
    cookie_ = 0;
}

bool ClockPacer::waitForTick() const {
    return tick_.wait(longestTick_ms);
}

void ClockPacer::wake() const {
    tick_.unlock();
}
