#include "marvo.h"

#include "tests/support/avi_builder.h"
#include "tests/support/import_patch.h"
#include "tests/support/recording.h"
#include "tests/support/samples.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <thread>

namespace {

constexpr wchar_t name[] = L"frame_loader_test.dv";

/// Asks for a frame until it is loaded, as a play thread does once a tick. Whether it came, with the right
/// bytes.
bool arrives(dvFrameLoad& loader, unsigned long long number) {
    vvideo::dvFrame frame(samples::palSize, nullptr);
    return samples::eventually([&] { return loader.get(&frame, number); }) &&
           samples::holds(frame.data(), static_cast<std::uint32_t>(number));
}

/// Whether the loader reads ahead: asked for frame `from` and then told more by `tell`, it comes to hold
/// `ahead`. Nothing is loaded between gets that follow at once, so these frames must have been there. A busy
/// machine is given several tries.
template <class Tell>
bool readsAhead(dvFrameLoad& loader, unsigned long long from, Tell tell,
                const std::vector<unsigned long long>& ahead) {
    vvideo::dvFrame frame(samples::palSize, nullptr);
    const auto holds = [&](unsigned long long number) { return loader.get(&frame, number); };
    for (DWORD wait_ms = 100; wait_ms <= 3200 && arrives(loader, from); wait_ms *= 2) {
        tell();
        Sleep(wait_ms);
        if (std::all_of(ahead.begin(), ahead.end(), holds)) {
            return true;
        }
    }
    return false;
}

TEST(FrameLoader, PlaysARangeLoopedBothWays) {
    recording::write(name, 60);
    dvFrameLoad loader;
    ASSERT_TRUE(loader.init(name, 10, 29, 8));
    for (unsigned long long k = 0; k < 40; ++k) {
        EXPECT_TRUE(arrives(loader, 10 + k % 20)) << k;
    }
    for (unsigned long long k = 40; k-- > 0;) {
        EXPECT_TRUE(arrives(loader, 10 + k % 20)) << k;
    }
}

TEST(FrameLoader, PlaysWhatLiesBehind4GiB) {
    constexpr unsigned long distant = 29750; // at byte 4,295,424,000
    recording::write(name, 1);
    {
        vcore::file sparse(name, OPEN_EXISTING);
        ASSERT_TRUE(sparse.open(nullptr) && sparse.seek(144384ull * distant) && sparse.truncate());
    }
    recording::append(name, distant, 20);
    dvFrameLoad loader;
    ASSERT_TRUE(loader.init(name, distant + 2, distant + 1000, 8));
    EXPECT_EQ(loader.outPoint(), distant + 18);
    for (unsigned long long k = 0; k < 20; ++k) {
        EXPECT_TRUE(arrives(loader, distant + 2 + k % 17)) << k;
    }
    recording::append(name, distant + 20, 10);
    ASSERT_TRUE(loader.init(name, distant + 24, distant + 27, 8)) << "what was written meanwhile";
    EXPECT_TRUE(arrives(loader, distant + 25));
    loader.done();
    DeleteFileW(name);
}

TEST(FrameLoader, ReadsAheadInTheDirectionOfPlayAndOfAJump) {
    recording::write(name, 60);
    vvideo::dvFrame frame(samples::palSize, nullptr);
    dvFrameLoad loader;
    ASSERT_TRUE(loader.init(name, 10, 49, 20));
    EXPECT_TRUE(readsAhead(loader, 20, [&] { loader.get(&frame, 21); }, {22, 23, 24, 25, 26, 27}));
    EXPECT_TRUE(readsAhead(loader, 12, [&] { loader.get(&frame, 11); }, {10, 49, 48}));
    ASSERT_TRUE(loader.init(name, 0, 49, 8));
    EXPECT_TRUE(readsAhead(loader, 3, [&] { loader.expect(40); }, {40}))
        << "a seek would be shown one tick later";
    dvFrameLoad small;
    ASSERT_TRUE(small.init(name, 10, 49, 10));
    const auto turn = [&] {
        small.done(); // what an earlier try has left in the ring must not help
        EXPECT_TRUE(small.init(name, 10, 49, 10));
        for (unsigned long long number = 44; number > 31; --number) {
            small.get(&frame, number);
            Sleep(20);
        }
        small.get(&frame, 33);
        small.get(&frame, 34);
    };
    EXPECT_TRUE(readsAhead(small, 44, turn, {35, 36, 37, 38}))
        << "play that has turned round would catch the loader behind it";
    const auto changeRange = [&] {
        EXPECT_TRUE(small.init(name, 0, 9, 10) && arrives(small, 5) && small.init(name, 30, 49, 10));
    };
    EXPECT_TRUE(readsAhead(small, 40, changeRange, {30, 31, 32}))
        << "the start of a new range is loaded before it is asked for";
}

TEST(FrameLoader, KeepsTheFileForTheNextRange) {
    recording::write(name, 60);
    dvFrameLoad loader;
    ASSERT_TRUE(loader.init(name, 0, 9, 50));
    EXPECT_TRUE(loader.loaded(L"FRAME_loader_TEST.dv", 0, 9));
    EXPECT_TRUE(arrives(loader, 9));
    EXPECT_TRUE(loader.init(name, 0, 9, 50));
    vvideo::dvFrame frame(samples::palSize, nullptr);
    EXPECT_TRUE(loader.get(&frame, 9)) << "the same range has not been reloaded";
    ASSERT_TRUE(loader.init(name, 30, 200, 50));
    EXPECT_EQ(loader.outPoint(), 58u) << "clamped as the first range is";
    EXPECT_TRUE(arrives(loader, 40));
    recording::append(name, 60, 20);
    ASSERT_TRUE(loader.init(name, 30, 200, 50));
    EXPECT_EQ(loader.outPoint(), 78u);
    EXPECT_TRUE(arrives(loader, 75)) << "written after the file was opened";
    EXPECT_FALSE(loader.init(L"no such file.dv", 0, 9, 50));
    EXPECT_TRUE(loader.loaded(name, 30, 78) && loader.get(&frame, 75)) << "a refused range costs nothing";
}

TEST(FrameLoader, RepeatsTheLastFrameBehindTheEnd) {
    recording::write(name, 0);
    dvFrameLoad loader;
    ASSERT_TRUE(loader.init(name, 0, 99, 50)) << "nothing yet, so nothing to clamp to";
    recording::append(name, 0, 10);
    vvideo::dvFrame frame(samples::palSize, nullptr);
    const auto shows = [&](unsigned long long number, std::uint32_t seed) {
        return samples::eventually([&] { return loader.get(&frame, number); }) &&
               samples::holds(frame.data(), seed);
    };
    EXPECT_TRUE(shows(50, 9)) << "the last one under the number asked for";
    {
        const vcore::handle writer(CreateFileW(name, GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                               nullptr, OPEN_EXISTING, 0, nullptr));
        ASSERT_TRUE(writer);
        loader.get(&frame, 10);
        Sleep(100);
        EXPECT_FALSE(loader.get(&frame, 10)) << "it may still be written";
    }
    EXPECT_TRUE(shows(10, 9)) << "nobody writes it any more";
    EXPECT_FALSE(loader.get(&frame, ~0ull)) << "an empty slot has no number";
}

TEST(FrameLoader, LoadsARangeOnceWhenItShallNotLoop) {
    struct : dvFrameLoad {
        void run() override {
            setEndless(false);
            dvFrameLoad::run();
        }
    } loader;
    recording::write(name, 40);
    ASSERT_TRUE(loader.init(name, 10, 29, 50));
    EXPECT_TRUE(samples::eventually([&] { return loader.finished(); }));
    vvideo::dvFrame frame(samples::palSize, nullptr);
    for (std::uint32_t k = 10; k < 30; ++k) {
        EXPECT_TRUE(loader.get(&frame, k) && samples::holds(frame.data(), k)) << k;
    }
    loader.done();
}

TEST(FrameLoader, AnswersBadFilesAndRanges) {
    vvideo::dvFrame frame(samples::palSize, nullptr);
    dvFrameLoad loader;
    EXPECT_FALSE(loader.init(L"no such file.dv", 0, 9, 50));
    EXPECT_FALSE(loader.init(nullptr, 0, 9, 50));
    recording::write(name, 1);
    EXPECT_FALSE(loader.init(name, 0, 9, 50)) << "one frame leaves no range";
    EXPECT_FALSE(loader.loaded(name, 0, 0));
    recording::write(name, 0);
    EXPECT_TRUE(loader.init(name, 0, 9, 50)) << "nothing yet is not an error";
    EXPECT_FALSE(loader.get(&frame, 0));
    loader.done();
    recording::write(name, 20);
    EXPECT_TRUE(loader.init(name, 9, 3, 50)) << "a range that is no range";
    EXPECT_FALSE(loader.get(&frame, 5));
    EXPECT_FALSE(loader.get(nullptr, 5));
    loader.done();
    EXPECT_TRUE(loader.init(name, 19, 1000, 50)) << "clamped before the final frame";
    EXPECT_EQ(loader.inPoint(), 18u);
    EXPECT_EQ(loader.outPoint(), 18u);
    EXPECT_TRUE(arrives(loader, 18));
    loader.done();
    vvideo::dvMediaType type;
    EXPECT_FALSE(loader.getType(type));
}

TEST(FrameLoader, PlaysAnAviFileThatGrows) {
    constexpr wchar_t avi[] = L"frame_loader_test.avi";
    const avi::File built({.frames = 40, .frameSize = samples::palSize, .index = avi::Index::Standard});
    const auto sizeWith = [&](size_t frames) { return built.frameOffsets[frames] + 1000; };
    const auto begin = [&](size_t frames) { avi::File::write(avi, built.bytes.substr(0, sizeWith(frames))); };
    // Appended, as a writer does: a reader that saw a file made anew might have seen it while it was empty.
    const auto grow = [&](size_t from, size_t to) {
        std::ofstream(std::filesystem::path(avi), std::ios::binary | std::ios::app)
            << built.bytes.substr(sizeWith(from), sizeWith(to) - sizeWith(from));
    };
    vvideo::dvMediaType type;
    dvFrameLoad loader;
    begin(1);
    EXPECT_FALSE(dvFrameLoad::playable(avi)) << "one frame leaves no range";
    begin(0);
    EXPECT_TRUE(dvFrameLoad::playable(avi));
    ASSERT_TRUE(loader.init(avi, 0, 9, 8)) << "nothing yet is not an error";
    ASSERT_TRUE(loader.getType(type));
    EXPECT_EQ(type.frameSize(), samples::palSize);
    grow(0, 8);
    EXPECT_TRUE(arrives(loader, 7)) << "written after the file was opened";
    grow(8, 39);
    ASSERT_TRUE(loader.init(avi, 30, 100, 8));
    EXPECT_EQ(loader.outPoint(), 37u);
    EXPECT_TRUE(arrives(loader, 37));
}

TEST(FrameLoader, GoesOnBehindAviFramesOfOtherSizes) {
    constexpr wchar_t avi[] = L"frame_loader_odd.avi";
    avi::File built({.index = avi::Index::None});
    built.set(built.frameOffsets[2] + 4, 60000);
    const riff::ChunkHeader rest{riff::fourcc("JUNK"), 120000 - 60000 - 8};
    std::memcpy(&built.bytes[built.frameOffsets[2] + 60008], &rest, sizeof(rest));
    built.save(avi);
    dvFrameLoad loader;
    ASSERT_TRUE(loader.init(avi, 0, 4, 5));
    vvideo::dvFrame frame(samples::ntscSize, nullptr);
    ASSERT_TRUE(samples::eventually([&] { return loader.get(&frame, 2); }));
    EXPECT_EQ(std::memcmp(frame.data(), samples::bytes(2, 60000).data(), 60000), 0);
    EXPECT_EQ(std::count(frame.data() + 60000, frame.data() + 120000, 0), 60000);
    ASSERT_TRUE(samples::eventually([&] { return loader.get(&frame, 3); }));
    EXPECT_TRUE(samples::holds(frame.data(), 3, samples::ntscSize));
}

/// What the engine reads from, counted, and made to fail or to stand still.
struct Disk {
    static inline std::atomic<DWORD> error;
    static inline std::atomic<DWORD> quick; ///< the only thread that is served while it stands still; 0: all
    static inline std::atomic<int> reads, waiting;

