#include "marvo/picture/taken_picture.h"

#include <gtest/gtest.h>

#include <climits>

namespace {

TEST(Picture, IsTakenOnlyWhenItsBytesAreThere) {
    const std::vector<unsigned char> data = {1, 2, 3, 4, 5, 6, 9, 9, 11, 12, 13, 14, 15, 16, 9, 9};
    dvPicture taken;
    const auto takes = [&](long width, long height, unsigned pixelBytes) {
        const BITMAPINFOHEADER header{sizeof header, width, height, 1, 24, 0, 0, 0, 0, 0, 0};
        return picture::takePicture(header, pixelBytes, data.data(), data.size(), taken);
    };
    ASSERT_TRUE(takes(2, 2, 3));
    EXPECT_EQ(taken.pixels[0], 11) << "the lowest line comes first";
    ASSERT_TRUE(takes(2, -2, 3));
    EXPECT_EQ(taken.pixels[0], 1);
    EXPECT_EQ(taken.pixels[12], 14);
    const long refused[][2] = {
        {2, 3},          {0, 1}, {-2, 2}, {2, 0}, {2, LONG_MIN}, {0x40000000, 4}, {LONG_MAX, LONG_MAX},
        {0x8000, 0x8000}};
    for (const auto& [width, height] : refused) {
        EXPECT_FALSE(takes(width, height, 4)) << width << " x " << height;
    }
    EXPECT_FALSE(takes(1, 1, 0));
}

} // namespace
