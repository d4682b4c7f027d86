#include "marvo.h"

#include "tests/support/avi_builder.h"

#include <gtest/gtest.h>

namespace {

constexpr wchar_t name[] = L"avi_reader_test.avi";
using avi::Index;
using avi::Shape;

TEST(AviReader, ReadsFilesOfAllKinds) {
    const std::pair<const char*, Shape> kinds[] = {
        {"pieces", {.pieces = 3}},
        {"sound", {.pieces = 2, .audioBytes = 7681}},
        {"sound first", {.audioBytes = 7681, .audioFirst = true, .recLists = true}},
        {"no padding", {.pieces = 2, .audioBytes = 7681, .recLists = true, .padded = false}},
        {"drops", {.tag = "db", .handler = "DvSd", .compression = "DVSD", .drops = true}},
        {"codec in the format only", {.handler = "\0\0\0\0", .compression = "dv25"}},
        {"gaps as large as frames", {.frameSize = samples::palSize, .audioBytes = 400001}},
        {"odd size", {.frameSize = 1001}},
    };
    for (Index index :
         {Index::None, Index::Relative, Index::Absolute, Index::Standard, Index::StandardAndRelative}) {
        for (auto [what, shape] : kinds) {
            shape.index = index;
            avi::File(shape).save(name);
            EXPECT_EQ(avi::framesRead(name, shape.frameSize), 6) << what << static_cast<int>(index);
        }
    }
}

TEST(AviReader, DescribesTheFile) {
    const avi::File built(
        {.index = Index::StandardAndRelative, .pieces = 2, .audioBytes = 8000, .audioFirst = true});
    built.save(name);
    dvAVIFile file;
    EXPECT_EQ(file.getSectorSize(), 1u);
    ASSERT_TRUE(file.open(name));
    EXPECT_EQ(file.getDataFrameSize(), 120000u);
    EXPECT_EQ(file.getAVIFrameSize(), 120008u);
    EXPECT_EQ(file.getDataRate(), 3596403u);
    EXPECT_EQ(file.getSectorSize(), 512u);
    const AVI_ODMLFileInfo& info = file.io().info();
    EXPECT_TRUE(info.headerTotalFrames == 6 && info.firstPieceFrames == 3 && info.legacyEntries == 6);
    EXPECT_EQ(info.piecePositions.back(), built.find("RIFF", 0, 4));
    EXPECT_EQ(info.indexPositions.size(), 2u);
    EXPECT_TRUE(info.videoStream == 1 && info.audioStreams == 1);
    EXPECT_EQ(info.walkedFrames, 0u) << "found by the indexes";
    std::vector<char> slot(file.getAVIFrameSize());
    ASSERT_TRUE(file.readFrame(slot.data(), file.getAVIFrameSize(), 5));
    EXPECT_TRUE(samples::holds(reinterpret_cast<unsigned char*>(&slot[8]), 5, 120000));
    file.close();
    avi::File({.frames = 0, .frameSize = samples::palSize}).save(name);
    ASSERT_TRUE(file.open(name));
    EXPECT_EQ(file.getDataFrameSize(), 144000u) << "known without a frame";
    dvAVIFile other;
    other.swap(file);
    EXPECT_TRUE(other.opened() && other.getDataFrameSize() == 144000u && !file.opened());
}

TEST(AviReader, SaysWhyAFrameIsNotRead) {
    const avi::File built;
    built.save(name);
    FileIOAVI file;
    std::vector<char> buffer(120008, '.');
    EXPECT_EQ(file.readFrame(buffer.data(), 120008, 0), FileIOAVI::Refused) << "not open";
    ASSERT_EQ(file.open(name), FileIOAVI::Ok);
    EXPECT_EQ(file.readFrame(buffer.data(), 120007, 0), FileIOAVI::Refused);
    EXPECT_EQ(buffer[0], '.');
    EXPECT_EQ(file.readFrame(buffer.data(), 120008, 6), FileIOAVI::ReadFailed);
    EXPECT_STREQ(file.lastError(), L"(code 38) reading the video frame at index #6\n");
    avi::File::write(name, built.bytes.substr(0, built.frameOffsets[4] + 100));
    EXPECT_EQ(file.readFrame(buffer.data(), 120008, 4), FileIOAVI::ReadFailed);
    EXPECT_STREQ(file.lastError(),
                 L"number of bytes read is not equal to the size of the avi frame (frame #4)\n");
    EXPECT_EQ(file.readFrame(buffer.data(), 120008, 5), FileIOAVI::ReadFailed);
    EXPECT_EQ(file.frame(), 0u);
    EXPECT_EQ(file.readFrame(buffer.data(), 120008, 2), FileIOAVI::Ok);
    EXPECT_EQ(file.frame(), 3u);
}

TEST(AviReader, RefusesWhatItDoesNotRead) {
    const avi::File sound;
    const auto with = [&sound](size_t offset, const std::string& text) {
        return std::string(sound.bytes).replace(offset, text.size(), text);
    };
    const struct {
        std::string bytes;
        int code;
        const wchar_t* text;
    } cases[] = {
        {"", FileIOAVI::Damaged, L"Cannot descend into avi file."},
        {with(8, "WAVE"), FileIOAVI::Damaged, L"Not a RIFF chunk."},
        {with(sound.find("avih"), "hiva"), FileIOAVI::Damaged, L"No avih chunk found."},
        {with(sound.find("movi"), "ivom"), FileIOAVI::NoDescend,
         L"idx1 must come after hdrl and movi chunks."},
        {sound.bytes.substr(0, sound.find("movi")), FileIOAVI::NoDescend, L"Cannot descend into movi chunk."},
        {with(sound.find("hdrl"), "movi"), FileIOAVI::Damaged, L"hdrl must come before movi chunk."},
        {with(sound.find("vids"), "iavs"), FileIOAVI::Refused,
         L"interleaved DV (type 1) is not read, only DV video streams (type 2)"},
        {with(sound.find("vids"), "auds"), FileIOAVI::Refused, L"no DV video stream found"},
    };
    for (const auto& c : cases) {
        avi::File::write(name, c.bytes);
        FileIOAVI file;
        EXPECT_EQ(file.open(name), c.code);
        EXPECT_STREQ(file.lastError(), c.text);
        EXPECT_FALSE(file.opened());
    }
    for (const unsigned long size : {576000ul, 576001ul}) {
        avi::File({.frames = 2, .frameSize = size}).save(name);
        EXPECT_EQ(avi::framesRead(name, size), size == 576000 ? 2 : 0) << "larger than any DV frame";
    }
    FileIOAVI file;
    EXPECT_EQ(file.open(nullptr), FileIOAVI::Refused);
    EXPECT_EQ(file.open(L"no such file.avi"), FileIOAVI::IndexFileNotOpen);
    EXPECT_STREQ(file.lastError(), L"Cannot open file no such file.avi for reading index.");
}

TEST(AviReader, FindsWhatIsWholeInAFileCutAnywhere) {
    for (const Index index : {Index::None, Index::Relative, Index::Standard}) {
        const avi::File built({.index = index, .pieces = 2});
        std::vector<size_t> places = {built.frameOffsets[0] - 1, built.bytes.size() - 1};
        for (const size_t frame : built.frameOffsets) {
            for (const size_t behind : {0, 1, 7, 8, 120007, 120008, 120009, 120020}) {
                places.push_back(std::min(frame + behind, built.bytes.size()));
            }
        }
        for (const size_t cut : places) {
            long whole = cut < built.frameOffsets[0] ? -1 : 0;
            for (const size_t frame : built.frameOffsets) {
                whole += frame + 120008 <= cut ? 1 : 0;
            }
            avi::File::write(name, built.bytes.substr(0, cut));
            EXPECT_EQ(avi::framesRead(name), whole) << cut << ", index " << static_cast<int>(index);
        }
    }
}

TEST(AviReader, FollowsAFileThatGrows) {
    avi::File built({.index = Index::Standard, .pieces = 2});
    for (const std::uint32_t stale : {0u, 0xFFFFFFFFu, 1000u}) {
        for (const char* list : {"RIFF", "movi"}) {
            built.set(built.find(list) + (*list == 'R' ? 4 : -4), stale);
            avi::File::write(name, built.bytes.substr(0, built.frameOffsets[2] + 5));
            FileIOAVI file;
            ASSERT_EQ(file.open(name), FileIOAVI::Ok) << file.lastError();
            EXPECT_EQ(file.frames(), 2u);
            std::vector<char> buffer(120008);
            EXPECT_EQ(file.readFrame(buffer.data(), 120008, 2), FileIOAVI::ReadFailed);
            for (const size_t frames : {2u, 3u, 4u, 6u}) {
                avi::File::write(name, built.bytes.substr(0, built.frameOffsets[frames - 1] + 120008));
                EXPECT_EQ(file.refresh(), FileIOAVI::Ok);
                EXPECT_EQ(file.frames(), frames) << list << stale;
                EXPECT_EQ(file.info().pieces, frames > 3 ? 2u : 1u);
                ASSERT_EQ(file.readFrame(buffer.data(), 120008, frames - 1), FileIOAVI::Ok);
                EXPECT_TRUE(samples::holds(reinterpret_cast<unsigned char*>(&buffer[8]), frames - 1, 120000));
            }
        }
    }
}

TEST(AviReader, TakesNoIndexThatContradictsTheChunks) {
    const avi::File legacy;
    const size_t entries = legacy.find("idx1", 8);
    const avi::File standard({.index = Index::Standard, .pieces = 3});
    const size_t super = standard.find("indx", 8);
    const size_t second = standard.find("ix00", 8, standard.find("ix00", 4));
    const struct {
        const avi::File& built;
        size_t offset;
        std::vector<std::uint32_t> values;
    } cases[] = {
        {legacy, entries + 8, {12}},
        {legacy, entries + 2 * 16 + 8, {0xFFFFFFF0, 0}},
        {legacy, entries + 5 * 16 + 12, {7, 0xFFFFFFFF}},
        {legacy, entries - 4, {0xFFFFFFFF, 15}},
        {standard, super, {0x00010002, 0}},
        {standard, super + 4, {0xFFFFFFFF, 0}},
        {standard, super + 24, {0xFFFFFFF0, static_cast<std::uint32_t>(super) - 8}},
        {standard, super + 28, {0x7FFFFFFF, 0x80000000}},
        {standard, super + 32, {0, 0xFFFFFFFF}},
        {standard, super + 40, {0}},
        {standard, second, {0x01000003, 2}},
        {standard, second + 4, {0xFFFFFFFF, 0x40000000, 1}},
        {standard, second + 8, {0}},
        {standard, second + 12, {0}},
        {standard, second + 16, {1, 0xFFFFFFFF}},
        {standard, second + 24, {0, 0xFFFFFFFF}},
        {standard, second + 28, {0, 0x7FFFFFFF}},
        {standard, second - 4, {0, 0xFFFFFFFF}},
    };
    for (const auto& c : cases) {
        for (const std::uint32_t value : c.values) {
            avi::File changed = c.built;
            changed.set(c.offset, value);
            changed.save(name);
            EXPECT_EQ(avi::framesRead(name), 6) << std::hex << c.offset << ": " << value;
        }
    }
}

TEST(AviReader, SearchesDamagedFilesForFrames) {
    const avi::File built({.pieces = 2, .audioBytes = 300001, .starts = true});
    const auto search = [](const std::string& bytes) {
        avi::File::write(name, bytes);
        FileIOAVI file;
        std::vector<unsigned long long> found;
        EXPECT_EQ(file.open(name, FileIOAVI::Trust::Nothing) == FileIOAVI::Ok, bytes.size() > 5000);
        FileIOAVI::FramePosition position;
        std::vector<char> buffer(file.slotSize());
        for (unsigned long k = 0; file.framePosition(k, position); ++k) {
            EXPECT_EQ(position.size, samples::ntscSize);
            EXPECT_EQ(file.readFrame(buffer.data(), file.slotSize(), k), FileIOAVI::Ok);
            found.push_back(position.offset);
        }
        return found;
    };
    const auto& frames = built.frameOffsets;
    const std::vector<unsigned long long> all(frames.begin(), frames.end());
    EXPECT_EQ(search(built.bytes), all);
    EXPECT_EQ(search(std::string(100001, 'd') + built.bytes.substr(frames[0])).size(), 6u) << "no headers";

    std::string damaged = built.bytes;
    for (const size_t place : {frames[0] - 300009, frames[4] - 300009 + 4, damaged.find("AVIX") - 8}) {
        damaged.replace(place, 4, "\xff\xff\xff\x7f");
    }
    EXPECT_EQ(search(damaged), all) << "only frames are relied upon";
    EXPECT_TRUE(search(std::string(5000, 'd')).empty());
}

} // namespace
