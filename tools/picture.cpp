#include "tools/picture.h"

#include <cstring>

namespace dvrec {

bool takePicture(const BITMAPINFOHEADER& header, unsigned pixelBytes, const unsigned char* data,
                 unsigned long long bytes, Picture& picture) {
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
    picture = {static_cast<unsigned>(width), static_cast<unsigned>(height),
               std::vector<unsigned char>(width * height * 4)};
    for (std::size_t line = 0; line < height; ++line) {
        const unsigned char* from = data + stride * (header.biHeight > 0 ? height - 1 - line : line);
        for (std::size_t column = 0; column < width; ++column) {
            std::memcpy(&picture.pixels[(line * width + column) * 4], from + column * pixelBytes, 3);
        }
    }
    return true;
}

} // namespace dvrec
