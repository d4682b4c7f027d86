/// @file
/// What a DV frame says of its sound.
#pragma once

#include "marvo/dv/layout.h"

#include <string>

namespace dvrec {

/// The sound in a frame, by its AAUX source packs; none without one.
struct SoundNotes {
    unsigned rate = 0;     ///< samples per second; 0 without sound
    unsigned channels = 0; ///< 2, or 4
    unsigned bits = 0;     ///< of a sample, 16 or 12
    bool locked = false;   ///< the count of samples follows the frames, as in a fixed pattern

    /// Reads them from a whole frame.
    static SoundNotes read(vdv::FrameBytes frame);
    /// "48000 Hz, 2 channels of 16 bits"; "none" without sound.
    std::string text() const;
};

} // namespace dvrec
