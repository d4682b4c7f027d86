#include "tests/mutation/changing_file.h"
#include "tests/mutation/mutator.h"
#include "tests/support/avi_builder.h"

#include <process.h>

#include <cstdlib>
#include <random>

namespace {

/// dvrec lies in bin/, this program there or in a folder beside it.
std::wstring dvrec() {
    wchar_t program[MAX_PATH] = L"";
    GetModuleFileNameW(nullptr, program, MAX_PATH);
    const auto folder = std::filesystem::path(program).parent_path().parent_path();
    return (folder / "bin" / "dvrec.exe").wstring();
}

/// Whatever has happened to a file: what `repair` makes of it is sound, or it says that it cannot.
TEST(RepairMutation, makes_sound_files_or_refuses) {
    constexpr unsigned files = 30;
    constexpr intptr_t sound = 0, cannotRead = 3;
    avi::Shape shape;
    shape.frames = 5;
    shape.index = avi::Index::StandardAndRelative;
    avi::File file(shape);
    std::vector<size_t> spots;
    for (size_t at = 0; at < file.frameOffsets[0]; at += 4) {
        spots.push_back(at);
    }
    // Only frames that are undamaged inside are taken, so these are a camera's.
    std::ifstream stream(std::string(std::getenv("MARVO_STREAMS")) + "\\ntsc.dv", std::ios::binary);
    for (const size_t offset : file.frameOffsets) {
        ASSERT_TRUE(stream.read(&file.bytes[offset + 8], shape.frameSize));
        spots.insert(spots.end(), {offset, offset + 4, offset + 8});
    }
    const Mutator base(file.bytes, spots);
    ChangingFile damaged(L"damaged.avi");
    std::mt19937 random(1);
    std::string bytes;
    unsigned repaired = 0;
    for (unsigned number = 0; number < files; ++number) {
        SCOPED_TRACE(number);
        base.mutate(bytes, random, base);
        damaged.put(bytes);
        const auto code = _wspawnl(_P_WAIT, dvrec().c_str(), L"dvrec", L"repair", L"damaged.avi",
                                   L"repaired.avi", L"--force", nullptr);
        ASSERT_TRUE(code == sound || code == cannotRead) << code;
        if (code == sound) {
            ++repaired;
            AviInspector inspector;
            ASSERT_TRUE(inspector.run(L"repaired.avi", {}));
            ASSERT_EQ(0u, inspector.faultCount());
            ASSERT_LT(0u, inspector.frames());
        }
    }
    EXPECT_LT(files / 2, repaired);
    DeleteFileW(L"repaired.avi");
}

} // namespace
