#include "devices/dv_quantiser.h"

#include "devices/dv_transform.h"

#include <algorithm>
#include <cmath>

namespace devices {

namespace {

/// Of the four areas of a block, from the lowest frequencies to the highest; the finer the lower in the
/// table.
const int steps[][4] = {{8, 8, 16, 16}, {8, 8, 16, 16}, {4, 8, 8, 16}, {4, 8, 8, 16},
                        {4, 4, 8, 8},   {4, 4, 8, 8},   {2, 4, 4, 8},  {2, 4, 4, 8},
                        {2, 2, 4, 4},   {2, 2, 4, 4},   {1, 2, 2, 4},  {1, 2, 2, 4},
                        {1, 1, 2, 2},   {1, 1, 2, 2},   {1, 1, 1, 2},  {1, 1, 1, 1}};
const int finest = 15;
/// Which row of the steps the quantisation number 0 means, by class.
const int first_row[] = {6, 3, 0, 1};
/// The first places, in a block's order, of the areas 1 to 3.
const int area_begins[] = {6, 21, 43};

/// When the pairs of a sum and a difference of two lines come, by the vertical frequency, then the
/// horizontal.
const uint8_t pair_order[4][8] = {{0, 1, 3, 9, 10, 17, 18, 25},
                                  {2, 4, 8, 11, 16, 19, 24, 26},
                                  {5, 7, 12, 15, 20, 23, 27, 30},
                                  {6, 13, 14, 21, 22, 28, 29, 31}};

double cosine(int sixteenths) {
    return std::cos(3.14159265358979323846 * sixteenths / 16);
}

/// By how much the encoder has weakened a frequency of one direction.
double weight(int frequency) {
    const double weights[] = {1,
                              cosine(4) / (4 * cosine(7) * cosine(2)),
                              cosine(4) / (2 * cosine(6)),
                              1 / (2 * cosine(5)),
                              7.0 / 8,
                              cosine(4) / cosine(3),
                              cosine(4) / cosine(2),
                              cosine(4) / cosine(1)};
    return weights[frequency];
}

struct place {
    int horizontal; // frequency, 0 to 7
    int vertical;   // frequency; of the 2-4-8 transform 0 to 3 for sums of lines, 4 to 7 for differences
};

/// The diagonals, one upwards, the next downwards.
void order_of_one_frame(place* out) {
    for (int diagonal = 0; diagonal < 15; ++diagonal) {
        for (int i = std::max(0, diagonal - 7); i <= std::min(diagonal, 7); ++i) {
            *out++ = diagonal % 2 ? place{diagonal - i, i} : place{i, diagonal - i};
        }
    }
}

void order_of_two_fields(place* out) {
    for (int vertical = 0; vertical < 4; ++vertical) {
        for (int horizontal = 0; horizontal < 8; ++horizontal) {
            const int pair = pair_order[vertical][horizontal];
            out[2 * pair] = {horizontal, vertical};
            out[2 * pair + 1] = {horizontal, vertical + 4};
        }
    }
}

} // namespace

const dv_quantiser& dv_quantiser::table() {
    static const dv_quantiser quantiser;
    return quantiser;
}

dv_quantiser::dv_quantiser() : scales_{}, positions_{} {
    for (const bool two_fields : {false, true}) {
        place order[64];
        two_fields ? order_of_two_fields(order) : order_of_one_frame(order);
        double worth[64]; // of a step in pixels
        for (int i = 0; i < 64; ++i) {
            const int vertical = two_fields ? order[i].vertical % 4 * 2 : order[i].vertical;
            positions_[two_fields][i] =
                static_cast<uint8_t>(dv_transform::position(order[i].horizontal, order[i].vertical));
            worth[i] = 2 / (weight(order[i].horizontal) * weight(vertical)) *
                       dv_transform::input_scale(order[i].horizontal) * dv_transform::input_scale(vertical);
        }
        for (int block_class = 0; block_class < 4; ++block_class) {
            for (int number = 0; number < 16; ++number) {
                dv_scale& scale = scales_[two_fields][block_class][number];
                scale.position = positions_[two_fields];
                const int* step = steps[std::min(number + first_row[block_class], finest)];
                for (int i = 0; i < 64; ++i) {
                    const auto area = std::upper_bound(area_begins, area_begins + 3, i) - area_begins;
                    // Blocks of class 3 were halved before everything else.
                    const int whole = step[area] * (block_class == 3 ? 2 : 1);
                    scale.factor[i] = static_cast<int32_t>(
                        std::lround(std::ldexp(worth[i] * whole, dv_scale::fraction_bits)));
                }
            }
        }
    }
}

} // namespace devices
