#include "marvo/recording/searched_reader.h"

#include "marvo/recording/recordings.h"
#include "tests/support/samples.h"

#include <gtest/gtest.h>

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

TEST(Readers, EachKindReadsWhatItHasWritten) {
    for (const KindRow& row : kinds()) {
        for (const unsigned long size : {samples::palSize, samples::ntscSize, 2 * samples::palSize}) {
            SCOPED_TRACE(row.identifier + std::to_string(size));
            const std::wstring name = row.kind == Kind::avi ? L"readers_test.avi" : L"readers_test.dv";
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
    const vcore::handle changed(CreateFileW(name, GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr));
    DWORD done = 0;
    ASSERT_TRUE(WriteFile(changed.get(), content.data(), static_cast<DWORD>(content.size()), &done, nullptr));
    std::wstring error;
    EXPECT_EQ(rowOf(Kind::raw).open(name, {true, 0}, error), nullptr) << "its writer lets nobody read";
    const_cast<vcore::handle&>(changed).reset();
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

} // namespace
