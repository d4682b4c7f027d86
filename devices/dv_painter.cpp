#include "devices/dv_painter.h"

#include <algorithm>
#include <cstring>

namespace devices {

namespace {

const int most_pixels = 720;
const uint8_t black = 16;
const uint8_t no_colour = 128;

// BT.601 in 2^-13; sums of what they make are in 2^-5, so that they stay within 16 bits.
const int16_t luma_gain = 9539;      // 255 / 219
const int16_t red_of_red = 13075;    // 1.402 * 255 / 224
const int16_t green_of_red = -6660;  // -0.714 * 255 / 224
const int16_t green_of_blue = -3209; // -0.344 * 255 / 224
const int16_t blue_of_blue = 16525;  // 1.772 * 255 / 224
const int to_sums = 13 - 5;
const int from_sums = 5;

int16_t in_sums(int32_t product) {
    return static_cast<int16_t>((product + (1 << (to_sums - 1))) >> to_sums);
}

int32_t product(int16_t one, int16_t other) {
    return static_cast<int32_t>(one) * other;
}

/// One channel of a line: brightness, and what colour adds to it at every second pixel and, blended, between.
void add_colour(const int16_t* __restrict luma, const int16_t* __restrict colour, uint8_t* __restrict out,
                int pairs) {
    int16_t sums[most_pixels];
    for (int pair = 0; pair < pairs; ++pair) {
        const int16_t here = colour[pair], next = colour[pair + 1];
        sums[2 * pair] = static_cast<int16_t>(luma[2 * pair] + here);
        sums[2 * pair + 1] = static_cast<int16_t>(luma[2 * pair + 1] + ((here + next) >> 1));
    }
    for (int x = 0; x < 2 * pairs; ++x) {
        const auto whole = static_cast<int16_t>(sums[x] >> from_sums);
        const int16_t lit = whole < 0 ? int16_t{0} : whole;
        out[x] = static_cast<uint8_t>(lit > 255 ? int16_t{255} : lit);
    }
}

void put_rgb32(const uint8_t* __restrict red, const uint8_t* __restrict green, const uint8_t* __restrict blue,
               uint8_t* __restrict out, int width) {
    // In halves of pixels, since vectors are woven in pairs best.
    uint16_t halves[2 * most_pixels];
    for (int x = 0; x < width; ++x) {
        halves[2 * x] = static_cast<uint16_t>(blue[x] | green[x] << 8);
        halves[2 * x + 1] = red[x];
    }
    std::memcpy(out, halves, static_cast<size_t>(width) * 4);
}

void put_rgb24(const uint8_t* __restrict red, const uint8_t* __restrict green, const uint8_t* __restrict blue,
               uint8_t* __restrict out, int width) {
    // Each pixel is stored with a byte too many, which the next one puts right.
    uint8_t pixels[4 * most_pixels];
    put_rgb32(red, green, blue, pixels, width);
    for (int x = 0; x < width - 1; ++x) {
        std::memcpy(out + 3 * x, pixels + 4 * x, 4);
    }
    std::memcpy(out + 3 * (width - 1), pixels + 4 * (width - 1), 3);
}

/// Pixels in pairs: their luma first, at the bytes 0 and 2, or last.
void put_pairs(const uint8_t* __restrict luma, const uint8_t* __restrict blue, const uint8_t* __restrict red,
               bool luma_first, uint8_t* __restrict out, int pairs) {
    if (luma_first) {
        for (int pair = 0; pair < pairs; ++pair) {
            out[4 * pair] = luma[2 * pair];
            out[4 * pair + 1] = blue[pair];
            out[4 * pair + 2] = luma[2 * pair + 1];
            out[4 * pair + 3] = red[pair];
        }
    } else {
        for (int pair = 0; pair < pairs; ++pair) {
            out[4 * pair] = blue[pair];
            out[4 * pair + 1] = luma[2 * pair];
            out[4 * pair + 2] = red[pair];
            out[4 * pair + 3] = luma[2 * pair + 1];
        }
    }
}

} // namespace

size_t pixel_bytes(dv_pixels pixels) {
    return pixels == dv_pixels::rgb32 ? 4 : pixels == dv_pixels::rgb24 ? 3 : 2;
}

void dv_painter::paint(const dv_system& target, dv_pixels pixels, uint8_t* out) const {
    const size_t line_bytes = width * pixel_bytes(pixels);
    const bool bottom_first = pixels == dv_pixels::rgb32 || pixels == dv_pixels::rgb24;
    for (int y = 0; y < target.height; ++y) {
        paint_line(y, pixels, out + line_bytes * (bottom_first ? target.height - 1 - y : y));
    }
}

void dv_painter::paint_line(int y, dv_pixels pixels, uint8_t* out) const {
    uint8_t dark[width];
    colour_line colours;
    const bool below = y >= picture_.luma.height;
    if (below) {
        std::fill_n(dark, width, black);
        std::fill_n(colours.blue, pairs + 1, no_colour);
        std::fill_n(colours.red, pairs + 1, no_colour);
    } else {
        spread(picture_.blue, y, colours.blue);
        spread(picture_.red, y, colours.red);
    }
    const uint8_t* const luma = below ? dark : picture_.luma.line(y);
    if (pixels == dv_pixels::yuy2 || pixels == dv_pixels::uyvy) {
        put_pairs(luma, colours.blue, colours.red, pixels == dv_pixels::yuy2, out, pairs);
        return;
    }
    rgb_line rgb;
    to_rgb(luma, colours, rgb);
    (pixels == dv_pixels::rgb32 ? put_rgb32 : put_rgb24)(rgb.red, rgb.green, rgb.blue, out, width);
}

/// A colour difference's samples for the line `y`.
void dv_painter::spread(const dv_plane& plane, int y, uint8_t* out) {
    if (plane.width == pairs) {
        // Every second line is the other field's. A field's sample is between two of its lines.
        const int field = y % 2, line = y / 2 / 2, lines = plane.height / 2;
        const int other = std::clamp(y / 2 % 2 ? line + 1 : line - 1, 0, lines - 1);
        const uint8_t* const near = plane.line(2 * line + field);
        const uint8_t* const far = plane.line(2 * other + field);
        for (int pair = 0; pair < pairs; ++pair) {
            out[pair] = static_cast<uint8_t>((3 * near[pair] + far[pair] + 2) >> 2);
        }
    } else {
        const uint8_t* const samples = plane.line(y);
        for (int sample = 0; sample + 1 < plane.width; ++sample) {
            out[2 * sample] = samples[sample];
            out[2 * sample + 1] = static_cast<uint8_t>((samples[sample] + samples[sample + 1] + 1) >> 1);
        }
        out[pairs - 2] = out[pairs - 1] = samples[plane.width - 1];
    }
    out[pairs] = out[pairs - 1];
}

void dv_painter::to_rgb(const uint8_t* luma, const colour_line& colour, rgb_line& out) {
    int16_t bright[width];
    int16_t red[pairs + 1], green[pairs + 1], blue[pairs + 1];
    const int32_t rounding = 1 << (to_sums + from_sums - 1);
    for (int x = 0; x < width; ++x) {
        const auto above_black = static_cast<int16_t>(luma[x] - black);
        bright[x] = in_sums(product(above_black, luma_gain) + rounding);
    }
    for (int pair = 0; pair <= pairs; ++pair) {
        const auto blueness = static_cast<int16_t>(colour.blue[pair] - no_colour);
        const auto redness = static_cast<int16_t>(colour.red[pair] - no_colour);
        red[pair] = in_sums(product(redness, red_of_red));
        green[pair] = in_sums(product(redness, green_of_red) + product(blueness, green_of_blue));
        blue[pair] = in_sums(product(blueness, blue_of_blue));
    }
    add_colour(bright, red, out.red, pairs);
    add_colour(bright, green, out.green, pairs);
    add_colour(bright, blue, out.blue, pairs);
}

} // namespace devices
