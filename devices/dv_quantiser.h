/// @file
/// What the coefficients of a DV block are worth, and in which order they come.
#pragma once

#include <cstdint>

namespace devices {

/// How a block's coefficients become input of the inverse transform: each level, times the factor of its
/// place in the block's order, goes to that place's position.
struct dv_scale {
    int32_t factor[64];      ///< in 2^-`fraction_bits`
    const uint8_t* position; ///< 64 of them; of dv_transform's input

    static constexpr int fraction_bits = 14;
};

/// The scales of every kind of block: quantisation step, weighting, and what the inverse transform leaves to
/// its input. Immutable, for any thread.
class dv_quantiser {
public:
    /// Made once, lives as long as the program.
    static const dv_quantiser& table();

    /// `number` is the macroblock's quantisation number (0 to 15), `block_class` the block's class (0 to 3);
    /// `two_fields` is for a block of the 2-4-8 transform.
    const dv_scale& of(bool two_fields, int block_class, int number) const {
        return scales_[two_fields][block_class][number];
    }

private:
    dv_quantiser();

    dv_scale scales_[2][4][16];
    uint8_t positions_[2][64];
};

} // namespace devices
