/// @file
/// Pictures as decoders hand them out.
#pragma once

#include "marvo/core/windows.h"
#include "marvo/picture/picture.h"

namespace picture {

/// Copies a picture of `pixelBytes` (3 or 4) bytes per pixel, as `header` describes it: lines are padded to 4
/// bytes, and the lowest one comes first unless the height is negative. False when the sides are none of a
/// picture or the `bytes` bytes at `data` do not hold it: the header comes from a decoder of the system's and
/// is not believed. The sides to show are not touched.
bool takePicture(const BITMAPINFOHEADER& header, unsigned pixelBytes, const unsigned char* data,
                 unsigned long long bytes, dvPicture& picture);

} // namespace picture
