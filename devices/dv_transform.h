/// @file
/// From coefficients to pixels.
#pragma once

#include <cstddef>
#include <cstdint>

namespace devices {

/// The inverse of DV's two cosine transforms. Input are 64 coefficients, already multiplied by `input_scale`
/// of their frequencies, in 2^-`fraction_bits` pixels; output are 8 x 8 pixels, 0 to 255. Any input gives an
/// output: what lies beyond what pixels can make wraps.
class dv_transform {
public:
    static constexpr int fraction_bits = 8;
    /// What the coefficient 0 has to have on top: mid grey, and half a unit for rounding.
    static constexpr int32_t grey = (128 << fraction_bits) + (1 << (fraction_bits - 1));

    /// Where a coefficient is in the input.
    static constexpr int position(int horizontal, int vertical) { return horizontal * 8 + vertical; }
    /// What a coefficient of the orthonormal transform must have been multiplied by, for each direction. The
    /// lines of the 2-4-8 transform count as those of even frequencies.
    static double input_scale(int frequency);

    /// One 8-8 block, or one 2-4-8 block, whose vertical frequencies 4 to 7 are those of the differences of
    /// two lines each. `line_bytes` is from one line of `out` to the next.
    static void frame_block(const int32_t* input, uint8_t* out, ptrdiff_t line_bytes);
    static void field_block(const int32_t* input, uint8_t* out, ptrdiff_t line_bytes);
    /// A block that has nothing but the coefficient 0.
    static void flat_block(int32_t input, uint8_t* out, ptrdiff_t line_bytes);
};

} // namespace devices
