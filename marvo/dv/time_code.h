/// @file
/// The time code in a DV frame.
#pragma once

#include "marvo/dv/layout.h"

#include <optional>
#include <string>

namespace vdv {

/// Hours, minutes, seconds and frames as the camera counted them.
struct TimeCode {
    unsigned hours = 0;
    unsigned minutes = 0;
    unsigned seconds = 0;
    unsigned frames = 0;
    bool dropFrame = false; ///< numbers 0 and 1 are left out in every minute but each tenth

    /// Reads it from the subcode. Nothing when no sequence in `frame` has one, or only one with impossible
    /// digits.
    static std::optional<TimeCode> read(FrameBytes frame);

    /// Frames since 00:00:00:00, at 25 or 30 frames per counted second.
    unsigned long count(unsigned rate) const;
    /// "hh:mm:ss:ff", with ";" before the frames in drop-frame counting.
    std::string text() const;
};

} // namespace vdv
