#include "devices/dv_transform.h"

#include <cmath>
#include <cstring>

namespace devices {

namespace {

// A cosine transform of eight points by halving its angles. With t = pi/16 the sample n is the sum of c[k]
// cos((2n+1)kt). The scaled coefficient d[k] = c[k] / (2 cos(kt)) stands for c[k], since
//     c[k] cos((2n+1)kt) = d[k] (cos(2nkt) + cos((2n+2)kt)):
// with S(n) as the sum of d[k] cos(2nkt), sample n is S(n) + S(n+1). For odd k, S(4) is 0; for k = 2 and 6
// the same is done within, and S(2) is 0. Five products in the odd half and one in the even one remain, all
// by factors below 1. The samples 7 to 4 are the even half minus the odd one.
//
// Sums are made of unsigned numbers: of hostile coefficients they may wrap.
const int factor_bits = 11;
const int32_t cos_2 = 1892; // cos(2t), in 2^-11
const int32_t cos_4 = 1448;
const int32_t cos_6 = 784;

inline uint32_t times(int32_t factor, uint32_t value) {
    return static_cast<uint32_t>(static_cast<int32_t>(value * static_cast<uint32_t>(factor)) >> factor_bits);
}

/// Samples 0 to 3 of the coefficients 0, 2, 4 and 6. Also the whole transform of four points.
struct even_half {
    uint32_t sample[4];

    even_half(uint32_t c0, uint32_t d2, uint32_t c4, uint32_t d6) {
        const uint32_t outer = c0 + c4, inner = c0 - c4;
        const uint32_t s1 = times(cos_4, d2 - d6), s0 = d2 + d6;
        sample[0] = outer + s0 + s1;
        sample[1] = inner + s1;
        sample[2] = inner - s1;
        sample[3] = outer - s0 - s1;
    }
};

struct odd_half {
    uint32_t sample[4];

    odd_half(uint32_t d1, uint32_t d3, uint32_t d5, uint32_t d7) {
        const uint32_t far = d1 - d7, near = d3 - d5;
        const uint32_t s0 = d1 + d3 + d5 + d7;
        const uint32_t s1 = times(cos_2, far) + times(cos_6, near);
        const uint32_t s2 = times(cos_4, d1 - d3 - d5 + d7);
        const uint32_t s3 = times(cos_6, far) - times(cos_2, near);
        sample[0] = s0 + s1;
        sample[1] = s1 + s2;
        sample[2] = s2 + s3;
        sample[3] = s3;
    }
};

/// All rows of a block at a time: `in` has a row's coefficients 8 apart, `out` its samples side by side.
void transform_rows(const int32_t* __restrict in, uint32_t* __restrict out) {
    for (int row = 0; row < 8; ++row) {
        const auto c = [=](int k) { return static_cast<uint32_t>(in[k * 8 + row]); };
        const even_half even(c(0), c(2), c(4), c(6));
        const odd_half odd(c(1), c(3), c(5), c(7));
        for (int n = 0; n < 4; ++n) {
            out[row * 8 + n] = even.sample[n] + odd.sample[n];
            out[row * 8 + 7 - n] = even.sample[n] - odd.sample[n];
        }
    }
}

inline int16_t whole(uint32_t value) {
    return static_cast<int16_t>(static_cast<int32_t>(value) >> dv_transform::fraction_bits);
}

void write(const int16_t* __restrict pixels, uint8_t* __restrict out, ptrdiff_t line_bytes) {
    for (int line = 0; line < 8; ++line) {
        for (int column = 0; column < 8; ++column) {
            const int16_t pixel = pixels[line * 8 + column];
            const int16_t bounded = pixel < 0 ? int16_t{0} : pixel;
            out[column] = static_cast<uint8_t>(bounded > 255 ? int16_t{255} : bounded);
        }
        out += line_bytes;
    }
}

} // namespace

double dv_transform::input_scale(int frequency) {
    const double angle = 3.14159265358979323846 / 16;
    if (frequency % 4 == 0) {
        return std::sqrt(1.0 / 8);
    }
    return 0.5 / (2 * std::cos(frequency * angle));
}

void dv_transform::frame_block(const int32_t* input, uint8_t* out, ptrdiff_t line_bytes) {
    uint32_t rows[64];
    int16_t pixels[64];
    transform_rows(input, rows);
    for (int column = 0; column < 8; ++column) {
        const auto c = [&](int k) { return rows[k * 8 + column]; };
        const even_half even(c(0), c(2), c(4), c(6));
        const odd_half odd(c(1), c(3), c(5), c(7));
        for (int n = 0; n < 4; ++n) {
            pixels[n * 8 + column] = whole(even.sample[n] + odd.sample[n]);
            pixels[(7 - n) * 8 + column] = whole(even.sample[n] - odd.sample[n]);
        }
    }
    write(pixels, out, line_bytes);
}

void dv_transform::field_block(const int32_t* input, uint8_t* out, ptrdiff_t line_bytes) {
    uint32_t rows[64];
    int16_t pixels[64];
    transform_rows(input, rows);
    for (int column = 0; column < 8; ++column) {
        const auto c = [&](int k) { return rows[k * 8 + column]; };
        const even_half sums(c(0), c(1), c(2), c(3));
        const even_half differences(c(4), c(5), c(6), c(7));
        for (int n = 0; n < 4; ++n) {
            pixels[2 * n * 8 + column] = whole(sums.sample[n] + differences.sample[n]);
            pixels[(2 * n + 1) * 8 + column] = whole(sums.sample[n] - differences.sample[n]);
        }
    }
    write(pixels, out, line_bytes);
}

void dv_transform::flat_block(int32_t input, uint8_t* out, ptrdiff_t line_bytes) {
    const int16_t pixel = whole(static_cast<uint32_t>(input));
    for (int line = 0; line < 8; ++line) {
        std::memset(out, pixel < 0 ? 0 : pixel > 255 ? 255 : pixel, 8);
        out += line_bytes;
    }
}

} // namespace devices
