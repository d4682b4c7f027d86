/// @file
/// The picture of a DV frame, in planes.
#pragma once

#include "devices/dv_system.h"

#include <cstdint>
#include <vector>

namespace devices {

/// Samples of one kind side by side, the top line first.
struct dv_plane {
    int width = 0;
    int height = 0;
    std::vector<uint8_t> samples;

    uint8_t* line(int y) { return &samples[static_cast<size_t>(y) * width]; }
    const uint8_t* line(int y) const { return &samples[static_cast<size_t>(y) * width]; }
};

/// The picture of one system as a DV frame holds it: brightness of every pixel, and the colour differences,
/// which are fewer: half as many each way in 625/50 (4:2:0), one for four pixels of a line in 525/60 (4:1:1).
/// All by BT.601: 16 to 235 is black to white, 128 no colour.
class dv_picture {
public:
    /// A grey one.
    explicit dv_picture(const dv_system& system);

    const dv_system& system() const { return *system_; }

    dv_plane luma, blue, red;

private:
    const dv_system* system_;
};

} // namespace devices
