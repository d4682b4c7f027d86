/// @file
/// Where exceptions end.
#pragma once

namespace vcore {

/// Calls `body` and returns what it returns, or `refused` when an exception leaves it, which mostly means
/// that there is no memory. It stands where no exception may pass: at the functions that a host or the system
/// calls, and around what the library calls on threads of its own.
template <class Result, class Body>
Result guarded(Result refused, Body body) noexcept {
    try {
        return body();
    } catch (...) {
        return refused;
    }
}

/// The same for a body without a result: whether it came to its end.
template <class Body>
bool guarded(Body body) noexcept {
    return guarded(false, [&body] {
        body();
        return true;
    });
}

} // namespace vcore
