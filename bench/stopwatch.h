/// @file
/// Time as it passes, in seconds.
#pragma once

#include "marvo.h"

/// Seconds of the performance counter, whose zero is the computer's start. The simulated camera's log has the
/// same zero, in milliseconds.
inline double now_s() {
    static const double frequency = [] {
        LARGE_INTEGER value;
        QueryPerformanceFrequency(&value);
        return static_cast<double>(value.QuadPart);
    }();
    LARGE_INTEGER count;
    QueryPerformanceCounter(&count);
    return static_cast<double>(count.QuadPart) / frequency;
}

/// Measures from its making.
class Stopwatch {
public:
    double seconds() const { return now_s() - start_; }

private:
    const double start_ = now_s();
};
