#include "marvo.h"

#include "tests/support/samples.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>

namespace {

using Kind = dvRecording::Kind;
using Bytes = std::vector<unsigned char>;

/// A frame that says its number as the seconds of the time code, with nothing in its sections but that.
Bytes frameOf(unsigned number, unsigned long size) {
    Bytes frame(size);
    const unsigned char start[] = {0x1F, 0x07, 0x00,
                                   static_cast<unsigned char>(size == samples::palSize ? 0xBF : 0x3F)};
    const unsigned char subcode[] = {
        0x3F, 0x07, 0x00, 0, 0, 0, 0x13, 0x09, static_cast<unsigned char>(number), 0x59, 0x23};
    std::copy(std::begin(start), std::end(start), frame.begin());
    std::copy(std::begin(subcode), std::end(subcode), frame.begin() + 80);
    frame.back() = static_cast<unsigned char>(number);
    return frame;
}

/// The same with the VAUX packs of a camera.
Bytes notedFrame(unsigned char application, unsigned char display, unsigned char fields) {
    Bytes frame = frameOf(7, samples::palSize);
    frame[4] = application;
    const unsigned char vaux[] = {0x5F, 0x07, 0x00, 0x61, 0,    display, fields, 0,    0x62,
                                  0,    0x29, 0x02, 0x24, 0x63, 0,       0x59,   0x58, 0x21};
    std::copy(std::begin(vaux), std::end(vaux), frame.begin() + 240);
    return frame;
}

TEST(FrameNotes, AreReadFromThePacks) {
    for (const auto& [application, display, wide] : {std::tuple(0, 0, false),
                                                     {0, 2, true},
                                                     {0, 7, true},
                                                     {1, 7, false},
                                                     {1, 0xFA, true},
                                                     {0, 1, false}}) {
        const Bytes frame = notedFrame(application, display, 0);
        const dvAspect aspect = dvFrameNotes::aspect(frame.data(), dvFrameNotes::headBytes);
        EXPECT_TRUE(aspect.known);
        EXPECT_EQ(aspect.width * 9, aspect.height * (wide ? 16 : 12)) << application << " " << display;
    }
    for (const auto& [pack, interlaced, upper] :
         {std::tuple(0x50, true, false), {0x10, true, true}, {0xEF, false, false}, {0, false, true}}) {
        const Bytes frame = notedFrame(0, 0, pack);
        const dvFields fields = dvFrameNotes::fields(frame.data(), frame.size());
        EXPECT_TRUE(fields.known && fields.interlaced == interlaced && fields.upperFieldFirst == upper)
            << pack;
    }
    const Bytes noted = notedFrame(0, 0, 0);
    const dvClockTime time = dvFrameNotes::recordedAt(noted.data(), noted.size());
    EXPECT_TRUE(time.dateKnown && time.year == 2024 && time.month == 2 && time.day == 29);
    EXPECT_TRUE(time.timeKnown && time.hour == 21 && time.minute == 58 && time.second == 59);
    EXPECT_FALSE(dvFrameNotes::timeCode(nullptr, 480).known || dvFrameNotes::aspect(noted.data(), 259).known);
}

struct Grown {
    const char* name;
    unsigned long size;
    Kind kind;
};

/// Writes frame `number` behind what is there.
void append(const Grown& file, FileIOAVI& avi, unsigned number) {
    Bytes frame = frameOf(number, file.size);
    if (file.kind == Kind::avi) {
        frame.insert(frame.begin(), 8, 0);
        frame.resize(avi.slotSize());
        ASSERT_EQ(avi.writeFrame(reinterpret_cast<char*>(frame.data()), avi.slotSize(), file.size),
                  FileIOAVI::Ok);
        return;
    }
    if (file.kind == Kind::raw) {
        const std::uint32_t header[] = {static_cast<std::uint32_t>(file.size), 333366};
        frame.insert(frame.begin(), reinterpret_cast<const unsigned char*>(header),
                     reinterpret_cast<const unsigned char*>(header + 2));
        frame.resize((frame.size() + 511) / 512 * 512);
    }
    std::ofstream(file.name, std::ios::binary | std::ios::app)
        .write(reinterpret_cast<const char*>(frame.data()), static_cast<std::streamsize>(frame.size()));
}

TEST(Recording, IsReadWhileItGrowsWhateverItIs) {
    for (const Grown& file : {Grown{"recording_test.raw", samples::ntscSize, Kind::raw},
                              Grown{"recording_test.dv", samples::palSize, Kind::stream},
                              Grown{"recording_test.avi", samples::palSize, Kind::avi}}) {
        SCOPED_TRACE(file.name);
        const std::wstring name(file.name, file.name + std::strlen(file.name));
        FileIOAVI avi;
        if (file.kind == Kind::avi) {
            ASSERT_EQ(avi.create(name.c_str(), FileIOAVI::Video(), false), FileIOAVI::Ok);
        } else {
            std::ofstream(file.name, std::ios::binary | std::ios::trunc);
        }
        dvRecording recording;
        ASSERT_TRUE(recording.open(name.c_str())) << recording.explanation();
        EXPECT_TRUE(recording.frames() == 0 && recording.frameBytes() == 0);
        Bytes read(dvRecording::mostFrameBytes);
        unsigned long bytes = 1;
        for (unsigned written = 1; written <= 3; ++written) {
            append(file, avi, written - 1);
            EXPECT_FALSE(recording.read(written - 1, read.data(), dvRecording::mostFrameBytes, &bytes));
            EXPECT_EQ(bytes, 0u);
            ASSERT_TRUE(recording.refresh());
            ASSERT_EQ(recording.frames(), written);
            EXPECT_EQ(recording.kind(), file.kind);
            for (unsigned n = 0; n < written; ++n) {
                ASSERT_TRUE(recording.read(n, read.data(), file.size, &bytes));
                EXPECT_EQ(bytes, file.size);
                EXPECT_TRUE(std::equal(read.begin(), read.begin() + bytes, frameOf(n, file.size).begin()));
                EXPECT_EQ(recording.timeCode(n).seconds, n);
            }
        }
        EXPECT_FALSE(recording.timeCode(3).known);
        EXPECT_FALSE(recording.read(2, read.data(), file.size - 1, &bytes));
        EXPECT_FALSE(recording.read(4, read.data(), file.size, &bytes))
            << "never the last frame in its place";
        EXPECT_NE(std::wcsstr(recording.explanation(), L"has no frame 4: there are 3"), nullptr);
        EXPECT_EQ(recording.frameDuration_100ns(), file.kind == Kind::raw ? 333366 : 400000);
        EXPECT_EQ(recording.beingWritten(), file.kind == Kind::avi);
        avi.close();
        recording.close();
        EXPECT_TRUE(recording.kind() == Kind::none && recording.frames() == 0 && !recording.refresh());
        std::remove(file.name);
        EXPECT_FALSE(recording.open(name.c_str()) || recording.open(nullptr));
    }
    std::ofstream("recording_test.txt") << "no video";
    dvRecording recording;
    EXPECT_FALSE(recording.open(L"recording_test.txt"));
    EXPECT_NE(std::wcsstr(recording.explanation(), L"'recording_test.txt' is no recording"), nullptr);
    std::remove("recording_test.txt");
}

} // namespace
