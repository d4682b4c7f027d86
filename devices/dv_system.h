/// @file
/// The two systems of DV video and their figures.
#pragma once

#include <cstddef>
#include <cstdint>

namespace devices {

/// The figures of one DV system. The two instances live as long as the program.
struct dv_system {
    const char* name;
    bool pal;
    size_t frame_bytes;
    int width;     ///< pixels
    int height;    ///< lines
    int sequences; ///< DIF sequences in a frame; also the rows of superblocks
    int64_t rate;  ///< frames in `rate_scale` seconds
    int64_t rate_scale;
    int64_t period; ///< 100 ns per frame, rounded

    /// 625 lines, 50 fields: 144000 bytes, 25 frames a second.
    static const dv_system& pal_system();
    /// 525 lines, 60 fields: 120000 bytes, 30000/1001 frames a second.
    static const dv_system& ntsc_system();

    /// The system a frame says it is of; null when `bytes` does not begin with a DV header block (of which
    /// four bytes suffice).
    static const dv_system* of_frame(const uint8_t* bytes, size_t count);
};

} // namespace devices
