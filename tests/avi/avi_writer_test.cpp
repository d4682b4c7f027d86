#include "marvo.h"

#include "marvo/avi/avi_writer.h"
#include "marvo/core/sector_memory.h"
#include "tests/support/avi_builder.h"
#include "tests/support/avi_disk.h"

#include <gtest/gtest.h>

namespace {

constexpr wchar_t name[] = L"avi_writer_test.avi";

/// Bytes of sound behind a frame: in every fifth 8 less, none behind the third.
constexpr unsigned long soundBytes(std::uint32_t seed) {
    return seed == 2 ? 0 : 1602 * 4 - (seed % 5 == 0 ? 8 : 0);
}

/// A writer on a disk in memory.
struct Recording {
    avi::Disk disk;
    AVI_ODMLFileInfo info;
    std::unique_ptr<AviWriter> writer;
    unsigned long frameSize;
    SectorBuffer record;
    FileIOAVI::Sound sound{.mostSamples = 1602};
    bool sounds;

    explicit Recording(const AviWriter::Limits& limits = {}, unsigned long size = samples::ntscSize,
                       bool withSound = false)
        : writer(std::make_unique<AviWriter>(std::make_unique<avi::DiskOutput>(disk), limits)),
          frameSize(size), sounds(withSound) {}

    int create() {
        FileIOAVI::Video video;
        video.is625 = frameSize == samples::palSize;
        video.height = video.is625 ? 576 : 480;
        const int code = writer->create(name, video, sounds ? &sound : nullptr, true, info);
        record = allocSectors(writer->slotSize());
        return code;
    }
    int write(std::uint32_t seed) {
        std::memcpy(record.get() + 8, samples::bytes(seed, frameSize).data(), frameSize);
        const std::vector<unsigned char> heard = samples::bytes(~seed, sounds ? soundBytes(seed) : 0);
        return writer->writeFrame(reinterpret_cast<char*>(record.get()), writer->slotSize(), frameSize,
                                  heard.data(), static_cast<unsigned long>(heard.size()));
    }
    /// Creates the file and writes frames until one is refused; how many were written.
    unsigned long fill(unsigned long frames) {
        EXPECT_EQ(create(), 0);
        unsigned long k = 0;
        while (k < frames && write(k) == 0) {
            ++k;
        }
        return k;
    }
};

/// Whether `bytes` is an AVI file from which exactly the frames of seeds 0 to `frames` - 1 are read.
void expectReads(const std::string& bytes, unsigned long frames,
                 unsigned long frameSize = samples::ntscSize) {
    avi::File::write(name, bytes);
    ASSERT_EQ(avi::framesRead(name, frameSize), static_cast<long>(frames));
}

void expectNumbers(const std::string& bytes, size_t at, const std::vector<std::uint32_t>& numbers) {
    for (size_t k = 0; k < numbers.size(); ++k) {
        EXPECT_EQ(avi::number<std::uint32_t>(bytes, at + 4 * k), numbers[k]) << at << ", number " << k;
    }
}

/// Where the sound's super index stands.
constexpr size_t soundIndexAt = 16696;

/// The offsets of the frames' data by super index and standard indexes, or those of the sound by its own.
std::vector<std::uint64_t> indexed(const std::string& bytes, bool sound = false) {
    std::vector<std::uint64_t> found;
    const size_t super = sound ? soundIndexAt : 212;
    for (std::uint32_t i = 0; i < avi::number<std::uint32_t>(bytes, super + 12); ++i) {
        const auto entry = avi::number<riff::SuperIndexEntry>(bytes, super + 32 + 16 * i);
        const auto index = avi::number<riff::IndexHeader>(bytes, entry.offsetLow + 8);
        EXPECT_EQ(bytes.substr(entry.offsetLow, 4), sound ? "01ix" : "00ix");
        EXPECT_EQ(entry.size, 16384u);
        std::uint32_t duration = 0;
        for (std::uint32_t k = 0; k < index.entriesInUse; ++k) {
            const auto named = avi::number<riff::StandardIndexEntry>(bytes, entry.offsetLow + 32 + 8 * k);
            found.push_back(index.baseOffsetLow + named.offset);
            duration += sound ? named.size / 4 : 1;
        }
        EXPECT_EQ(duration, entry.duration);
    }
    return found;
}

std::vector<size_t> places(const std::string& bytes, const std::string& id) {
    std::vector<size_t> found;
    for (const avi::Chunk& chunk : avi::walk(bytes)) {
        if (chunk.id == id) {
            found.push_back(chunk.at);
        }
    }
    return found;
}

/// Whether the chunks of a closed file fill their lists exactly, and all frames are indexed and can be read.
void expectSound(const std::string& bytes, unsigned long frames) {
    EXPECT_TRUE(places(bytes, "broken").empty());
    std::vector<std::uint64_t> data;
    for (const size_t chunk : places(bytes, "00dc")) {
        data.push_back(chunk + 8);
    }
    EXPECT_EQ(indexed(bytes), data);
    expectReads(bytes, frames);
    const std::vector<size_t> heard = places(bytes, "01wb");
    if (heard.empty()) {
        return;
    }
    const std::vector<std::uint64_t> named = indexed(bytes, true);
    ASSERT_EQ(named.size(), heard.size());
    std::uint32_t all = 0;
    for (size_t k = 0; k < heard.size(); ++k) {
        const std::uint32_t frame = static_cast<std::uint32_t>(k) + (k > 1 ? 1 : 0);
        EXPECT_EQ(named[k], heard[k] + 8);
        const auto expected = samples::bytes(~frame, soundBytes(frame));
        EXPECT_EQ(bytes.compare(heard[k] + 8, expected.size(), reinterpret_cast<const char*>(&expected[0]),
                                expected.size()),
                  0)
            << k;
        all += soundBytes(frame) / 4;
    }
    expectNumbers(bytes, 16596 + 20 + 32, {all});
}

TEST(AviWriter, LaysOutHeadersAndSlotsBySector) {
    struct Case {
        std::uint32_t sector, frameSize, data, slot;
    };
    for (const Case& c : {Case{512, 144000, 16896, 144384}, {4096, 120000, 20480, 122880}}) {
        SCOPED_TRACE(testing::Message() << c.sector << ' ' << c.frameSize);
        Recording r({}, c.frameSize);
        r.disk.sector = c.sector;
        ASSERT_EQ(r.fill(2), 2u);
        EXPECT_EQ(r.writer->slotSize(), c.slot);
        EXPECT_EQ(r.writer->sectorSize(), c.sector);
        ASSERT_EQ(r.writer->close(), 0);
        const std::string& file = r.disk.bytes;
        for (const auto& [at, data] : r.disk.writes) {
            EXPECT_TRUE(at % c.sector == 0 && data.size() % c.sector == 0) << at;
        }
        const bool pal = c.frameSize == 144000;
        const std::uint32_t height = pal ? 576 : 480;
        expectNumbers(file, 32, {pal ? 40000u : 33366u, pal ? 3600000u : 3596400u, c.sector, 0x10010, 2});
        expectNumbers(file, 56, {1, c.frameSize, 720, height});
        expectNumbers(file, 128, {100, pal ? 2500u : 2997u, 0, 2, c.frameSize});
        expectNumbers(file, 172, {40, 720, height, 0x180001});
        expectNumbers(file, 216, {16376, 4, 1});
        expectNumbers(file, 16616, {2});
        expectNumbers(file, c.data + 4, {c.frameSize});
        EXPECT_EQ(file.substr(108, 8) + file.substr(188, 4) + file.substr(228, 4), "vidsdvsddvsd00dc");
        std::string ids;
        for (const avi::Chunk& chunk : avi::walk(file)) {
            ids += chunk.id + ' ';
        }
        EXPECT_EQ(
            ids,
            "AVI  hdrl avih strl strh strf indx odml dmlh JUNK movi 00dc JUNK 00dc JUNK 00ix idx1 JUNK ");
        EXPECT_EQ(indexed(file), (std::vector<std::uint64_t>{c.data + 8, c.data + 8 + c.slot}));
        const size_t legacy = places(file, "idx1").at(0) + 8 + 16;
        expectNumbers(file, legacy, {riff::fourcc("00dc"), 0x10, c.slot + 4, c.frameSize});
        expectReads(file, 2, c.frameSize);
    }
}

TEST(AviWriter, SoundStandsBehindItsFrame) {
    Recording r({}, samples::ntscSize, true);
    ASSERT_EQ(r.fill(4), 4u);
    EXPECT_EQ(r.writer->slotSize(), 126464u);
    char* const record = reinterpret_cast<char*>(r.record.get());
    for (const unsigned long bad : {6u, 1603u * 4u}) {
        EXPECT_EQ(r.writer->writeFrame(record, r.writer->slotSize(), r.frameSize, record, bad),
                  FileIOAVI::Refused);
    }
    ASSERT_EQ(r.writer->close(), 0);
    const std::string& file = r.disk.bytes;
    for (const auto& [at, data] : r.disk.writes) {
        EXPECT_TRUE(at % 512 == 0 && data.size() % 512 == 0) << at;
    }
    std::string ids;
    for (const avi::Chunk& chunk : avi::walk(file)) {
        ids += chunk.id + ' ';
    }
    EXPECT_EQ(ids,
              "AVI  hdrl avih strl strh strf indx strl strh strf indx odml dmlh JUNK movi 00dc 01wb JUNK "
              "00dc 01wb JUNK 00dc JUNK 00dc 01wb JUNK 01ix 00ix idx1 JUNK ");
    expectNumbers(file, 36, {3596400 + 192000, 512, 0x10110});
    expectNumbers(file, 56, {2});
    expectNumbers(file, 16596 + 20, {riff::fourcc("auds")});
    expectNumbers(file, 16596 + 40, {4, 192000, 0, 3 * 1602 - 2, 6408, 0, 4});
    expectNumbers(file, 16596 + 84, {0x20001, 48000, 192000, 0x100004});
    EXPECT_EQ(avi::number<std::uint32_t>(file, places(file, "idx1").at(0) + 4), 7 * 16u);
    expectSound(file, 4);

    FileIOAVI::Sound long24{.rate = 44100, .channels = 4, .bits = 24, .channelMask = 0x33};
    for (const bool readable : {true, false}) {
        AviWriter writer(std::make_unique<avi::DiskOutput>(r.disk), {});
        EXPECT_EQ(writer.create(name, {}, &long24, true, r.info) == 0, readable);
        long24.bits = 20;
    }
    expectNumbers(file, 16596 + 84, {0x4FFFE, 44100, 12 * 44100, 0x18000C, 0x180016, 0x33, 1, 0x100000});
}

TEST(AviWriter, PiecesAndIndexesEndAtTheirLimits) {
    for (const unsigned long sector : {512ul, 4096ul}) {
        Recording r({1000000, 3, 1022});
        r.disk.sector = sector;
        ASSERT_EQ(r.fill(20), 20u);
        ASSERT_EQ(r.writer->close(), 0);
        const std::string& file = r.disk.bytes;
        const std::vector<size_t> frames = places(file, "00dc");
        const std::vector<size_t> later = places(file, "AVIX");
        ASSERT_EQ(later.size(), 2u) << "seven, seven and six frames";
        EXPECT_EQ(places(file, "00ix").size(), 8u);
        EXPECT_EQ(places(file, "idx1").size(), 1u);
        EXPECT_TRUE(frames.at(6) < later[0] && frames.at(7) > later[0]);
        expectNumbers(file, 48, {7});
        expectNumbers(file, 140, {20});
        for (const avi::Chunk& chunk : avi::walk(file)) {
            if (chunk.id == "AVIX" || chunk.id == "AVI ") {
                EXPECT_LE(chunk.size + 8, 1000000u);
                EXPECT_EQ(chunk.at % sector, 0u);
            }
        }
        EXPECT_EQ(r.info.piecePositions.size(), 3u);
        EXPECT_EQ(r.info.indexPositions.size(), 8u);
        expectSound(file, 20);
    }
    Recording heard({1000000, 3, 1022}, samples::ntscSize, true);
    ASSERT_EQ(heard.fill(20), 20u);
    ASSERT_EQ(heard.writer->close(), 0);
    for (const avi::Chunk& chunk : avi::walk(heard.disk.bytes)) {
        EXPECT_TRUE((chunk.id != "AVIX" && chunk.id != "AVI ") || chunk.size + 8 <= 1000000u);
    }
    expectSound(heard.disk.bytes, 20);
}

TEST(AviWriter, AFullSuperIndexEndsTheRecordingSoundly) {
    Recording r({0x40000000, 3, 2});
    EXPECT_EQ(r.fill(10), 6u);
    EXPECT_EQ(r.write(6), FileIOAVI::Full);
    EXPECT_STRNE(r.writer->error(), L"");
    expectNumbers(r.disk.bytes, 140, {6});
    EXPECT_EQ(r.writer->close(), 0);
    expectSound(r.disk.bytes, 6);
}

TEST(AviWriter, WhateverIsCutOffEveryWholeFrameIsThere) {
    Recording r({1000000, 3, 1022});
    ASSERT_EQ(r.fill(40), 40u);
    ASSERT_EQ(r.writer->close(), 0);
    unsigned long frames = 0;
    for (size_t i = 1; i < r.disk.writes.size(); ++i) {
        const std::string& data = r.disk.writes[i].second;
        const bool isFrame = data.compare(0, 4, "00dc") == 0;
        // Frames are cut behind the last and before the last byte of their data, all other writes in the
        // middle.
        SCOPED_TRACE(testing::Message() << "write " << i << " of " << data.size() << " bytes");
        if (!isFrame || frames % 8 == 0) {
            expectReads(r.disk.after(i, isFrame ? 8 + r.frameSize - 1 : data.size() / 2), frames);
        }
        frames += isFrame;
        if (isFrame && frames % 8 == 0) {
            expectReads(r.disk.after(i, 8 + r.frameSize), frames);
        }
        const auto known = avi::number<std::uint32_t>(r.disk.after(i + 1, 0), 16616);
        ASSERT_LE(known, frames);
        ASSERT_GE(known + 29, frames) << "the headers are at most a second behind";
    }
    EXPECT_EQ(frames, 40u);
}

TEST(AviWriter, AFullDiskLeavesWhatIsThere) {
    for (const bool tellsRoom : {false, true}) {
        Recording r;
        r.disk.room = 16896 + 74 * 120320 + 5000; // less than an index needs is left behind the last frame
        r.disk.tellsRoom = tellsRoom;
        const unsigned long frames = r.fill(100);
        EXPECT_LE(frames, 74u);
        EXPECT_GE(frames, tellsRoom ? 20u : 74u);
        for (int again = 0; again < 3; ++again) {
            EXPECT_NE(r.write(frames), 0);
        }
        EXPECT_EQ(r.writer->close() == 0, tellsRoom) << "room for the indexes is kept where the disk tells";
        EXPECT_EQ(indexed(r.disk.bytes).size(), tellsRoom ? frames : 0);
        EXPECT_TRUE(places(r.disk.bytes, "broken").empty());
        expectReads(r.disk.bytes, frames);
    }
}

class FailingWrites : public testing::TestWithParam<bool> {};
INSTANTIATE_TEST_SUITE_P(Sound, FailingWrites, testing::Bool());

TEST_P(FailingWrites, CostOnlyTheirFrame) {
    Recording r({1000000, 3, 1022}, samples::ntscSize, GetParam());
    ASSERT_EQ(r.create(), 0);
    unsigned long written = 0;
    for (int attempt = 0; written < 30 && attempt < 200; ++attempt) {
        // Every third write comes to half a sector.
        r.disk.beforeWrite = [&, calls = 0]() mutable {
            r.disk.room = (++calls + attempt) % 3 == 0 ? r.disk.bytes.size() + 256 : ~0ull;
        };
        written += r.write(written) == 0;
    }
    r.disk.beforeWrite = [] {};
    r.disk.room = ~0ull;
    EXPECT_EQ(written, 30u);
    EXPECT_EQ(r.writer->close(), 0);
    expectSound(r.disk.bytes, 30);
}

/// Writes one frame after the other on a thread of its own.
struct WriterThread : vwin::winthread {
    Recording& recording;
    explicit WriterThread(Recording& r) : recording(r) {}
    ~WriterThread() { terminate(); }
    void run() override {
        const uninterruptible whole;
        for (std::uint32_t k = 0; k < 12; ++k) {
            recording.write(k);
        }
    }
};

TEST(AviWriter, AWriterThatIsKilledInAnyWriteLeavesASoundFile) {
    for (size_t last = 1; last < 24; ++last) {
        Recording r({1000000, 3, 1022});
        ASSERT_EQ(r.create(), 0);
        vcore::event hangs{1, nullptr};
        r.disk.beforeWrite = [&] {
            if (r.disk.writes.size() == last) {
                const vwin::winthread::killable disk;
                hangs.set();
                Sleep(INFINITE);
            }
        };
        WriterThread thread(r);
        thread.start();
        const bool killed = samples::eventually([&] { return hangs.wait(0) || thread.finished(); });
        thread.terminate();
        ASSERT_TRUE(killed);
        r.disk.beforeWrite = [] {};
        EXPECT_EQ(r.writer->close(), 0);
        SCOPED_TRACE(last);
        expectSound(r.disk.bytes, r.info.totalFrames);
    }
}

/// Writes a file of which only what tells frames apart is on disk: each frame's first bytes.
struct SparseOutput : AviOutput {
    int write(unsigned long long at, const void* data, unsigned long bytes) override {
        return AviOutput::write(at, data, bytes > 0x10000 ? 16 : bytes);
    }
};

TEST(AviWriter, WritesBehind4GiBWhatTheReaderFindsThere) {
    constexpr unsigned long size = 288000;
    constexpr unsigned long frames = (4ull << 30) / size + 4000;
    AVI_ODMLFileInfo written;
    AviWriter writer(std::make_unique<SparseOutput>(), {});
    ASSERT_EQ(writer.create(name, {.subKind = 422}, nullptr, false, written), FileIOAVI::Ok);
    std::vector<char> slot(writer.slotSize());
    const auto mark = [&slot](std::uint32_t frame) {
        std::memcpy(&slot[8], "\x1f\x07\0\xbf", 4);
        std::memcpy(&slot[12], &frame, sizeof(frame));
    };
    for (unsigned long frame = 0; frame < frames; ++frame) {
        mark(frame);
        ASSERT_EQ(writer.writeFrame(slot.data(), writer.slotSize(), size), FileIOAVI::Ok);
    }
    ASSERT_EQ(writer.close(), FileIOAVI::Ok);
    for (const auto trust : {FileIOAVI::Trust::Indexes, FileIOAVI::Trust::Nothing}) {
        FileIOAVI file;
        ASSERT_EQ(file.open(name, trust), FileIOAVI::Ok);
        ASSERT_EQ(file.frames(), frames);
        EXPECT_EQ(file.info().walkedFrames, trust == FileIOAVI::Trust::Indexes ? 0 : frames) << "all indexed";
        for (const unsigned long frame : {frames - 1, frames - 3900, frames - 4100, 0ul}) {
            ASSERT_EQ(file.readFrame(slot.data(), file.slotSize(), frame), FileIOAVI::Ok);
            std::vector<char> read = slot;
            mark(frame);
            EXPECT_EQ(read, slot) << frame;
        }
        if (trust == FileIOAVI::Trust::Indexes) {
            EXPECT_EQ(file.info().pieces, written.pieces);
            EXPECT_EQ(file.info().indexPositions, written.indexPositions);
            EXPECT_GT(file.info().piecePositions.back(), 4ull << 30);
        }
    }
    AviInspector inspector;
    EXPECT_TRUE(inspector.run(name, {.frames = false, .progress = {}}));
    EXPECT_TRUE(inspector.faultCount() == 0 && inspector.frames() == frames);
    DeleteFileW(name);
}

TEST(AviFile, WritesEveryCodec) {
    struct Case {
        unsigned long kind, subKind;
        bool is625;
        unsigned long max, frameSize;
        const char* codec;
    };
    for (const Case& c : {Case{0, 0, true, 0, 701440, "UYVY"},
                          {0, 7, false, 5001, 5001, "UYVY"},
                          {1, 420, false, 9, 120000, "dvsd"},
                          {1, 422, true, 0, 288000, "dv50"},
                          {2, 1, true, 0, 0x20000, "mpg2"},
                          {2, 1, true, 777, 777, "mpg2"}}) {
        for (const bool unbuffered : {false, true}) {
            SCOPED_TRACE(testing::Message() << c.codec << c.frameSize << unbuffered);
            FileIOAVI file;
            ASSERT_EQ(file.create(name, {c.kind, c.subKind, 720, 576, c.is625, c.max}, unbuffered), 0);
            EXPECT_EQ(file.dataFrameSize(), c.frameSize);
            const unsigned long sectors = (c.frameSize + 512) / 512 * 512;
            EXPECT_EQ(file.slotSize(), unbuffered ? sectors : (c.frameSize + 9) / 2 * 2);
            std::vector<char> slot(file.slotSize() + 1, 'x');
            for (int k = 0; k < 2; ++k) {
                ASSERT_EQ(file.writeFrame(&slot[1], file.slotSize(), c.frameSize), 0) << "at an odd address";
            }
            ASSERT_EQ(file.close(), 0);
            const std::string bytes = avi::File::read(name);
            EXPECT_EQ(bytes.substr(112, 4), c.codec);
            EXPECT_EQ(bytes.size() % 512, 0u);
            EXPECT_TRUE(places(bytes, "00dc").size() == 2 && places(bytes, "broken").empty());
        }
    }
}

TEST(AviFile, RefusesWhatCannotBeWritten) {
    FileIOAVI file;
    const FileIOAVI::Video pal;
    for (const FileIOAVI::Video& bad :
         {FileIOAVI::Video{1, 400}, {3}, {2, 0, 720, 576, true, 0xFFFFFFFF}, {1, 420, 40000}}) {
        EXPECT_EQ(file.create(name, bad, true), FileIOAVI::Refused);
    }
    EXPECT_EQ(file.create(nullptr, pal, true), FileIOAVI::Refused);
    avi::File::write(name, "sacred");
    SetFileAttributesW(name, FILE_ATTRIBUTE_READONLY);
    CreateDirectoryW(L"avi_writer_test.folder", nullptr);
    for (const wchar_t* bad : {L"", L"no such folder\\x.avi", L"avi_writer_test.folder", name}) {
        EXPECT_EQ(file.create(bad, pal, true), FileIOAVI::SystemRefused);
        EXPECT_STRNE(file.lastError(), L"");
    }
    EXPECT_TRUE(avi::File::read(name) == "sacred");
    SetFileAttributesW(name, FILE_ATTRIBUTE_NORMAL);
    ASSERT_EQ(file.create(name, pal, true), 0) << "in place of what was there";
    EXPECT_EQ(file.create(name, pal, true), FileIOAVI::Refused) << "in use";
    EXPECT_EQ(file.open(name), FileIOAVI::Refused);
    std::vector<char> slot(file.slotSize());
    const unsigned long size = file.slotSize();
    EXPECT_EQ(file.writeFrame(slot.data(), size, 120000), FileIOAVI::Refused);
    EXPECT_EQ(file.writeFrame(slot.data(), size - 1, 144000), FileIOAVI::Refused);
    EXPECT_EQ(file.writeFrame(nullptr, size, 144000), FileIOAVI::Refused);
    EXPECT_EQ(file.writeFrame(slot.data(), size, 144000), 0);
    EXPECT_EQ(file.close(), 0);
    EXPECT_EQ(file.writeFrame(slot.data(), size, 144000), FileIOAVI::Refused);
    ASSERT_EQ(file.open(name), 0);
    EXPECT_EQ(file.frames(), 1u);
}

} // namespace
