/// @file
/// A lock-free state word.
#pragma once

#include "core/platform.h"

#include <atomic>

namespace vcore {

/// One state, changed only by compare-and-swap, so that of several threads exactly one makes a change.
class state {
public:
    /// Starts in the state `initial`.
    explicit state(long initial) : _value(initial) {}

    /// Replaces the state by `to` when it is `from`; whether it did.
    bool changeState(long from, long to) { return _value.compare_exchange_strong(from, to); }
    /// Whether the state is `value` at this moment.
    bool operator==(long value) const { return _value.load() == value; }
    /// Whether the state is another than `value` at this moment.
    bool operator!=(long value) const { return _value.load() != value; }

private:
    std::atomic<long> _value;
};

} // namespace vcore
