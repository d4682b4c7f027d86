/// @file
/// Where the macroblocks of a DV frame lie, in its bytes and in its picture.
#pragma once

#include "devices/dv_system.h"

#include <vector>

namespace devices {

/// One macroblock: its DIF block, and the four 8x8 cells of the picture that its luma blocks 0 to 3 fill. Its
/// colour blocks (Cr, then Cb) cover just these four cells. The cells are two by two in 625/50 frames (4:2:0)
/// and in the last 16 columns of 525/60 frames, four in a row elsewhere (4:1:1).
struct dv_macroblock {
    uint32_t offset;  ///< of the DIF block in the frame, bytes
    uint16_t cell[4]; ///< row * columns + column of the picture's grid of cells
};

/// The places of all macroblocks of one system. A frame is cut into superblocks (five in a row, one row per
/// DIF sequence) of 27 macroblocks, and a video segment takes one macroblock from each of five scattered
/// superblocks, so that a damaged track spoils small places all over the picture.
class dv_layout {
public:
    static const int block_bytes = 80; ///< of a DIF block

    /// The layout of a system; made once, lives as long as the program.
    static const dv_layout& of(const dv_system& system);

    int columns() const { return columns_; } ///< cells in a row of the picture
    int rows() const { return rows_; }
    /// In the order of the frame's bytes.
    const std::vector<dv_macroblock>& macroblocks() const { return macroblocks_; }

private:
    explicit dv_layout(const dv_system& system);
    dv_macroblock place(const dv_system& system, int sequence, int segment, int part) const;

    int columns_;
    int rows_;
    std::vector<dv_macroblock> macroblocks_;
};

} // namespace devices
