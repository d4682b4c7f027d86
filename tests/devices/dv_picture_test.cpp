#include "devices/dv_picture.h"

#include "devices/dv_layout.h"
#include "test_files.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdlib>
#include <memory>
#include <random>

using namespace device_tests;
using devices::dv_layout;
using devices::dv_picture;
using devices::dv_system;

namespace {

const dv_system& pal = dv_system::pal_system();
const dv_system& ntsc = dv_system::ntsc_system();

using rgb = std::array<int, 3>; // red, green, blue

/// A decoded picture, addressed as it is seen.
class view {
public:
    view(const bytes& frame, const dv_system& system, int pixel_bytes = 4)
        : system_(system), pixel_bytes_(pixel_bytes),
          pixels_(static_cast<size_t>(720) * system.height * pixel_bytes) {
        dv_picture picture;
        picture.decode(frame.data(), frame.size(), system);
        picture.paint(system, pixel_bytes, pixels_.data());
    }

    rgb at(int x, int y) const {
        const uint8_t* pixel =
            &pixels_[(static_cast<size_t>(system_.height - 1 - y) * 720 + x) * pixel_bytes_];
        return {pixel[2], pixel[1], pixel[0]};
    }

private:
    const dv_system& system_;
    const int pixel_bytes_;
    bytes pixels_;
};

testing::AssertionResult alike(const rgb& seen, const rgb& wanted, int most = 3) {
    for (size_t part = 0; part < seen.size(); ++part) {
        if (std::abs(seen[part] - wanted[part]) > most) {
            return testing::AssertionFailure() << testing::PrintToString(seen);
        }
    }
    return testing::AssertionSuccess();
}

/// The bytes of a sequence's n-th video block.
uint8_t* video_block(bytes& frame, int sequence, int number) {
    return &frame[static_cast<size_t>(sequence * 150 + 7 + number + number / 15) * 80];
}

void set_mean(uint8_t* block, int value) {
    const int bits = 2 * (value - 128) & 0x1FF;
    block[0] = static_cast<uint8_t>(bits >> 1);
    block[1] = static_cast<uint8_t>((block[1] & 0x7F) | bits << 7);
}

/// A frame of one colour: every macroblock gets its six means, four of Y, then Cr and Cb.
bytes filled(const dv_system& system, int y, int cr, int cb) {
    bytes frame = grey_frame(system);
    for (int number = 0; number < system.sequences * 135; ++number) {
        uint8_t* block = video_block(frame, number / 135, number % 135);
        for (int luma = 0; luma < 4; ++luma) {
            set_mean(block + 4 + 14 * luma, y);
        }
        set_mean(block + 60, cr);
        set_mean(block + 70, cb);
    }
    return frame;
}

/// Memory that ends where an unreadable page begins.
std::shared_ptr<uint8_t> guarded(size_t count) {
    const size_t pages = (count + 4095) / 4096 * 4096;
    void* base = VirtualAlloc(nullptr, pages + 4096, MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE);
    uint8_t* end = static_cast<uint8_t*>(base) + pages;
    DWORD old;
    VirtualProtect(end, 4096, PAGE_NOACCESS, &old);
    return {end - count, [base](uint8_t*) { VirtualFree(base, 0, MEM_RELEASE); }};
}

} // namespace

TEST(dv_layout, fills_every_cell_of_the_picture_once) {
    for (const dv_system* system : {&pal, &ntsc}) {
        const dv_layout& layout = dv_layout::of(*system);
        EXPECT_EQ(layout.macroblocks().size(), static_cast<size_t>(system->sequences) * 135);
        std::vector<int> used(static_cast<size_t>(90) * (system->height / 8));
        for (const auto& macroblock : layout.macroblocks()) {
            for (const int cell : macroblock.cell) {
                ++used.at(cell);
            }
        }
        EXPECT_EQ(used, std::vector<int>(used.size(), 1)) << system->name;
    }
}

TEST(dv_picture, puts_macroblocks_where_the_shuffling_says) {
    const struct {
        const dv_system& system;
        int sequence, segment, part; // where in the frame's bytes
        int x, y, columns;           // where in the picture, and how many blocks lie side by side
    } places[] = {
        {pal, 0, 0, 3, 0, 0, 2},      {pal, 0, 0, 0, 288, 96, 2},    {pal, 0, 3, 3, 16, 32, 2},
        {pal, 0, 5, 3, 16, 0, 2},     {pal, 11, 26, 4, 704, 176, 2}, {pal, 11, 0, 3, 0, 528, 2},
        {pal, 5, 1, 2, 432, 64, 2},   {ntsc, 0, 0, 3, 0, 0, 4},      {ntsc, 0, 6, 3, 32, 40, 4},
        {ntsc, 0, 26, 3, 128, 16, 4}, {ntsc, 4, 0, 1, 128, 24, 4},   {ntsc, 4, 3, 1, 160, 40, 4},
        {ntsc, 8, 26, 0, 416, 16, 4}, {ntsc, 2, 0, 2, 416, 24, 4},   {ntsc, 6, 23, 4, 672, 0, 4},
        {ntsc, 6, 24, 4, 704, 0, 2},  {ntsc, 5, 26, 4, 704, 464, 2},
    };
    for (const auto& place : places) {
        bytes frame = grey_frame(place.system);
        uint8_t* macroblock = video_block(frame, place.sequence, place.segment * 5 + place.part);
        for (int luma = 0; luma < 4; ++luma) {
            set_mean(macroblock + 4 + 14 * luma, 60 + 50 * luma);
        }
        const view seen(frame, place.system);
        for (int luma = 0; luma < 4; ++luma) { // seen at the blocks' centres
            const int x = place.x + 8 * (luma % place.columns) + 4,
                      y = place.y + 8 * (luma / place.columns) + 4;
            const int expected = (60 + 50 * luma - 16) * 255 / 219;
            ASSERT_TRUE(alike(seen.at(x, y), {expected, expected, expected}, 20)) << x << ' ' << y;
        }
    }
}

