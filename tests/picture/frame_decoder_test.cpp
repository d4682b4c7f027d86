#include "marvo.h"

#include "tests/support/samples.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>

namespace {

std::vector<unsigned char> streamFrame(const char* stream, unsigned long size, unsigned number) {
    std::ifstream file(std::string(std::getenv("MARVO_STREAMS")) + "\\" + stream, std::ios::binary);
    std::vector<unsigned char> frame(size);
    file.seekg(static_cast<std::streamoff>(number) * size);
    file.read(reinterpret_cast<char*>(frame.data()), static_cast<std::streamsize>(size));
    EXPECT_TRUE(file.good());
    return frame;
}

/// The frame as of a camera that squeezes 16:9 into it.
std::vector<unsigned char> squeezed(std::vector<unsigned char> frame) {
    for (std::size_t i = 0; i < 45; ++i) {
        const std::size_t pack = (3 + i / 15) * 80 + 3 + i % 15 * 5;
        frame[pack + 2] = frame[pack] == 0x61 ? 2 : frame[pack + 2];
    }
    return frame;
}

TEST(FrameDecoder, DecodesFrameAfterFrameOfBothSystems) {
    const samples::Com com;
    dvFrameDecoder decoder;
    dvPicture picture;
    std::vector<std::vector<unsigned char>> seen;
    for (const unsigned number : {0u, 100u, 0u}) {
        for (const auto& [stream, size, lines] :
             {std::tuple("pal.dv", samples::palSize, 576u), {"ntsc.dv", samples::ntscSize, 480u}}) {
            for (const bool wide : {true, false}) {
                const auto still = streamFrame(stream, size, number);
                const auto frame = wide ? squeezed(still) : still;
                ASSERT_TRUE(decoder.decode(frame.data(), frame.size(), picture)) << decoder.explanation();
                EXPECT_TRUE(picture.width == 720 && picture.height == lines);
                EXPECT_EQ(picture.aspectNumerator, wide ? 16u : 4u);
                EXPECT_EQ(picture.aspectDenominator, wide ? 9u : 3u);
                ASSERT_EQ(picture.pixels.size(), 720u * lines * 4);
            }
            seen.push_back(picture.pixels);
        }
        EXPECT_FALSE(decoder.decode("no frame", 9, picture));
        EXPECT_TRUE(picture.width == 0 && std::wcsstr(decoder.explanation(), L"What has 9 bytes"));
    }
    EXPECT_TRUE(seen[0] != seen[2] && seen[1] != seen[3]) << "each is the picture of its own frame";
    EXPECT_TRUE(seen[0] == seen[4] && seen[1] == seen[5]);
}

} // namespace
