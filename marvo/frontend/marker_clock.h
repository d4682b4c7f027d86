/// @file
/// The time that two markers enclose.
#pragma once

#include "marvo/core/platform.h"

namespace frontend {

/// Started by a marker "XR", stopped by the first "Z+" after it.
class MarkerClock {
public:
    /// Begins at 0.
    void start() {
        base_ms_ = GetTickCount();
        offset_ms_ = 0;
    }
    /// Keeps the time since the start, unless one is kept already.
    void stop() {
        if (offset_ms_ == 0) {
            offset_ms_ = GetTickCount() - base_ms_;
        }
    }
    /// The time kept; 0 while there is none.
    unsigned long offset_ms() const { return offset_ms_; }

private:
    unsigned long base_ms_ = 0;
    unsigned long offset_ms_ = 0;
};

} // namespace frontend
