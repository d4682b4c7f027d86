#include "devices/dv_codes.h"

namespace devices {

namespace {

struct entry {
    int length; // without the sign, which follows every amplitude but 0
    int run;
    int amplitude;
};

/// In the order of the codes as binary fractions, so that the lengths alone tell the codes: 00, 010, 0110,
/// 0111, 1000 and so on.
const entry entries[] = {
    // clang-format off
    {2, 0, 1}, {3, 0, 2}, {4, dv_code::end_of_block, 0}, {4, 1, 1}, {4, 0, 3}, {4, 0, 4},
    {5, 2, 1}, {5, 1, 2}, {5, 0, 5}, {5, 0, 6},
    {6, 3, 1}, {6, 4, 1}, {6, 0, 7}, {6, 0, 8},
    {7, 5, 1}, {7, 6, 1}, {7, 2, 2}, {7, 1, 3}, {7, 1, 4}, {7, 0, 9}, {7, 0, 10}, {7, 0, 11},
    {8, 7, 1}, {8, 8, 1}, {8, 9, 1}, {8, 10, 1}, {8, 3, 2}, {8, 4, 2}, {8, 2, 3}, {8, 1, 5},
    {8, 1, 6}, {8, 1, 7}, {8, 0, 12}, {8, 0, 13}, {8, 0, 14}, {8, 0, 15}, {8, 0, 16}, {8, 0, 17},
    {9, 11, 1}, {9, 12, 1}, {9, 13, 1}, {9, 14, 1}, {9, 5, 2}, {9, 6, 2}, {9, 3, 3}, {9, 4, 3},
    {9, 2, 4}, {9, 2, 5}, {9, 1, 8}, {9, 0, 18}, {9, 0, 19}, {9, 0, 20}, {9, 0, 21}, {9, 0, 22},
    {10, 5, 3}, {10, 3, 4}, {10, 3, 5}, {10, 2, 6}, {10, 1, 9}, {10, 1, 10}, {10, 1, 11},
    {11, 0, 0}, {11, 1, 0}, {11, 6, 3}, {11, 4, 4}, {11, 3, 6}, {11, 1, 12}, {11, 1, 13}, {11, 1, 14},
    {12, 2, 0}, {12, 3, 0}, {12, 4, 0}, {12, 5, 0},
    {12, 7, 2}, {12, 8, 2}, {12, 9, 2}, {12, 10, 2}, {12, 7, 3}, {12, 8, 3}, {12, 4, 5}, {12, 3, 7},
    {12, 2, 7}, {12, 2, 8}, {12, 2, 9}, {12, 2, 10}, {12, 2, 11}, {12, 1, 15}, {12, 1, 16}, {12, 1, 17},
    // clang-format on
};

const uint32_t run_alone = 0x7E; // 1111110, then six bits of run
const int run_alone_length = 13;

} // namespace

const dv_codes& dv_codes::table() {
    static const dv_codes codes;
    return codes;
}

dv_codes::dv_codes() : short_{}, long_{} {
    uint32_t code = 0;
    int length = entries[0].length;
    for (const entry& one : entries) {
        code <<= one.length - length;
        length = one.length;
        const auto run = static_cast<uint8_t>(one.run);
        if (one.amplitude == 0) {
            enter(code, length, {0, run, static_cast<uint8_t>(length)});
        } else {
            const auto level = static_cast<int16_t>(one.amplitude);
            const auto whole = static_cast<uint8_t>(length + 1);
            enter(code << 1, whole, {level, run, whole});
            enter(code << 1 | 1, whole, {static_cast<int16_t>(-level), run, whole});
        }
        ++code;
    }
    for (uint32_t run = 0; run < 64; ++run) {
        enter(run_alone << 6 | run, run_alone_length,
              {0, static_cast<uint8_t>(run), static_cast<uint8_t>(run_alone_length)});
    }
}

/// Puts a code wherever bits that begin with it lead.
void dv_codes::enter(uint32_t code, int length, const dv_code& meaning) {
    const uint32_t first = code << (32 - length);
    const bool is_short = first < long_codes;
    dv_code* const part = is_short ? short_ : long_;
    const int bits = is_short ? short_bits : most_bits_of_long;
    const uint32_t index = first >> (32 - bits) & (is_short ? 0x3FF : 0xFF);
    for (uint32_t i = 0; i < 1u << (bits - length); ++i) {
        part[index + i] = meaning;
    }
}

} // namespace devices
