/// @file
/// From the planes of a DV picture to pixels.
#pragma once

#include "devices/dv_picture.h"

namespace devices {

/// How pixels lie in memory, without gaps between lines.
enum class dv_pixels {
    rgb32, ///< blue, green, red, 0; the bottom line first
    rgb24, ///< blue, green, red; the bottom line first
    yuy2,  ///< luma, blue difference, luma, red difference for two pixels; the top line first
    uyvy,  ///< blue difference, luma, red difference, luma for two pixels; the top line first
};

/// What one takes.
size_t pixel_bytes(dv_pixels pixels);

/// Paints pictures. Red, green and blue are 0 to 255; what lies beyond black and white is cut off. Colour is
/// blended between its samples: along lines, and, where it has half the lines, within each field, since two
/// lines side by side may be a fiftieth of a second apart.
class dv_painter {
public:
    explicit dv_painter(const dv_picture& picture) : picture_(picture) {}

    /// Paints the picture at the size of `target`. One of the other system is cut, or ends in black lines.
    void paint(const dv_system& target, dv_pixels pixels, uint8_t* out) const;

private:
    static const int width = 720;
    static const int pairs = width / 2;

    /// The colour differences of one line for pairs of pixels, each where the pair's first pixel is; the last
    /// stands twice.
    struct colour_line {
        uint8_t blue[pairs + 1];
        uint8_t red[pairs + 1];
    };
    struct rgb_line {
        uint8_t red[width];
        uint8_t green[width];
        uint8_t blue[width];
    };

    void paint_line(int y, dv_pixels pixels, uint8_t* out) const;
    static void spread(const dv_plane& plane, int y, uint8_t* out);
    static void to_rgb(const uint8_t* luma, const colour_line& colour, rgb_line& out);

    const dv_picture& picture_;
};

} // namespace devices
