/// @file
/// Pictures as files.
#pragma once

#include <string>

namespace app {

/// A picture in memory, rows from the top, four bytes a pixel: blue, green, red, and one unused.
struct PixelView {
    const void* pixels = nullptr;
    int width = 0;
    int height = 0;
};

/// Writes a PNG through the system's imaging component, on a thread with COM. A pixel is `aspect` times as
/// wide as high, which the file says. False with the reason in `fault`; what was written is then no picture.
bool writePng(const PixelView& picture, double aspect, const std::wstring& path, std::wstring& fault);

} // namespace app
