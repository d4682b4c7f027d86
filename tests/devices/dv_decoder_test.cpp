// The decoder against another one's pictures, and on frames that are damaged.
#include "test_files.h"

#include "devices/dv_decoder.h"
#include "devices/dv_painter.h"
#include "tests/mutation/guarded_buffer.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <random>

using namespace device_tests;
using namespace devices;

namespace {

bytes stream(const std::string& name) {
    std::ifstream file(std::filesystem::path(std::getenv("MARVO_STREAMS")) / name, std::ios::binary);
    return bytes(std::istreambuf_iterator<char>(file), {});
}

bytes joined(const dv_picture& picture) {
    bytes all;
    for (const dv_plane* plane : {&picture.luma, &picture.blue, &picture.red}) {
        all.insert(all.end(), plane->samples.begin(), plane->samples.end());
    }
    return all;
}

/// The likeness of two pictures in dB, at most 100.
double psnr(const uint8_t* one, const uint8_t* other, size_t count) {
    double squares = 0;
    for (size_t i = 0; i < count; ++i) {
        squares += (one[i] - other[i]) * (one[i] - other[i]);
    }
    return std::min(100.0, 10 * std::log10(255.0 * 255 * count / std::max(squares, 1e-9)));
}

class dv_decoder_test : public testing::TestWithParam<bool> {
protected:
    const uint8_t* frame(size_t index) const { return &frames_[index * system_.frame_bytes]; }
    bytes picture_of(const uint8_t* frame) {
        decoder_.decode(frame, system_.frame_bytes, system_);
        return joined(decoder_.picture());
    }