    Disk() { error = quick = 0, reads = waiting = 0; }
    ~Disk() { quick = 0; }

private:
    static BOOL WINAPI read(HANDLE file, void* to, DWORD bytes, DWORD* got, OVERLAPPED* place) {
        for (++reads; quick != 0 && quick != GetCurrentThreadId(); Sleep(5)) {
            waiting = 1;
        }
        return error == 0 ? ReadFile(file, to, bytes, got, place) : (SetLastError(error), FALSE);
    }
    ImportPatch patch_{engineModule(), "ReadFile", reinterpret_cast<void*>(&read)};
};

bool tells(dvFrameLoad& loader, const play_error& expected) {
    return samples::eventually([&] { return loader.unreadable() == expected; });
}

TEST(FrameLoader, TellsWhatCannotBeReadAndGoesOnWhenItCan) {
    constexpr wchar_t avi[] = L"frame_loader_cut.avi";
    const avi::File built({.frames = 40, .frameSize = samples::palSize, .index = avi::Index::Standard});
    recording::write(name, 40);
    const std::string raw = avi::File::read(name);
    vvideo::dvFrame frame(samples::palSize, nullptr);
    for (const bool isAvi : {false, true}) {
        SCOPED_TRACE(isAvi ? "avi" : "raw");
        const wchar_t* const file = isAvi ? avi : name;
        const std::string& whole = isAvi ? built.bytes : raw;
        const size_t cut = isAvi ? built.frameOffsets[20] + 99 : 20 * recording::recordSize + 99;
        avi::File::write(file, whole);
        dvFrameLoad loader;
        Disk disk;
        ASSERT_TRUE(loader.init(file, 5, 29, 6));
        ASSERT_TRUE(arrives(loader, 8));
        EXPECT_TRUE(tells(loader, {}));
        recording::resize(file, cut);
        EXPECT_FALSE(loader.get(&frame, 25));
        EXPECT_TRUE(tells(loader, {20, 10, ERROR_HANDLE_EOF})) << "and not the ones behind the range";
        disk.reads = 0;
        Sleep(1000);
        EXPECT_LE(disk.reads, 10);
        EXPECT_TRUE(arrives(loader, 12)) << "what is left can be played";
        EXPECT_FALSE(loader.loaded(file, 5, 29)) << "it is to be opened anew";
        avi::File::write(file, whole);
        EXPECT_TRUE(arrives(loader, 25));
        EXPECT_TRUE(tells(loader, {}));
        disk.error = ERROR_CRC;
        EXPECT_FALSE(loader.get(&frame, 17));
        EXPECT_TRUE(tells(loader, {17, 1, ERROR_CRC}));
        disk.error = ERROR_SUCCESS;
        EXPECT_TRUE(arrives(loader, 17) && tells(loader, {}));
        avi::File::write(file, std::string(whole.size(), 'x')); // another file, written over this one
        EXPECT_FALSE(loader.get(&frame, 6));
        EXPECT_TRUE(
            tells(loader, {6, 1, static_cast<DWORD>(isAvi ? ERROR_INVALID_DATA : ERROR_FILE_INVALID)}));
    }
}

TEST(FrameLoader, ADiskThatStandsStillHoldsNobodyUp) {
    recording::write(name, 40);
    Disk disk;
    dvFrameLoad loader;
    ASSERT_TRUE(loader.init(name, 0, 20, 6));
    ASSERT_TRUE(arrives(loader, 3));
    const auto standStill = [&](unsigned long long frame) {
        vvideo::dvFrame ignored(samples::palSize, nullptr);
        disk.waiting = 0;
        disk.quick = GetCurrentThreadId();
        loader.get(&ignored, frame);
        return samples::eventually([&] { return disk.waiting != 0; });
    };
    ASSERT_TRUE(standStill(15));
    EXPECT_LT(samples::elapsed_ms([&] { EXPECT_TRUE(loader.init(name, 5, 25, 6)); }), 10000u);
    disk.quick = 0;
    EXPECT_TRUE(arrives(loader, 7));
    ASSERT_TRUE(standStill(20));
    EXPECT_EQ(loader.unreadable().frames, 0u) << "slow is not broken";
    EXPECT_LT(samples::elapsed_ms([&] { loader.done(); }), 10000u);
}

TEST(FrameLoader, TakesAsMuchMemoryAsThereIs) {
    recording::write(name, 4);
    recording::resize(name, 15000ull * recording::recordSize);
    dvFrameLoad loader;
    // More than a 32-bit process can have; a 64-bit one would take it.
    ASSERT_TRUE(loader.init(name, 0, sizeof(void*) == 4 ? 14000 : 140, 0xFFFFFFFF));
    EXPECT_TRUE(arrives(loader, 2));
    loader.done();
    DeleteFileW(name);
}

TEST(FrameLoader, TheBreakerSlowsLoading) {
    recording::write(name, 40);
    dvFrameLoad loader;
    ASSERT_TRUE(loader.init(name, 0, 30, 31));
    loader.setBreaker(20);
    const ULONGLONG begin = GetTickCount64();
    for (unsigned long long k = 0; k <= 30; ++k) {
        ASSERT_TRUE(arrives(loader, k));
    }
    EXPECT_GE(GetTickCount64() - begin, 20u * 15) << "half of the range had to be read at 20 ms a frame";
    loader.setBreaker(60000);
    loader.init(name, 5, 15, 31);
    Sleep(100);
    EXPECT_LT(samples::elapsed_ms([&] { loader.done(); }), 20000u) << "the sleep ends with the loader";
}

} // namespace
