/// @file
/// A picture.
#pragma once

#include <vector>

/// A picture in memory, ready for the system's drawing functions (with a negative height, since its top line
/// comes first). Owns its pixels, and keeps their memory when another picture of the same size is put into
/// it.
struct dvPicture {
    unsigned width = 0;  ///< pixels in a line; 0 without a picture
    unsigned height = 0; ///< lines
    /// The sides of the picture as it is to be shown, 4:3 or 16:9: the pixels themselves are mostly not
    /// square.
    unsigned aspectNumerator = 4;
    unsigned aspectDenominator = 3; ///< see there
    /// 4 bytes for each pixel (blue, green, red, unused), the top line first, without gaps.
    std::vector<unsigned char> pixels;

    /// How wide a pixel is to be shown, where its height is 1. Of a picture that is there only.
    double pixelAspect() const {
        return static_cast<double>(aspectNumerator) * height /
               (static_cast<double>(aspectDenominator) * width);
    }
};
