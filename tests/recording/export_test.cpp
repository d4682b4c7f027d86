#include "marvo.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

namespace {

constexpr unsigned long size = 120000;
constexpr wchar_t source[] = L"export_test.source.avi";

std::string read(const std::filesystem::path& name) {
    std::ifstream file(name, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

/// Files whose names begin as the test's, without the source.
size_t filesMade() {
    size_t made = 0;
    for (const auto& entry : std::filesystem::directory_iterator(L".")) {
        const std::wstring name = entry.path().filename().wstring();
        made += name.starts_with(L"export_test") && name != source;
    }
    return made;
}

class Export : public testing::Test {
protected:
    void SetUp() override {
        std::ifstream stream(std::string(std::getenv("MARVO_STREAMS")) + "\\ntsc.dv", std::ios::binary);
        frames.resize(30 * size);
        stream.read(frames.data(), static_cast<std::streamsize>(frames.size()));
        ASSERT_EQ(recording.create(source, {.height = 480, .is625 = false}, true), FileIOAVI::Ok);
        std::vector<char> slot(recording.slotSize());
        for (size_t frame = 0; frame < 30; ++frame) {
            std::copy_n(frames.begin() + static_cast<long>(frame * size), size, slot.begin() + 8);
            ASSERT_EQ(recording.writeFrame(slot.data(), recording.slotSize(), size), FileIOAVI::Ok);
        }
    }
    void TearDown() override {
        recording.close();
        for (const wchar_t* name : {source, L"export_test.dv", L"export_test.avi"}) {
            DeleteFileW(name);
        }
    }

    FileIOAVI recording; ///< still open for writing
    std::string frames;
    dvExport work;
};

TEST_F(Export, TakesARangeOfARecordingThatGrows) {
    unsigned long long told = 0;
    const auto count = [&](unsigned long long done, unsigned long long all) {
        told += done == told + 1 && all == 15;
        return true;
    };
    ASSERT_TRUE(work.run(source, 10, 24, L"export_test.dv", count)) << work.explanation();
    EXPECT_TRUE(told == 15 && work.frames() == 15 && *work.explanation() == 0 && *work.note() == 0);
    EXPECT_TRUE(read(L"export_test.dv") == frames.substr(10 * size, 15 * size));
    for (const bool sound : {true, false}) {
        work.withSound(sound);
        work.replaceExisting(!sound);
        ASSERT_TRUE(work.run(source, 20, dvExport::toTheEnd, L"export_test.avi", {})) << work.explanation();
        FileIOAVI made;
        ASSERT_EQ(made.open(L"export_test.avi"), FileIOAVI::Ok);
        EXPECT_TRUE(made.frames() == 10 && made.info().audioStreams == sound);
        std::vector<char> slot(made.slotSize());
        EXPECT_EQ(made.readFrame(slot.data(), made.slotSize(), 9), FileIOAVI::Ok);
        EXPECT_EQ(frames.compare(29 * size, size, &slot[8], size), 0);
    }
    EXPECT_EQ(filesMade(), 2u);
}

TEST_F(Export, SaysInWordsWhyItMadeNothing) {
    std::ofstream(L"export_test.dv") << "precious";
    struct Case {
        const wchar_t *from, *to;
        unsigned long long first, last;
        const wchar_t* reason;
    };
    for (const Case& c :
         {Case{source, L"export_test.dv", 0, 9, L"'export_test.dv' cannot be written: it exists."},
          {source, L"export_test.mov", 0, 9, L"ends with neither .avi nor .dv."},
          {source, L"no folder\\export_test.dv", 0, 9, L"cannot be written: "},
          {source, L"EXPORT_TEST.source.AVI", 0, 9, L"it is the recording that is read."},
          {source, L"export_test.avi", 9, 30, L"the last frame is 29."},
          {source, L"export_test.avi", 9, 8, L"no frames from 9 to 8"},
          {L"export_test.dv", L"export_test.avi", 0, 0, L"'export_test.dv' is no recording: "},
          {L"nothing.avi", L"export_test.avi", 0, 0, L"'nothing.avi' cannot be opened: "},
          {nullptr, nullptr, 0, 0, L"cannot be written"}}) {
        EXPECT_FALSE(work.run(c.from, c.first, c.last, c.to, {}));
        EXPECT_NE(std::wcsstr(work.explanation(), c.reason), nullptr) << c.reason;
        EXPECT_FALSE(work.cancelled());
    }
    EXPECT_FALSE(work.run(source, 0, 29, L"export_test.avi",
                          [](unsigned long long done, unsigned long long) { return done < 5; }));
    EXPECT_TRUE(work.cancelled() && work.frames() == 5 && *work.explanation() != 0);
    EXPECT_EQ(read(L"export_test.dv"), "precious");
    EXPECT_EQ(filesMade(), 1u);
}

} // namespace
