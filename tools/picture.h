/// @file
/// A picture.
#pragma once

#include <vector>

namespace dvrec {

/// Pixels of 4 bytes (blue, green, red, unused), the top line first, without gaps.
struct Picture {
    unsigned width = 0;
    unsigned height = 0;
    std::vector<unsigned char> pixels;
};

} // namespace dvrec
