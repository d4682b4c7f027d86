#include "marvo/picture/taken_picture.h"

#include <cstring>

namespace picture {

bool takePicture(const BITMAPINFOHEADER& header, unsigned pixelBytes, const unsigned char* data,
                 unsigned long long bytes, dvPicture& picture) {
    // Larger than any picture of DV, and small enough for every product below.
    constexpr long long mostPixels = 0x4000;
    const long long lines = header.biHeight < 0 ? -1ll * header.biHeight : header.biHeight;
    if (pixelBytes < 3 || pixelBytes > 4 || header.biWidth <= 0 || header.biWidth > mostPixels ||
        lines == 0 || lines > mostPixels) {
        return false;
    }
    const auto width = static_cast<std::size_t>(header.biWidth);
    const auto height = static_cast<std::size_t>(lines);
    const std::size_t stride = (width * pixelBytes + 3) / 4 * 4;
    if (bytes < stride * height) {
        return false;
    }
    picture.pixels.resize(width * height * 4);
    picture.width = static_cast<unsigned>(width);
    picture.height = static_cast<unsigned>(height);
    for (std::size_t line = 0; line < height; ++line) {
        const unsigned char* const from = data + stride * (header.biHeight > 0 ? height - 1 - line : line);
        unsigned char* const to = &picture.pixels[line * width * 4];
        if (pixelBytes == 4) {
            std::memcpy(to, from, width * 4);
            continue;
        }
        for (std::size_t column = 0; column < width; ++column) {
            std::memcpy(to + column * 4, from + column * 3, 3);
        }
    }
    return true;
}

} // namespace picture
