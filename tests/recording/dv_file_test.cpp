#include "marvo.h"

#include "tests/support/recording.h"

#include <gtest/gtest.h>

namespace {

constexpr wchar_t name[] = L"dv_file_test.dv";

TEST(DvFile, RecordsAreWholeSectors) {
    dvRecFile file;
    EXPECT_EQ(file.alignment(), 1u);
    ASSERT_TRUE(file.open(name));
    ASSERT_EQ(file.alignment(), 512u) << "the figures below are those of a volume with 512-byte sectors";
    file.setFrameSize(samples::palSize);
    EXPECT_EQ(file.bufferSize(), 144384u);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(file.data()) % 4096, 0u);
    file.setFrameSize(samples::ntscSize);
    EXPECT_EQ(file.bufferSize(), 120320u);
    EXPECT_EQ(file.type().timePerFrame(), 333333);
    file.setFrameSize(0xFFFFFFF0ul);
    EXPECT_EQ(file.data(), nullptr);
    EXPECT_EQ(file.bufferSize(), 0u);
}

TEST(DvFile, ReadsLoopsAndCutsByFrameNumber) {
    recording::write(name, 10);
    dvPlayFile file;
    EXPECT_TRUE(file.loopedFrame(3) == 0 && file.shortedFrame(3) == 4294967295ll) << "not open";
    ASSERT_TRUE(file.open(name, 0));
    EXPECT_EQ(file.frameCount(), 10u);
    EXPECT_EQ(file.frameSize(), samples::palSize);
    for (const auto& [seek, frame] : {std::pair(0, 0u), {7, 7}, {9, 9}, {11, 9}, {-5, 0}}) {
        ASSERT_TRUE(file.seekFrame(seek)) << seek;
        ASSERT_TRUE(file.readFrame()) << seek;
        EXPECT_TRUE(samples::holds(file.data() + 8, frame)) << seek;
    }
    ASSERT_TRUE(file.seekFrame(10));
    EXPECT_FALSE(file.readFrame()) << "the frame count itself is the end of the file";
    const long long looped[][2] = {{25, 5}, {9, 9}, {10, 0}, {-1, 9}, {-10, 10}, {-11, 9}};
    for (const auto& [frame, expected] : looped) {
        EXPECT_EQ(file.loopedFrame(frame), expected) << frame;
    }
    const long long shorted[][2] = {{-3, -3}, {9, 9}, {10, 9}, {1000, 9}};
    for (const auto& [frame, expected] : shorted) {
        EXPECT_EQ(file.shortedFrame(frame), expected) << frame;
    }
}

TEST(DvFile, ReadsFramesOneByOne) {
    recording::write(name, 2);
    dvPlayFile file;
    ASSERT_TRUE(file.open(name, 0));
    std::vector<unsigned char> frame(file.bufferSize());
    unsigned long got = 0;
    EXPECT_FALSE(file.read(frame.data(), file.bufferSize() - 7, &got)) << "does not fit a record";
    ASSERT_TRUE(file.read(frame.data(), samples::palSize, &got));
    EXPECT_EQ(got, samples::palSize);
    EXPECT_TRUE(samples::holds(frame.data(), 0)) << "the refused read has not moved on";
    ASSERT_TRUE(file.read(frame.data(), 100, nullptr));
    EXPECT_EQ(std::memcmp(frame.data(), samples::bytes(1).data(), 100), 0)
        << "a read moves on by a whole record";
    EXPECT_FALSE(file.read(frame.data(), 100, &got));
}

TEST(DvFile, DescribesItselfByTheFirstRecord) {
    const struct {
        std::uint32_t size, duration;
        unsigned long frameSize;
        long long time;
        bool opens;
    } cases[] = {{120000, 333667, 120000, 333667, true}, {0, 0, 144000, 400000, true},
                 {144000, 0, 144000, 400000, true},      {576000, 400000, 576000, 400000, true},
                 {576001, 400000, 0, 0, false},          {0xFFFFFFFFu, 400000, 0, 0, false}};
    recording::write(name, 3);
    for (const auto& c : cases) {
        vcore::file changed(name, OPEN_EXISTING);
        unsigned long written = 0;
        ASSERT_TRUE(changed.open(nullptr) && changed.write(&c, 8, &written));
        dvPlayFile file;
        ASSERT_EQ(file.open(name, 0), c.opens) << c.size;
        EXPECT_EQ(file.opened(), c.opens);
        if (c.opens) {
            EXPECT_EQ(file.frameSize(), c.frameSize);
            EXPECT_EQ(file.type().timePerFrame(), c.time);
        }
    }
}

TEST(DvFile, CountsWholeRecordsOfAGrowingFile) {
    recording::write(name, 0);
    dvPlayFile reader;
    ASSERT_TRUE(reader.open(name, samples::palSize));
    EXPECT_EQ(reader.frameCount(), 0u);
    EXPECT_FALSE(reader.seekFrame(0));
    vcore::file writer(name, OPEN_EXISTING);
    const std::vector<char> bytes(144384 + 70000);
    unsigned long written = 0;
    ASSERT_TRUE(writer.open(nullptr) && writer.write(bytes.data(), 144384 + 70000, &written));
    reader.refresh();
    EXPECT_EQ(reader.frameCount(), 1u);
    ASSERT_TRUE(reader.seekFrame(1));
    EXPECT_FALSE(reader.readFrame()) << "half a record";
}

} // namespace
