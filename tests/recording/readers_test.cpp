#include "marvo/recording/searched_reader.h"

#include "marvo/core/disk_file.h"
#include "marvo/recording/recordings.h"
#include "tests/support/faulty_disk.h"
#include "tests/support/import_patch.h"
#include "tests/support/samples.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

namespace {

using namespace recording;

/// DV frames, as far as the search looks at them: only their start is that of a frame.
void fill(RecordBuffer& buffer, std::uint32_t seed, unsigned long size) {
    ASSERT_TRUE(buffer.setFrameBytes(size));
    const std::vector<unsigned char> bytes = samples::bytes(seed, size);
    std::memcpy(buffer.frame(), bytes.data(), size);
    const unsigned char start[] = {0x1F, 0x07, 0x00,
                                   static_cast<unsigned char>(size % samples::palSize == 0 ? 0xBF : 0x3F)};
    std::memcpy(buffer.frame(), start, sizeof start);
    if (size > samples::palSize) {
        const unsigned char secondChannel[] = {0x1F, 0x0F, 0x00};
        std::memcpy(buffer.frame() + samples::palSize, secondChannel, sizeof secondChannel);
    }
}

bool holds(const RecordBuffer& buffer, std::uint32_t seed) {
    RecordBuffer wanted;
    wanted.allocate(buffer.bytes());
    fill(wanted, seed, buffer.frameBytes());
    return std::memcmp(buffer.frame(), wanted.frame(), buffer.frameBytes()) == 0;
}

/// Writes frames 0 to `frames - 1` as a file of the kind.
void write(const KindRow& row, const wchar_t* name, unsigned long frames, unsigned long size) {
    std::wstring error;
    const std::unique_ptr<Writer> writer = row.create(name, size, 400000, error);
    ASSERT_TRUE(writer) << row.identifier;
    EXPECT_EQ(writer->kind(), row.kind);
    RecordBuffer buffer;
    ASSERT_TRUE(buffer.allocate(writer->bufferBytes()));
    ASSERT_TRUE(buffer.setFrameBytes(size - 1));
    EXPECT_FALSE(writer->write(buffer)) << "not the size that was announced";
    EXPECT_FALSE(writer->error().empty());
    for (unsigned long frame = 0; frame < frames; ++frame) {
        fill(buffer, frame, size);
        ASSERT_TRUE(writer->write(buffer)) << row.identifier;
    }
    EXPECT_TRUE(writer->flush() && writer->finish());
}

std::wstring nameFor(const KindRow& row) {
    return row.kind == Kind::avi ? L"readers_test.avi" : L"readers_test.dv";
}

TEST(Readers, EachKindReadsWhatItHasWritten) {
    for (const KindRow& row : kinds()) {
        for (const unsigned long size : {samples::palSize, samples::ntscSize, 2 * samples::palSize}) {
            SCOPED_TRACE(row.identifier + std::to_string(size));
            const std::wstring name = nameFor(row);
            write(row, name.c_str(), 5, size);
            InputFile file;
            ASSERT_TRUE(file.open(name.c_str()));
            EXPECT_EQ(rowOfContent(file), &row);
            // A bare stream is found behind the kind that its name means.
            const std::unique_ptr<Reader> reader = openReader(name.c_str());
            ASSERT_TRUE(reader);
            EXPECT_EQ(reader->kind(), row.kind);
            EXPECT_EQ(reader->frames(), 5u);
            EXPECT_EQ(reader->frameSize(), size);
            EXPECT_EQ(reader->end().state, Reader::End::State::finished);
            RecordBuffer buffer;
            ASSERT_TRUE(buffer.allocate(reader->bufferBytes() - 512));
            EXPECT_FALSE(reader->read(0, buffer)) << "too small";
            ASSERT_TRUE(buffer.allocate(reader->bufferBytes()));
            for (const unsigned long frame : {3u, 0u, 4u}) {
                ASSERT_TRUE(reader->read(frame, buffer));
                EXPECT_EQ(buffer.frameBytes(), size);
                EXPECT_TRUE(holds(buffer, frame));
                unsigned char head[4] = {};
                EXPECT_EQ(reader->readHead(frame, head, sizeof head), sizeof head);
                EXPECT_EQ(std::memcmp(head, buffer.frame(), sizeof head), 0);
            }
            EXPECT_FALSE(reader->read(5, buffer)) << "the end of the file";
            EXPECT_FALSE(reader->error().empty());
            EXPECT_EQ(reader->read(6, buffer), row.kind == Kind::raw) << "beyond the end";
            EXPECT_TRUE(row.kind != Kind::raw || holds(buffer, 4)) << "the last record stands for it";
            reader->abandon();
            EXPECT_FALSE(reader->read(0, buffer));
        }
    }
}

TEST(Writers, AWriteThatFailsCostsOnlyItsFrame) {
    FaultyDisk disk(GetModuleHandleW(nullptr));
    for (const KindRow& row : kinds()) {
        SCOPED_TRACE(row.identifier);
        const std::wstring name = nameFor(row);
        std::wstring error;
        const std::unique_ptr<Writer> writer = row.create(name.c_str(), samples::palSize, 400000, error);
        RecordBuffer buffer;
        ASSERT_TRUE(buffer.allocate(writer->bufferBytes()));
        EXPECT_EQ(writer->systemError(), 0u);
        for (std::uint32_t frame = 0, next = 0; frame < 60; ++frame) {
            disk.fault =
                frame % 3 == 2 ? static_cast<FaultyDisk::Fault>(1 + frame / 3 % 2) : FaultyDisk::none;
            fill(buffer, next, samples::palSize);
            const bool written = writer->write(buffer);
            EXPECT_EQ(written, disk.fault == FaultyDisk::none);
            EXPECT_EQ(writer->systemError(), frame < 2 ? 0u : ERROR_DISK_FULL);
            next += written;
        }
        disk.fault = FaultyDisk::none;
        EXPECT_TRUE(writer->finish());
        const std::unique_ptr<Reader> reader = row.open(name.c_str(), {}, error);
        ASSERT_TRUE(reader && buffer.allocate(reader->bufferBytes()));
        ASSERT_EQ(reader->frames(), 40u);
        EXPECT_EQ(reader->end().state, Reader::End::State::finished)
            << "and nothing is left behind the last one";
        for (std::uint32_t frame = 0; frame < 40; ++frame) {
            EXPECT_TRUE(reader->read(frame, buffer) && holds(buffer, frame)) << frame;
        }
    }
}

HANDLE WINAPI refuse(const wchar_t*, DWORD, DWORD, SECURITY_ATTRIBUTES*, DWORD, DWORD, HANDLE) {
    SetLastError(ERROR_ACCESS_DENIED);
    return INVALID_HANDLE_VALUE;
}

TEST(Writers, WhatIsReplacedIsKeptUntilThen) {
    for (const KindRow& row : kinds()) {
        SCOPED_TRACE(row.identifier);
        const std::wstring name = nameFor(row);
        std::wstring error;
        write(row, name.c_str(), 3, samples::palSize);
        const auto frames = [&] {
            const auto reader = openReader(name.c_str());
            return reader ? reader->frames() : 0;
        };
        SetFileAttributesW(name.c_str(), FILE_ATTRIBUTE_READONLY);
        EXPECT_EQ(row.create(name.c_str(), samples::palSize, 400000, error), nullptr);
        EXPECT_FALSE(error.empty());
        SetFileAttributesW(name.c_str(), FILE_ATTRIBUTE_NORMAL);
        if (row.kind == Kind::avi) {
            const ImportPatch patch(GetModuleHandleW(nullptr), "CreateFileW",
                                    reinterpret_cast<void*>(&refuse));
            EXPECT_EQ(row.create(name.c_str(), samples::palSize, 400000, error), nullptr);
        }
        EXPECT_EQ(frames(), 3u) << "it was not there to be replaced";
        vcore::handle other(CreateFileW(name.c_str(), GENERIC_READ,
                                        FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                        OPEN_EXISTING, 0, nullptr));
        write(row, name.c_str(), 5, samples::palSize);
        other.reset();
        EXPECT_EQ(frames(), 5u) << "whoever had the former file open does not take the new one along";
        EXPECT_EQ(GetFileAttributesW((name + L".replaced").c_str()), INVALID_FILE_ATTRIBUTES);
    }
}

TEST(Readers, RecordsOfAnotherVolumeAreFound) {
    constexpr wchar_t name[] = L"readers_test.dv";
    write(rowOf(Kind::raw), name, 3, samples::palSize);
    std::vector<unsigned char> content(3 * 147456 + 100);
    InputFile file;
    ASSERT_TRUE(file.open(name));
    for (int record = 0; record < 3; ++record) {
        EXPECT_EQ(file.read(record * 144384ull, &content[record * 147456u], 144384), 144384u);
    }
    file.close();
    vcore::handle changed(CreateFileW(name, GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr));
    DWORD done = 0;
    ASSERT_TRUE(WriteFile(changed.get(), content.data(), static_cast<DWORD>(content.size()), &done, nullptr));
    std::wstring error;
    EXPECT_EQ(rowOf(Kind::raw).open(name, {true, 0}, error), nullptr) << "its writer lets nobody read";
    changed.reset();
    for (const unsigned long sector : {0ul, 4096ul}) {
        const std::unique_ptr<Reader> reader = rowOf(Kind::raw).open(name, {true, sector}, error);
        ASSERT_TRUE(reader);
        EXPECT_EQ(reader->bufferBytes(), 147456u);
        RecordBuffer buffer;
        ASSERT_TRUE(buffer.allocate(reader->bufferBytes()) && reader->read(2, buffer));
        EXPECT_TRUE(holds(buffer, 2));
        EXPECT_EQ(reader->end().state, Reader::End::State::cutOff);
    }
}

TEST(Readers, NamesAndFilesThatMeanNoRecordingAreRefused) {
    for (const auto& [name, kind] :
         {std::pair(L"a.AVI.bak", Kind::avi), {L".avi", Kind::raw}, {L"a.dv", Kind::raw}}) {
        EXPECT_EQ(kindOfName(name), kind) << name;
    }
    for (const wchar_t* name :
         {L"no such folder\\a.avi", L"no such folder\\a.dv", L"", (const wchar_t*)nullptr}) {
        std::wstring error;
        EXPECT_EQ(openReader(name, &error), nullptr);
        EXPECT_EQ(createWriter(name, samples::palSize, 400000, &error), nullptr);
        EXPECT_FALSE(error.empty());
    }
}

TEST(Readers, DevicesAreNeitherReadNorWritten) {
    for (const wchar_t* name : {L"NUL", L"con", L"nul.avi", L"C:\\x\\AUX.dv", L"C:PRN", L"COM1", L"NUL .dv",
                                L"lpt9.a.b", L"COM\u00B9", L"CONIN$", L"\\\\.\\C:", L"//./PhysicalDrive0",
                                L"\\\\.\\pipe\\x", L"\\\\?\\pipe\\x", L"\\\\host\\PIPE\\x"}) {
        std::wstring error, other;
        EXPECT_EQ(openReader(name, &error), nullptr);
        EXPECT_EQ(createWriter(name, samples::palSize, 400000, &other), nullptr);
        EXPECT_TRUE(error == other && error.find(L"device") != std::wstring::npos) << name;
        for (const KindRow& row : kinds()) {
            EXPECT_EQ(row.open(name, {}, error), nullptr) << name;
            EXPECT_EQ(row.create(name, samples::palSize, 400000, error), nullptr) << name;
        }
    }
    for (const wchar_t* name : {L"common.dv", L"nul1.dv", L"COM10", L"COM.dv", L"con\\a.dv", L"C:\\a.nul",
                                L"", L"\\\\?\\C:\\a.dv", L"\\\\.\\C:\\a.dv", L"\\\\host\\pipes\\a.dv"}) {
        EXPECT_FALSE(vcore::namesDevice(name)) << name;
    }
}

unsigned readCalls;
const auto systemRead = reinterpret_cast<decltype(&ReadFile)>(
    reinterpret_cast<void*>(GetProcAddress(GetModuleHandleA("kernel32.dll"), "ReadFile")));

BOOL WINAPI countedRead(HANDLE file, void* buffer, DWORD bytes, DWORD* done, OVERLAPPED* place) {
    ++readCalls;
    return systemRead(file, buffer, bytes, done, place);
}

TEST(Readers, ASearchReadsAFileOnceHoweverManyFramesBeginInIt) {
    constexpr wchar_t name[] = L"readers_test.dv";
    std::string starts;
    while (starts.size() < 0x80000) {
        starts.append("\x1f\x07\0\x3f\x1f\x07\0\xbf", 8);
    }
    std::ofstream(std::filesystem::path(name), std::ios::binary) << starts;
    const ImportPatch patch(GetModuleHandleW(nullptr), "ReadFile", reinterpret_cast<void*>(&countedRead));
    std::wstring error;
    unsigned long long last = 0;
    unsigned steps = 0;
    const auto progress = [&](unsigned long long done, unsigned long long all) {
        steps += done > last && done < all;
        last = done;
        return true;
    };
    const std::unique_ptr<SearchedReader> reader = SearchedReader::open(name, progress, error);
    ASSERT_TRUE(reader);
    EXPECT_EQ(reader->frames(), 0u);
    EXPECT_LT(readCalls, 30u);
    EXPECT_GT(steps, 1000u);
}

/// Writes four of a camera's frames and leaves the file as a recorder does that is killed behind the last
/// one.
void writeKilled(const KindRow& row, const wchar_t* name) {
    std::ifstream stream(std::string(std::getenv("MARVO_STREAMS")) + "\\pal.dv", std::ios::binary);
    const std::wstring whole = std::wstring(name) + L".whole";
    std::wstring error;
    const std::unique_ptr<Writer> writer = row.create(name, samples::palSize, 400000, error);
    RecordBuffer buffer;
    ASSERT_TRUE(writer && buffer.allocate(writer->bufferBytes()) && buffer.setFrameBytes(samples::palSize));
    for (int frame = 0; frame < 4; ++frame) {
        ASSERT_TRUE(stream.read(reinterpret_cast<char*>(buffer.frame()), samples::palSize));
        ASSERT_TRUE(writer->write(buffer));
    }
    ASSERT_TRUE(CopyFileW(name, whole.c_str(), FALSE) && writer->finish());
    ASSERT_TRUE(MoveFileExW(whole.c_str(), name, MOVEFILE_REPLACE_EXISTING));
}

TEST(Readers, ACutCostsTheFrameThatItGoesThroughAndNoOther) {
    const unsigned long long step = std::getenv("MARVO_LONG") ? 1 : 4999;
    for (const Kind kind : {Kind::raw, Kind::avi}) {
        SCOPED_TRACE(rowOf(kind).identifier);
        const std::wstring name = nameFor(rowOf(kind));
        ASSERT_NO_FATAL_FAILURE(writeKilled(rowOf(kind), name.c_str()));
        std::wstring error;
        const auto open = [&] {
            return SearchedReader::open(
                name.c_str(), [](auto, auto) { return true; }, error);
        };
        Reader::Place third, fourth;
        {
            const auto reader = open();
            ASSERT_TRUE(reader && reader->frames() == 4 && reader->holes().empty());
            ASSERT_TRUE(reader->place(2, third) && reader->place(3, fourth));
        }
        const unsigned long long thirdEnd = third.offset + third.size,
                                 fourthEnd = fourth.offset + fourth.size;
        for (unsigned long long cut = fourthEnd; cut > third.offset;) {
            std::filesystem::resize_file(name, cut);
            const auto reader = open();
            ASSERT_TRUE(reader) << cut;
            const bool through = cut < thirdEnd || (cut > fourth.offset && cut < fourthEnd);
            unsigned long lost = 0;
            for (const SearchedReader::Hole& hole : reader->holes()) {
                lost += hole.lost;
            }
            ASSERT_EQ(reader->frames(), 2u + (cut >= thirdEnd) + (cut >= fourthEnd)) << cut;
            ASSERT_EQ(lost, through ? 1u : 0u) << cut;
            // Around the edges every byte, between them by steps.
            unsigned long long down = std::min(step, cut - third.offset);
            for (const unsigned long long edge : {third.offset, thirdEnd, fourth.offset, fourthEnd}) {
                const unsigned long long from = edge + 20;
                down = cut > from ? std::min(down, cut - from) : cut > edge - 20 ? 1 : down;
            }
            cut -= down;
        }
        std::filesystem::remove(name);
    }
}

} // namespace
