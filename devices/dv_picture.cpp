#include "devices/dv_picture.h"

#include "devices/dv_layout.h"

#include <algorithm>
#include <cstring>

namespace devices {

namespace {

const int cell = 8;           // pixels and lines
const int weights = 2 * cell; // a blend of two cells is in sixteenths: pixel centres lie at odd sixteenths
const int video_section = 4;
const int macroblock_header = 4; // identification and status
const int luma_block_bytes = 14;
const int chroma_block_bytes = 10;
const int most_columns = 90;

uint32_t clamped(int value) {
    return static_cast<uint32_t>(std::clamp(value, 0, 255));
}

/// How a line or pixel lies between cells: the first of the two, and the second's weight in sixteenths.
struct position {
    int first;
    int weight;
};

position between_cells(int pixel, int cells) {
    const int place = std::clamp(2 * pixel + 1 - cell, 0, (cells - 1) * weights);
    return {place / weights, place % weights};
}

struct pixel32 {
    static const int bytes = 4;
    static void put(uint8_t* out, uint32_t rgb) { std::memcpy(out, &rgb, 4); }
};

struct pixel24 {
    static const int bytes = 3;
    static void put(uint8_t* out, uint32_t rgb) {
        out[0] = static_cast<uint8_t>(rgb);
        out[1] = static_cast<uint8_t>(rgb >> 8);
        out[2] = static_cast<uint8_t>(rgb >> 16);
    }
};

} // namespace

dv_picture::dv_picture() : system_(nullptr) {
    decode(nullptr, 0, dv_system::pal_system());
}

void dv_picture::decode(const uint8_t* bytes, size_t count, const dv_system& expected) {
    const dv_system* said = dv_system::of_frame(bytes, count);
    system_ = said ? said : &expected;
    const dv_layout& layout = dv_layout::of(*system_);
    cells_.assign(static_cast<size_t>(layout.columns()) * layout.rows(), from_dc(0, 0, 0));
    for (const dv_macroblock& macroblock : layout.macroblocks()) {
        if (macroblock.offset + dv_layout::block_bytes > count) {
            break;
        }
        const uint8_t* block = bytes + macroblock.offset;
        if (block[0] >> 5 != video_section) {
            continue;
        }
        block += macroblock_header;
        const uint8_t* red = block + 4 * luma_block_bytes;
        const int red_difference = dc_of(red);
        const int blue_difference = dc_of(red + chroma_block_bytes);
        for (const uint16_t place : macroblock.cell) {
            cells_[place] = from_dc(dc_of(block), red_difference, blue_difference);
            block += luma_block_bytes;
        }
    }
}

/// The block's first nine bits, in two's complement: twice the mean's distance from 128.
int dv_picture::dc_of(const uint8_t* block) {
    const int bits = block[0] << 1 | block[1] >> 7;
    return bits < 256 ? bits : bits - 512;
}

dv_picture::colour dv_picture::from_dc(int luma, int red_difference, int blue_difference) {
    // BT.601 with 16..235 luma, in 65536ths; the inputs are in halves.
    const int y = 38155 * (luma + 2 * (128 - 16)) + 32768;
    const int red = (y + 52298 * red_difference) >> 16;
    const int green = (y - 26639 * red_difference - 12837 * blue_difference) >> 16;
    const int blue = (y + 66101 * blue_difference) >> 16;
    return {clamped(red) << 16 | clamped(blue), clamped(green)};
}

void dv_picture::paint(const dv_system& target, int pixel_bytes, uint8_t* out) const {
    const size_t line_bytes = static_cast<size_t>(target.width) * pixel_bytes;
    const int columns = target.width / cell;
    colour line_cells[most_columns];
    for (int line = 0; line < target.height; ++line) {
        uint8_t* to = out + line_bytes * (target.height - 1 - line);
        if (line >= system_->height) {
            std::memset(to, 0, line_bytes);
            continue;
        }
        blend_rows(line, line_cells);
        if (pixel_bytes == pixel32::bytes) {
            paint_line<pixel32>(line_cells, columns, to);
        } else {
            paint_line<pixel24>(line_cells, columns, to);
        }
    }
}

/// The cells of one line between two rows of cells, in sixteenths.
void dv_picture::blend_rows(int line, colour* out) const {
    const int columns = system_->width / cell;
    const int rows = system_->height / cell;
    const position at = between_cells(line, rows);
    const colour* upper = &cells_[static_cast<size_t>(at.first) * columns];
    const colour* lower = at.first + 1 < rows ? upper + columns : upper;
    const uint32_t lower_weight = static_cast<uint32_t>(at.weight);
    const uint32_t upper_weight = weights - lower_weight;
    for (int column = 0; column < columns; ++column) {
        out[column].red_blue = upper[column].red_blue * upper_weight + lower[column].red_blue * lower_weight;
        out[column].green = upper[column].green * upper_weight + lower[column].green * lower_weight;
    }
}

/// Draws a line: half a cell flat at either end, and steps of two sixteenths from cell to cell in between.
/// Differences of red and blue borrow from each other, but every sum is a true pair again.
template <class Pixel>
void dv_picture::paint_line(const colour* cells, int columns, uint8_t* out) {
    const uint32_t half = 0x00800080; // rounds both channels of a sum in 256ths
    const auto put = [&out](uint32_t red_blue, uint32_t green) {
        Pixel::put(out, (red_blue >> 8 & 0x00FF00FF) | (green & 0xFF00));
        out += Pixel::bytes;
    };
    const auto put_flat = [&](const colour& one) {
        for (int pixel = 0; pixel < cell / 2; ++pixel) {
            put(one.red_blue * weights + half, one.green * weights + 128);
        }
    };
    put_flat(cells[0]);
    for (int column = 0; column + 1 < columns; ++column) {
        const colour& left = cells[column];
        const colour& right = cells[column + 1];
        const uint32_t red_blue_step = right.red_blue - left.red_blue;
        const uint32_t green_step = right.green - left.green;
        uint32_t red_blue = left.red_blue * weights + half + red_blue_step;
        uint32_t green = left.green * weights + 128 + green_step;
        for (int pixel = 0; pixel < cell; ++pixel) {
            put(red_blue, green);
            red_blue += 2 * red_blue_step;
            green += 2 * green_step;
        }
    }
    put_flat(cells[columns - 1]);
}

} // namespace devices
