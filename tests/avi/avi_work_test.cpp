#include "tests/support/avi_builder.h"
#include "tests/support/import_patch.h"

#include <gtest/gtest.h>

namespace {

constexpr wchar_t name[] = L"avi_work_test.avi";
using avi::Index;

unsigned long long readCalls;
unsigned long long readBytes;

/// The system's own: this program's import leads to the one that counts.
const auto systemRead = reinterpret_cast<decltype(&ReadFile)>(
    reinterpret_cast<void*>(GetProcAddress(GetModuleHandleA("kernel32.dll"), "ReadFile")));

BOOL WINAPI countedRead(HANDLE file, void* buffer, DWORD bytes, DWORD* done, OVERLAPPED* place) {
    const BOOL result = systemRead(file, buffer, bytes, done, place);
    ++readCalls;
    readBytes += *done;
    return result;
}

/// Reading the file must cost no more than a few passes over it, in bytes and in calls.
template <class Read>
void expectLinear(const std::string& bytes, Read read) {
    avi::File::write(name, bytes);
    readCalls = readBytes = 0;
    {
        const ImportPatch patch(GetModuleHandleW(nullptr), "ReadFile", reinterpret_cast<void*>(&countedRead));
        read();
    }
    EXPECT_LT(readBytes, 8 * bytes.size() + 0x100000);
    EXPECT_LT(readCalls, bytes.size() / 64 + 1000);
    DeleteFileW(name);
}

void inspectDamaged(unsigned long frames) {
    AviInspector inspector;
    EXPECT_TRUE(inspector.run(name, {}));
    EXPECT_NE(inspector.faultCount(), 0u);
    EXPECT_EQ(inspector.frames(), frames);
}

std::string text(std::initializer_list<std::uint32_t> words) {
    return {reinterpret_cast<const char*>(words.begin()), words.size() * sizeof(std::uint32_t)};
}

TEST(AviWork, IsLinearForManyIndexesWhateverTheyClaim) {
    constexpr unsigned long pieces = 3000;
    avi::File file({.frames = pieces, .frameSize = 80, .index = Index::Standard, .pieces = pieces});
    const size_t entries = file.find("indx", 32);
    for (unsigned long i = 0; i < pieces; ++i) {
        file.set(entries + i * 16 + 8, 0x40000); // as long as is read at once
    }
    expectLinear(file.bytes, [] { EXPECT_EQ(avi::framesRead(name, 80), long{pieces}); });
    // Indexes whose heads are entries of those before them.
    std::string heads;
    for (unsigned long i = 0; i < pieces; ++i) {
        file.set(entries + i * 16, static_cast<std::uint32_t>(file.bytes.size() + heads.size()));
        heads += text({riff::fourcc("ix00"), 24 + 79 * 8, 0x01000002, 79, riff::fourcc("00dc"), 0, 0, 0});
    }
    expectLinear(file.bytes + heads, [] { EXPECT_EQ(avi::framesRead(name, 80), long{pieces}); });
    expectLinear(file.bytes + heads, [] { inspectDamaged(pieces); });
}

TEST(AviWork, IsLinearForDamageInsideOfManyLists) {
    avi::File file({.frames = 1, .starts = true});
    constexpr std::uint32_t lists = 5000;
    for (const std::uint32_t deep : {0u, 24 * lists}) {
        std::string bytes = file.bytes + text({riff::fourcc("RIFF"), 24 * lists + 16, riff::fourcc("AVIX"),
                                               riff::fourcc("LIST"), 24 * lists + 4, riff::fourcc("movi")});
        for (std::uint32_t i = 0; i < lists; ++i) {
            bytes += text({riff::fourcc("LIST"), 16 + deep, riff::fourcc("rec "), 1, 1, 1});
        }
        expectLinear(bytes, [] { inspectDamaged(1); });
    }
}

TEST(AviWork, IsLinearForASearchAmongThingsLikeFrames) {
    std::string bytes = "no header";
    for (std::uint32_t i = 0; i < 30000; ++i) {
        bytes += text({riff::fourcc("00dc"), i % 2 ? 144000u : 576000u}) + std::string("\x1f\x07\0", 3);
    }
    const size_t place = bytes.size();
    bytes += avi::File({.frames = 2, .starts = true}).bytes + std::string(600000, '\0');
    expectLinear(bytes, [&] {
        FileIOAVI file;
        ASSERT_EQ(file.open(name, FileIOAVI::Trust::Nothing), FileIOAVI::Ok);
        FileIOAVI::FramePosition position;
        ASSERT_TRUE(file.framePosition(file.frames() - 1, position));
        EXPECT_GT(position.offset, place + 120000) << "the last of the two sound ones";
    });
}

} // namespace
