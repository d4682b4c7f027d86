/// @file
/// When samples came.
#pragma once

#include "marvo/core/platform.h"

#include <atomic>

/// When the samples of a camera came, by the system's tick count. Noted on the streaming thread, read on any
/// other; one other thread at a time asks for gaps.
class Arrivals {
public:
    /// A sample has come.
    void note() {
        const unsigned long long now = GetTickCount64();
        if (first_ms_ == 0) {
            first_ms_ = now;
        }
        latest_ms_ = now;
        ++count_;
    }

    /// How many came in all, modulo 2^32.
    unsigned long count() const { return count_; }
    /// When the latest came; 0 before the first.
    unsigned long long latest_ms() const { return latest_ms_; }

    /// The next sample is the first after a gap.
    void beginGap() { first_ms_ = 0; }
    /// When the first sample since `beginGap` came; 0 while there is none.
    unsigned long long firstAfterGap_ms() const { return first_ms_; }

private:
    std::atomic<unsigned long> count_{0};
    std::atomic<unsigned long long> latest_ms_{0};
    std::atomic<unsigned long long> first_ms_{0};
};