TEST(dv_picture, turns_studio_levels_into_rgb) {
    const struct {
        int y, cr, cb;
        rgb seen;
    } colours[] = {
        {16, 128, 128, {0, 0, 0}},        {235, 128, 128, {255, 255, 255}}, {81, 240, 90, {254, 0, 0}},
        {145, 34, 54, {0, 255, 1}},       {41, 110, 240, {0, 0, 255}},      {210, 146, 16, {255, 255, 0}},
        {126, 128, 128, {128, 128, 128}}, {1, 128, 128, {0, 0, 0}},         {255, 255, 255, {255, 125, 255}}};
    for (const auto& colour : colours) {
        for (const dv_system* system : {&pal, &ntsc}) {
            const bytes frame = filled(*system, colour.y, colour.cr, colour.cb);
            for (const int pixel_bytes : {4, 3}) {
                const view seen(frame, *system, pixel_bytes);
                for (const int x : {0, 719, 360}) {
                    EXPECT_TRUE(alike(seen.at(x, system->height - 1), colour.seen)) << colour.y << ' ' << x;
                }
            }
        }
    }
}

TEST(dv_picture, shows_an_encoded_test_picture) {
    const char* folder = std::getenv("MARVO_STREAMS");
    ASSERT_NE(folder, nullptr) << "MARVO_STREAMS does not say where the test streams are";
    const rgb bars[] = {{254, 0, 0}, {0, 255, 0}, {255, 255, 0}, {0, 0, 255}, {255, 0, 255}, {0, 255, 255}};
    for (const dv_system* system : {&pal, &ntsc}) {
        std::ifstream file(std::string(folder) + (system->pal ? "\\pal.dv" : "\\ntsc.dv"), std::ios::binary);
        ASSERT_TRUE(file) << "the test streams are missing in " << folder;
        bytes frame(system->frame_bytes);
        file.seekg(static_cast<std::streamoff>(123) * frame.size());
        file.read(reinterpret_cast<char*>(frame.data()), frame.size());
        const view seen(frame, *system);
        for (int bar = 0; bar < 6; ++bar) {
            EXPECT_TRUE(alike(seen.at(60 + 120 * bar, system->height - 20), bars[bar], 12)) << bar;
        }
        // The burnt-in 123: the 1's stem, the gap between it and the 2, and the black box around.
        const int middle = system->height / 2;
        EXPECT_TRUE(alike(seen.at(225, middle), {255, 255, 255}, 20)) << system->name;
        EXPECT_TRUE(alike(seen.at(280, middle - 30), {0, 0, 0}, 20)) << system->name;
        EXPECT_TRUE(alike(seen.at(145, middle), {0, 0, 0}, 20)) << system->name;
    }
}

TEST(dv_picture, shows_what_there_is_of_short_damaged_and_foreign_frames) {
    const rgb grey = {130, 130, 130};
    const auto out = guarded(static_cast<size_t>(720) * 576 * 4);
    dv_picture picture;
    for (const dv_system* system : {&pal, &ntsc}) {
        bytes whole = filled(*system, 234, 128, 128);
        std::mt19937 random(1);
        const size_t all = system->frame_bytes;
        for (const size_t count :
             std::initializer_list<size_t>{0, 1, 3, 4, 80, 561, 639, 640, all / 2, all - 1, all}) {
            const auto in = guarded(count);
            std::copy_n(whole.begin(), count, in.get());
            picture.decode(in.get(), count, *system);
            picture.paint(*system, 4, out.get() + (static_cast<size_t>(576) - system->height) * 720 * 4);
            std::generate_n(in.get(), count, [&] { return static_cast<uint8_t>(random()); });
            picture.decode(in.get(), count, *system);
            picture.paint(*system, 3, out.get());
        }
        bytes half = whole;
        half.resize(half.size() / 2);
        const view seen(half, *system);
        EXPECT_TRUE(alike(seen.at(4, 4), {254, 254, 254})) << system->name;
        EXPECT_TRUE(alike(seen.at(4, system->height - 5), grey)) << system->name;
        video_block(whole, 0, 3)[0] = 0x7F; // no video block any more
        EXPECT_TRUE(alike(view(whole, *system).at(4, 4), grey, 60));
    }
    const view in_pal(grey_frame(ntsc), pal); // the other system's frame
    EXPECT_TRUE(alike(in_pal.at(100, 479), grey) && alike(in_pal.at(100, 480), {0, 0, 0}));
    bytes cut = grey_frame(pal);
    cut.resize(ntsc.frame_bytes);
    EXPECT_TRUE(alike(view(cut, ntsc).at(719, 479), grey));
}
