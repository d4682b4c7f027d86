/// @file
/// A video segment: five macroblocks that share their room.
#pragma once

#include "devices/dv_codes.h"
#include "devices/dv_quantiser.h"

#include <cstddef>
#include <cstdint>

namespace devices {

/// Reads video segments. A block whose codes do not fit its own place goes on in what others have left: first
/// those of its macroblock, then those of the whole segment. Not for several threads at once.
class dv_segment {
public:
    static constexpr int parts = 5;
    static constexpr int blocks = 6; ///< of a macroblock: four of luma, then red and blue difference
    static constexpr int dif_block_bytes = 80;

    /// Reads five DIF blocks of 80 bytes each; null stands for one that is missing. Whatever the bytes,
    /// nothing beyond them is read.
    void read(const uint8_t* const (&dif_blocks)[parts]);

    /// Whether a macroblock is there: its DIF block was, is not marked as bad, and its codes made sense.
    bool usable(int part) const { return usable_[part]; }
    /// Draws a block of a usable macroblock. `line_bytes` is from one line of `out` to the next.
    void draw(int part, int block, uint8_t* out, ptrdiff_t line_bytes) const;

private:
    /// Bits in memory, counted from `bytes`; four bytes behind the last can be read.
    struct bits {
        uint8_t* bytes;
        uint32_t next;
        uint32_t end;
    };
    struct block {
        int32_t coefficient[64];
        const dv_scale* scale;
        bool two_fields;
        bool finished;
        int next;      ///< place of the next coefficient in the block's order
        uint32_t rest; ///< the beginning of a code of which no more has come yet, in the highest bits
        uint32_t rest_bits;
    };

    bool read_macroblock(const uint8_t* dif_block, block* into, bits& segment_spare);
    bool go_on(block* with, bits& spare) const;
    bool read_codes(block& into, bits& from) const;
    static uint32_t peek(const bits& from);
    static void append(bits& to, bits from);
    static void put_before(bits& to, uint32_t value, uint32_t count);

    block blocks_[parts][blocks];
    bool usable_[parts] = {};
    const dv_quantiser& quantiser_ = dv_quantiser::table();
    const dv_codes& codes_ = dv_codes::table();
};

} // namespace devices
