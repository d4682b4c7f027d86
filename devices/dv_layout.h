/// @file
/// Where the macroblocks of a DV frame lie, in its bytes and in its picture.
#pragma once

#include "devices/dv_system.h"

#include <vector>

namespace devices {

/// One macroblock: its DIF block, and the pixels that it fills: 16 x 16 ones, or 32 x 8 where four luma
/// blocks lie in a row. In 625/50 frames (4:2:0) all are square, in 525/60 frames (4:1:1) those of the last
/// 16 columns; a colour block of these holds 4 x 8 samples for the upper half and, beside them, for the lower
/// one.
struct dv_macroblock {
    uint32_t offset; ///< of the DIF block in the frame, bytes
    uint16_t x, y;   ///< of the first pixel
    bool square;
};

/// The places of all macroblocks of one system. A frame is cut into superblocks (five in a row, one row per
/// DIF sequence) of 27 macroblocks, and a video segment takes one macroblock from each of five scattered
/// superblocks, so that a damaged track spoils small places all over the picture.
class dv_layout {
public:
    static const int block_bytes = 80; ///< of a DIF block

    /// The layout of a system; made once, lives as long as the program.
    static const dv_layout& of(const dv_system& system);

    /// In the order of the frame's bytes; five after the other are a video segment.
    const std::vector<dv_macroblock>& macroblocks() const { return macroblocks_; }

private:
    explicit dv_layout(const dv_system& system);
    static dv_macroblock place(const dv_system& system, int sequence, int segment, int part);

    std::vector<dv_macroblock> macroblocks_;
};

} // namespace devices
