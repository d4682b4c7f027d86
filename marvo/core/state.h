/// @file
/// A lock-free state word.
#pragma once

#include "marvo/core/platform.h"

#include <atomic>

namespace vcore {

/// One state, changed only by compare-and-swap, so that of several threads exactly one makes a change.
class state {
public:
    /// Starts in the state `initial`.
    explicit state(long initial) : value_(initial) {}

    /// Replaces the state by `to` when it is `from`; whether it did.
    bool changeState(long from, long to) { return value_.compare_exchange_strong(from, to); }
    /// Whether the state is `value` at this moment.
    bool operator==(long value) const { return value_.load() == value; }
    /// Whether the state is another than `value` at this moment.
    bool operator!=(long value) const { return value_.load() != value; }

private:
    std::atomic<long> value_;
};

} // namespace vcore
