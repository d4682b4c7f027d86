#include "tools/still.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace dvrec {

namespace {

constexpr std::size_t pixelBytes = 4;

/// The cubic of Catmull and Rom: sharp, and true to the pixels that it stands on.
double cubic(double distance) {
    const double x = std::abs(distance);
    return x < 1 ? (1.5 * x - 2.5) * x * x + 1 : x < 2 ? ((-0.5 * x + 2.5) * x - 4) * x + 2 : 0;
}

/// Of which pixels of a line, and with which shares, a pixel of the resampled line is made.
struct Shares {
    std::size_t first = 0;
    std::vector<double> shares;
};

std::vector<Shares> sharesFor(unsigned from, unsigned to) {
    const double step = static_cast<double>(from) / to;
    // A line that becomes shorter needs a wider view.
    const double stretch = std::max(step, 1.0);
    const double reach = 2 * stretch;
    std::vector<Shares> all(to);
    for (unsigned i = 0; i < to; ++i) {
        const double centre = (i + 0.5) * step - 0.5;
        const auto first = static_cast<std::size_t>(std::max(std::ceil(centre - reach), 0.0));
        const auto last = static_cast<std::size_t>(std::min(std::floor(centre + reach), from - 1.0));
        Shares& shares = all[i];
        shares.first = first;
        double sum = 0;
        for (std::size_t pixel = first; pixel <= last; ++pixel) {
            shares.shares.push_back(cubic((static_cast<double>(pixel) - centre) / stretch));
            sum += shares.shares.back();
        }
        for (double& share : shares.shares) {
            share /= sum;
        }
    }
    return all;
}

unsigned char toByte(double value) {
    return static_cast<unsigned char>(std::clamp(value + 0.5, 0.0, 255.0));
}

} // namespace

void keepField(dvPicture& picture, bool upper) {
    const std::size_t stride = picture.width * pixelBytes;
    const unsigned kept = upper ? 0 : 1;
    for (unsigned line = 1 - kept; line < picture.height && picture.height > 1; line += 2) {
        unsigned char* const to = &picture.pixels[line * stride];
        // At the edge there is one neighbour only.
        const unsigned char* const above = line > 0 ? to - stride : to + stride;
        const unsigned char* const below = line + 1 < picture.height ? to + stride : to - stride;
        for (std::size_t i = 0; i < stride; ++i) {
            to[i] = static_cast<unsigned char>((above[i] + below[i] + 1) / 2);
        }
    }
}

void makeSquare(dvPicture& picture) {
    const auto width = static_cast<unsigned>(std::lround(picture.width * picture.pixelAspect()));
    const std::vector<Shares> shares = sharesFor(picture.width, width);
    std::vector<unsigned char> pixels(width * pixelBytes * picture.height);
    for (unsigned line = 0; line < picture.height; ++line) {
        const unsigned char* const from = &picture.pixels[line * picture.width * pixelBytes];
        unsigned char* to = &pixels[line * width * pixelBytes];
        for (const Shares& pixel : shares) {
            for (std::size_t colour = 0; colour < pixelBytes - 1; ++colour) {
                double value = 0;
                for (std::size_t i = 0; i < pixel.shares.size(); ++i) {
                    value += pixel.shares[i] * from[(pixel.first + i) * pixelBytes + colour];
                }
                to[colour] = toByte(value);
            }
            to += pixelBytes;
        }
    }
    picture.pixels = std::move(pixels);
    picture.width = picture.aspectNumerator = width;
    picture.aspectDenominator = picture.height;
}

} // namespace dvrec
