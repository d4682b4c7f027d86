#include "marvo.h"

#include "tests/support/avi_builder.h"

#include <gtest/gtest.h>

namespace {

constexpr wchar_t name[] = L"avi_reader_test.avi";
using avi::Index;
using avi::Shape;

/// Opens what was saved and compares every frame with its seed; the number of frames, -1 when it does not open.
long readAll(unsigned long frameSize = samples::ntscSize) {
    FileIOAVI file;
    if (file.open(name) != FileIOAVI::Ok)
        return -1;
    std::vector<char> buffer(file.slotSize());
    for (unsigned long k = 0; k < file.frames(); ++k) {
        EXPECT_EQ(file.readFrame(buffer.data(), file.slotSize(), k), FileIOAVI::Ok) << file.lastError();
        EXPECT_TRUE(samples::holds(reinterpret_cast<unsigned char*>(&buffer[8]), k, frameSize)) << k;
    }
    return static_cast<long>(file.frames());
}

Shape shape(Index index, unsigned long pieces = 1) {
    Shape made;
    made.index = index;
    made.pieces = pieces;
    return made;
}

TEST(AviReader, ReadsFilesOfAllKinds) {
    std::vector<std::pair<const char*, Shape>> cases;
    for (const Index index :
         {Index::None, Index::Relative, Index::Absolute, Index::Standard, Index::StandardAndRelative}) {
        cases.emplace_back("one piece", shape(index));
        cases.emplace_back("pieces", shape(index, 3));
        Shape with = shape(index, 2);
        with.audioBytes = 7681;
        cases.emplace_back("sound", with);
        with.recLists = true;
        cases.emplace_back("lists of records", with);
        with.audioFirst = true;
        cases.emplace_back("sound first", with);
        with.padded = false;
        cases.emplace_back("no padding", with);
        with = shape(index);
        with.drops = true;
        with.tag = "db";
        with.handler = "DvSd";
        with.compression = "DVSD";
        cases.emplace_back("drops", with);
        with.handler = "\0\0\0\0";
        with.compression = "dv25";
        cases.emplace_back("codec in the format only", with);
        with.audioBytes = 400001;
        with.frameSize = samples::palSize;
        cases.emplace_back("gaps as large as frames", with);
    }
    for (const auto& [what, shape] : cases) {
        avi::File(shape).save(name);
        EXPECT_EQ(readAll(shape.frameSize), 6) << what << ", index " << static_cast<int>(shape.index);
    }
}

TEST(AviReader, DescribesTheFile) {
    Shape two = shape(Index::StandardAndRelative, 2);
    two.audioBytes = 8000;
    two.audioFirst = true;
    const avi::File built(two);
    built.save(name);
    dvAVIFile file;
    EXPECT_EQ(file.getSectorSize(), 1u);
    ASSERT_TRUE(file.open(name));
    EXPECT_EQ(file.getDataFrameSize(), 120000u);
    EXPECT_EQ(file.getAVIFrameSize(), 120008u);
    EXPECT_EQ(file.getDataRate(), 3596403u);
    EXPECT_EQ(file.getSectorSize(), 512u);
    const AVI_ODMLFileInfo& info = file.io().info();
    EXPECT_EQ(info.totalFrames, 6u);
    EXPECT_EQ(info.headerTotalFrames, 6u);
    EXPECT_EQ(info.firstPieceFrames, 3u);
    EXPECT_EQ(info.pieces, 2u);
    EXPECT_EQ(info.piecePositions.back(), built.find("RIFF", 0, 4));
    EXPECT_EQ(info.indexPositions.size(), 2u);
    EXPECT_EQ(info.legacyEntries, 6u);
    EXPECT_EQ(info.videoStream, 1u);
    EXPECT_EQ(info.streams, 2u);
    EXPECT_EQ(info.audioStreams, 1u);
    EXPECT_EQ(info.walkedFrames, 0u);
    FileIOAVI::FramePosition position;
    ASSERT_TRUE(file.io().framePosition(5, position));
    EXPECT_EQ(position.offset, built.frameOffsets[5]);
    EXPECT_EQ(position.size, 120000u);
    EXPECT_FALSE(file.io().framePosition(6, position));
    file.seekFrame(20);
    EXPECT_EQ(file.frame(), 2u);
}

TEST(AviReader, SaysWhyAFrameIsNotRead) {
    const avi::File built;
    built.save(name);
    FileIOAVI file;
    std::vector<char> buffer(120008, '.');
    EXPECT_EQ(file.readFrame(buffer.data(), 120008, 0), FileIOAVI::Refused);
    EXPECT_STREQ(file.lastError(),
                 L"the file was not opened for reading or the size of input buffer incorrect\n");
    ASSERT_EQ(file.open(name), FileIOAVI::Ok);
    EXPECT_EQ(file.readFrame(buffer.data(), 120007, 0), FileIOAVI::Refused);
    EXPECT_STREQ(file.lastError(),
                 L"the size of the avi frame buffer (120007) is not enough to store the entire avi");
    EXPECT_EQ(buffer[0], '.');
    EXPECT_EQ(file.readFrame(buffer.data(), 120008, 6), FileIOAVI::ReadFailed);
    EXPECT_STREQ(file.lastError(), L"(code 38) reading the video frame at index #6\n");
    avi::File::write(name, built.bytes.substr(0, built.frameOffsets[4] + 100));
    EXPECT_EQ(file.readFrame(buffer.data(), 120008, 4), FileIOAVI::ReadFailed);
    EXPECT_STREQ(file.lastError(),
                 L"number of bytes read is not equal to the size of the avi frame (frame #4)\n");
    EXPECT_EQ(file.readFrame(buffer.data(), 120008, 5), FileIOAVI::ReadFailed);
    EXPECT_EQ(vcore::str(file.lastError()).findStr(L"cannot set the file pointer to the offset", 0), 0);
    EXPECT_EQ(file.frame(), 0u);
    EXPECT_EQ(file.readFrame(buffer.data(), 120008, 2), FileIOAVI::Ok);
    EXPECT_EQ(file.frame(), 3u);
}

TEST(AviReader, RefusesWhatItDoesNotRead) {
    const avi::File sound;
    const auto with = [&sound](size_t offset, const std::string& text) {
        std::string bytes = sound.bytes;
        return bytes.replace(offset, text.size(), text);
    };
    const struct {
        std::string bytes;
        int code;
        const wchar_t* text;
    } cases[] = {
        {"", FileIOAVI::Damaged, L"Cannot descend into avi file."},
        {std::string(5000, '\0'), FileIOAVI::Damaged, L"Cannot descend into avi file."},
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
        EXPECT_EQ(file.open(name), c.code) << vcore::str(c.text).getStr();
        EXPECT_STREQ(file.lastError(), c.text);
        EXPECT_FALSE(file.opened());
    }
    FileIOAVI file;
    EXPECT_EQ(file.open(nullptr), FileIOAVI::Refused);
    EXPECT_EQ(file.open(L"no such file.avi"), FileIOAVI::IndexFileNotOpen);
    EXPECT_STREQ(file.lastError(), L"Cannot open file no such file.avi for reading index.");
}

TEST(AviReader, FindsWhatIsWholeInAFileCutAnywhere) {
    for (const Index index : {Index::None, Index::Relative, Index::Standard}) {
        const avi::File built(shape(index, 2));
        const size_t headers = built.frameOffsets[0];
        std::vector<size_t> places = {headers - 1, headers, built.bytes.size() - 1};
        for (const size_t frame : built.frameOffsets)
            for (const size_t behind : {1, 7, 8, 120007, 120008, 120009, 120020})
                places.push_back(std::min(frame + behind, built.bytes.size()));
        for (const size_t cut : places) {
            long whole = cut < headers ? -1 : 0;
            for (const size_t frame : built.frameOffsets)
                whole += frame + 120008 <= cut ? 1 : 0;
            avi::File::write(name, built.bytes.substr(0, cut));
            EXPECT_EQ(readAll(), whole) << cut << ", index " << static_cast<int>(index);
        }
    }
}

TEST(AviReader, FollowsAFileThatGrows) {
    avi::File built(shape(Index::Standard, 2));
    for (const std::uint32_t stale : {0u, 0xFFFFFFFFu, 1000u})
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

TEST(AviReader, TakesNoIndexThatContradictsTheChunks) {
    const avi::File legacy(shape(Index::Relative));
    const size_t entries = legacy.find("idx1", 8);
    const avi::File standard(shape(Index::Standard, 3));
    const size_t super = standard.find("indx", 8);
    const size_t second = standard.find("ix00", 8, standard.find("ix00", 4));
    const struct {
        const avi::File& built;
        size_t offset;
        std::uint32_t value;
    } cases[] = {
        {legacy, entries + 8, 12},
        {legacy, entries + 2 * 16 + 8, 0xFFFFFFF0},
        {legacy, entries + 3 * 16 + 8, 0},
        {legacy, entries + 12, 0xFFFFFFFF},
        {legacy, entries + 2 * 16 + 12, 7},
        {legacy, entries + 5 * 16 + 12, 7},
        {legacy, entries - 4, 0xFFFFFFFF},
        {legacy, entries - 4, 15},
        {standard, super, 0x00010002},
        {standard, super, 0},
        {standard, super + 4, 0xFFFFFFFF},
        {standard, super + 4, 0},
        {standard, super + 24, 0xFFFFFFF0},
        {standard, super + 24, static_cast<std::uint32_t>(super) - 8},
        {standard, super + 28, 0x7FFFFFFF},
        {standard, super + 28, 0x80000000},
        {standard, super + 32, 0},
        {standard, super + 32, 0xFFFFFFFF},
        {standard, super + 40, 0},
        {standard, second, 0x01000003},
        {standard, second, 2},
        {standard, second + 4, 0xFFFFFFFF},
        {standard, second + 4, 0x40000000},
        {standard, second + 4, 1},
        {standard, second + 8, 0},
        {standard, second + 12, 0},
        {standard, second + 16, 1},
        {standard, second + 16, 0xFFFFFFFF},
        {standard, second + 24, 0},
        {standard, second + 24, 0xFFFFFFFF},
        {standard, second + 28, 0},
        {standard, second + 28, 0x7FFFFFFF},
        {standard, second - 4, 0},
        {standard, second - 4, 0xFFFFFFFF},
    };
    for (const auto& c : cases) {
        avi::File changed = c.built;
        changed.set(c.offset, c.value);
        changed.save(name);
        EXPECT_EQ(readAll(), 6) << std::hex << c.offset << ": " << c.value;
    }
}

TEST(AviReader, EndsWithSizesThatAreDamage) {
    const avi::File built(shape(Index::StandardAndRelative, 2));
    for (const char* chunk : {"RIFF", "LIST", "avih", "strh", "strf", "indx", "dmlh", "00dc", "ix00", "idx1"})
        for (const std::uint32_t size : {0u, 1u, 4u, 0x7FFFFFFFu, 0xFFFFFFF8u, 0xFFFFFFFFu}) {
            avi::File changed = built;
            changed.set(changed.find(chunk, 4), size);
            changed.save(name);
            EXPECT_LE(readAll(), 6) << chunk << ' ' << size;
        }
}

TEST(AviReader, SearchesDamagedFilesForFrames) {
    Shape shape;
    shape.pieces = 2;
    shape.starts = true;
    shape.audioBytes = 300001;
    const avi::File built(shape);
    const auto search = [](const std::string& bytes, bool* opens = nullptr) {
        avi::File::write(name, bytes);
        FileIOAVI file;
        const bool opened = file.open(name, FileIOAVI::Trust::Nothing) == FileIOAVI::Ok;
        if (opens)
            *opens = opened;
        std::vector<unsigned long long> found;
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
    for (const size_t place : {frames[0] - 300009, frames[4] - 300009 + 4, damaged.find("AVIX") - 8})
        damaged.replace(place, 4, "\xff\xff\xff\x7f");
    EXPECT_EQ(search(damaged), all) << "only frames are relied upon";
    damaged.replace(frames[1], 4, 4, '\0');
    damaged.replace(frames[2] + 8, 1, 1, '\0');
    damaged.erase(frames[4] + 60000, 80000);
    const auto left = search(damaged.substr(0, damaged.size() - 100000));
    EXPECT_EQ(left, (std::vector<unsigned long long>{frames[0], frames[3]}))
        << "without the one of another id, the one that begins wrongly, the one that lacks a part and the "
           "cut one";

    bool opens = true;
    EXPECT_TRUE(search(std::string(5000, 'd'), &opens).empty());
    EXPECT_FALSE(opens);
}

TEST(AviReader, ReportsFramesOfOtherSizesAndNone) {
    Shape odd;
    odd.frameSize = 1001;
    avi::File(odd).save(name);
    EXPECT_EQ(readAll(1001), 6);
    odd.frames = 0;
    odd.frameSize = samples::palSize;
    avi::File(odd).save(name);
    dvAVIFile file;
    ASSERT_TRUE(file.open(name));
    EXPECT_EQ(file.frames(), 0u);
    EXPECT_EQ(file.getDataFrameSize(), 144000u);
    file.seekFrame(3);
    char buffer[8];
    EXPECT_FALSE(file.readFrame(buffer, 8, 0));
}

} // namespace
