/// @file
/// A picture.
#pragma once

#include "marvo/core/windows.h"

#include <vector>

namespace dvrec {

/// Pixels of 4 bytes (blue, green, red, unused), the top line first, without gaps.
struct Picture {
    unsigned width = 0;
    unsigned height = 0;
    std::vector<unsigned char> pixels;
};

/// Copies a picture of `pixelBytes` (3 or 4) bytes per pixel, as `header` describes it: lines are padded to 4
/// bytes, and the lowest one comes first unless the height is negative. False when the sides are none of a
/// picture or the `bytes` bytes at `data` do not hold it: the header comes from a decoder of the system's and
/// is not believed.
bool takePicture(const BITMAPINFOHEADER& header, unsigned pixelBytes, const unsigned char* data,
                 unsigned long long bytes, Picture& picture);

} // namespace dvrec
