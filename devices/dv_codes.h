/// @file
/// The variable-length codes of DV video.
#pragma once

#include <cstdint>

namespace devices {

/// What one code says.
struct dv_code {
    /// The `run` that ends a block.
    static constexpr uint8_t end_of_block = 127;

    int16_t level;  ///< of the coefficient behind the zeros; may be 0
    uint8_t run;    ///< zero coefficients before it
    uint8_t length; ///< of the code, its sign included, in bits
};

/// The codes for runs of zero coefficients and the coefficient that ends them: 3 to 16 bits, none the
/// beginning of another. Every sequence of 16 bits begins with one of them. Immutable, for any thread.
class dv_codes {
public:
    /// Made once, lives as long as the program.
    static const dv_codes& table();

    /// The code with which 32 bits (most significant first) begin; those behind the 16th do not matter.
    dv_code at(uint32_t bits) const {
        if (bits < long_codes) {
            return short_[bits >> (32 - short_bits)];
        }
        if (bits < escape) {
            return long_[bits >> (32 - most_bits_of_long) & 0xFF];
        }
        const int amplitude = static_cast<int>(bits >> 17 & 0xFF);
        return {static_cast<int16_t>(bits & 0x10000 ? -amplitude : amplitude), 0, 16};
    }

private:
    dv_codes();
    void enter(uint32_t code, int length, const dv_code& meaning);

    // Codes of more than 10 bits begin with five ones; those that spell out an amplitude with seven.
    static constexpr int short_bits = 10;
    static constexpr int most_bits_of_long = 13;
    static constexpr uint32_t long_codes = 0xF8000000;
    static constexpr uint32_t escape = 0xFE000000;

    dv_code short_[1 << short_bits];
    dv_code long_[256];
};

} // namespace devices
