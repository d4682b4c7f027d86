#include "devices/dv_stream.h"

#include "test_files.h"

#include <dshow.h>
#include <gtest/gtest.h>

using namespace device_tests;
using devices::dv_stream;
using devices::dv_system;

TEST(dv_stream, refuses_what_is_no_dv_file) {
    const test_folder folder;
    bytes short_by_one = grey_frame(dv_system::pal_system());
    short_by_one.pop_back();
    bytes no_header = grey_frame(dv_system::ntsc_system());
    no_header[0] = 'R';
    dv_stream stream;
    for (const bytes& content : {bytes(), bytes{0x1F, 0x07, 0x00}, short_by_one, no_header}) {
        EXPECT_EQ(stream.open(folder.write("clip", content)), VFW_E_INVALID_FILE_FORMAT) << content.size();
        EXPECT_EQ(stream.system(), nullptr) << content.size();
    }
    EXPECT_EQ(stream.open(L"C:\\no\\such.dv"), HRESULT_FROM_WIN32(ERROR_PATH_NOT_FOUND));
    uint8_t unused = 7;
    EXPECT_FALSE(stream.read(0, &unused));
}

TEST(dv_stream, repeats_its_whole_frames_from_memory_and_from_the_file) {
    for (const dv_system* system : {&dv_system::pal_system(), &dv_system::ntsc_system()}) {
        const test_folder folder;
        bytes content = marked_frames(*system, 3);
        content.resize(content.size() + 1000); // the recording was cut within a frame
        const std::wstring file = folder.write("clip.dv", content);
        for (const uint64_t limit : {uint64_t{0}, uint64_t{3} * system->frame_bytes - 1, uint64_t{1} << 40}) {
            dv_stream stream;
            ASSERT_EQ(stream.open(file), S_OK);
            EXPECT_EQ(stream.system(), system);
            EXPECT_EQ(stream.frames(), 3u);
            stream.load(limit);
            bytes frame(system->frame_bytes);
            for (const uint64_t number : {0, 2, 3, 4, 299}) {
                ASSERT_TRUE(stream.read(number, frame.data()));
                EXPECT_EQ(frame, grey_frame(*system, number % 3)) << system->name << " frame " << number;
            }
        }
    }
}