    const dv_system& system_ = GetParam() ? dv_system::pal_system() : dv_system::ntsc_system();
    const std::string name_ = GetParam() ? "pal_pictures" : "ntsc_pictures";
    const bytes frames_ = stream(name_ + ".dv");
    const size_t luma_ = static_cast<size_t>(system_.width) * system_.height;
    dv_decoder decoder_;
};

TEST_P(dv_decoder_test, shows_what_another_decoder_shows) {
    const bytes expected = stream(name_ + ".yuv");
    const size_t samples = luma_ * 3 / 2, count = frames_.size() / system_.frame_bytes;
    ASSERT_TRUE(count == 18 && expected.size() == count * samples);
    // Both round, and the planes were rounded once before: what else differs is a fault.
    double sum = 0, sum_of_luma = 0;
    for (size_t i = 0; i < count; ++i) {
        const bytes seen = picture_of(frame(i));
        const double all = psnr(seen.data(), &expected[i * samples], samples);
        const double luma = psnr(seen.data(), &expected[i * samples], luma_);
        int most = 0;
        for (size_t at = 0; at < samples; ++at) {
            most = std::max(most, std::abs(seen[at] - expected[i * samples + at]));
        }
        EXPECT_TRUE(all >= 54 && luma >= 54 && most <= 3)
            << "frame " << i << ": " << all << " dB, luma " << luma << " dB, at most " << most;
        sum += all;
        sum_of_luma += luma;
    }
    EXPECT_TRUE(sum / count >= 65 && sum_of_luma / count >= 65) << sum / count << ", " << sum_of_luma / count;
}

TEST_P(dv_decoder_test, keeps_the_former_picture_where_a_block_is_bad) {
    const bytes former = picture_of(frame(0)), wanted = picture_of(frame(16));
    const dv_macroblock& place = dv_layout::of(system_).macroblocks()[627];
    const size_t count = system_.frame_bytes;
    enum shown { former_picture, own_place, all };
    const struct {
        int byte;
        uint8_t value; ///< xored
        shown what;
    } damages[] = {{3, 0xF0, former_picture}, {3, 0x70, former_picture}, {3, 0x80, former_picture},
                   {0, 0x60, former_picture}, {3, 0xA0, own_place},      {3, 0x20, all}};
    for (const auto& damage : damages) {
        SCOPED_TRACE(testing::Message() << damage.byte << " ^ " << int{damage.value});
        bytes damaged(frame(16), frame(17));
        damaged[place.offset + damage.byte] ^= damage.value;
        picture_of(frame(0));
        const bytes seen = picture_of(damaged.data());
        const size_t first = static_cast<size_t>(place.y) * system_.width + place.x;
        EXPECT_EQ(std::memcmp(&seen[first], &former[first], 16) == 0, damage.what == former_picture);
        EXPECT_EQ(seen == wanted, damage.what == all);
        // The others of the segment may have lost details, no more.
        size_t changed = 0;
        for (size_t i = 0; i < luma_; ++i) {
            changed += seen[i] != wanted[i];
        }
        EXPECT_LE(changed, 5u * 256);
    }
    picture_of(frame(0));
    decoder_.decode(frame(16), count / 2, system_);
    const bytes cut = joined(decoder_.picture());
    EXPECT_NE(cut, former);
    EXPECT_NE(cut, wanted);
    decoder_.decode(nullptr, 0, system_);
    EXPECT_EQ(joined(decoder_.picture()), cut);
    decoder_.reset();
    EXPECT_EQ(joined(decoder_.picture()), bytes(cut.size(), 128));
}

TEST_P(dv_decoder_test, survives_any_bytes) {
    const int rounds = std::getenv("MARVO_LONG") ? 50000 : 200;
    const size_t most_pixels = 720 * 576 * 4;
    std::mt19937 random(1);
    GuardedBuffer input(system_.frame_bytes), output(most_pixels);
    const auto any = [&](size_t below) { return random() % below; };
    for (int round = 0; round < rounds; ++round) {
        const size_t count = any(4) ? system_.frame_bytes : any(system_.frame_bytes + 1);
        auto* const damaged = reinterpret_cast<uint8_t*>(input.last(count));
        std::memcpy(damaged, frame(any(18)), count);
        for (size_t times = count ? any(300) : 0; times > 0; --times) {
            const size_t at = any(count), length = std::min(any(8) ? any(4) : any(20000), count - at);
            const int kind = static_cast<int>(any(4));
            for (size_t i = at; i < at + length; ++i) {
                damaged[i] = static_cast<uint8_t>(kind == 0   ? random()
                                                  : kind == 1 ? damaged[i] ^ 1 << any(8)
                                                              : -(kind == 2));
            }
        }
        decoder_.decode(damaged, count, any(8) ? system_ : dv_system::pal_system());
        const auto pixels = static_cast<dv_pixels>(any(4));
        const dv_system& target = any(8) ? system_ : dv_system::pal_system();
        const size_t bytes_out = static_cast<size_t>(target.width) * target.height * pixel_bytes(pixels);
        dv_painter(decoder_.picture())
            .paint(target, pixels, reinterpret_cast<uint8_t*>(output.last(bytes_out)));
    }
    dv_decoder fresh;
    fresh.decode(frame(1), system_.frame_bytes, system_);
    EXPECT_EQ(picture_of(frame(1)), joined(fresh.picture()));
}

TEST_P(dv_decoder_test, paints_its_colours) {
    // BT.601's red, green, blue, white and black.
    const struct {
        int luma, blue, red;
        uint8_t rgb[3];
    } colours[] = {{81, 90, 240, {255, 0, 0}},  {145, 54, 34, {0, 255, 0}},
                   {41, 240, 110, {0, 0, 255}}, {235, 128, 128, {255, 255, 255}},
                   {16, 128, 128, {0, 0, 0}},   {126, 128, 128, {128, 128, 128}}};
    const size_t line = static_cast<size_t>(system_.width) * 4;
    bytes out(line * system_.height);
    for (const auto& colour : colours) {
        dv_picture picture(system_);
        const auto fill = [](dv_plane& plane, int value) {
            std::fill(plane.samples.begin(), plane.samples.end(), static_cast<uint8_t>(value));
        };
        fill(picture.luma, colour.luma);
        fill(picture.blue, colour.blue);
        fill(picture.red, colour.red);
        picture.luma.line(0)[0] = 200;
        const dv_painter painter(picture);
        for (const dv_pixels pixels : {dv_pixels::rgb32, dv_pixels::rgb24}) {
            const size_t bytes_each = pixel_bytes(pixels),
                         last_line = 720 * bytes_each * (system_.height - 1);
            painter.paint(system_, pixels, out.data());
            EXPECT_NE(std::memcmp(&out[last_line], &out[last_line + bytes_each], 3), 0)
                << "the top line is last";
            for (const size_t at : {size_t{0}, bytes_each * 719, last_line + bytes_each}) {
                for (int channel = 0; channel < 3; ++channel) {
                    EXPECT_NEAR(out[at + channel], colour.rgb[2 - channel], 1) << at;
                }
            }
        }
        const int u = colour.blue, v = colour.red, y = colour.luma;
        painter.paint(system_, dv_pixels::yuy2, out.data());
        EXPECT_TRUE(out[0] == 200 && out[1] == u && out[2] == y && out[3] == v && out[4] == y);
        painter.paint(system_, dv_pixels::uyvy, out.data());
        EXPECT_TRUE(out[0] == u && out[1] == 200 && out[2] == v && out[3] == y && out[4] == u);
    }
    // Colour belongs to its field alone, and is blended between its samples.
    dv_picture picture(system_);
    std::fill_n(picture.red.line(2), 8, uint8_t{228});
    dv_painter(picture).paint(system_, dv_pixels::uyvy, out.data());
    const auto red = [&](int y, int pair) { return int{out[y * line / 2 + pair * 4 + 2]}; };
    if (system_.pal) {
        const int expected[] = {128, 128, 153, 128, 203, 128, 203, 128, 153, 128};
        for (int y = 0; y < 10; ++y) {
            EXPECT_EQ(red(y, 0), expected[y]) << y;
        }
    } else {
        EXPECT_TRUE(red(2, 14) == 228 && red(2, 15) == 178 && red(2, 16) == 128 && red(1, 14) == 128);
    }
    // A picture of the other system is cut, or ends in black.
    const dv_system& other = system_.pal ? dv_system::ntsc_system() : dv_system::pal_system();
    bytes foreign(line / 2 * other.height);
    dv_painter(picture).paint(other, dv_pixels::yuy2, foreign.data());
    EXPECT_EQ(foreign[foreign.size() - 2], system_.pal ? 128 : 16);
}

INSTANTIATE_TEST_SUITE_P(systems, dv_decoder_test, testing::Bool(),
                         [](const auto& info) { return info.param ? "pal" : "ntsc"; });

} // namespace
