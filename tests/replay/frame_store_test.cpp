#include "marvo.h"

#include "tests/support/avi_builder.h"
#include "tests/support/faulty_disk.h"
#include "tests/support/rounds.h"
#include "tests/video/fakes.h"

#include <gtest/gtest.h>

#include <atomic>
#include <filesystem>
#include <sstream>
#include <string>
#include <vector>

namespace {

constexpr wchar_t name[] = L"frame_store_test.dv";

constexpr wchar_t aviName[] = L"Frame_Store_Test.AVI";

/// Expects a recording whose frames hold the bytes of seeds first, first + 1, ...
void expectRecorded(std::uint32_t first, unsigned long frames, const wchar_t* file = name) {
    if (file == aviName) {
        EXPECT_EQ(avi::framesRead(aviName, samples::palSize, first), static_cast<long>(frames));
        return;
    }
    dvPlayFile recording;
    ASSERT_TRUE(recording.open(file, 0));
    ASSERT_EQ(recording.frameCount(), frames);
    for (unsigned long k = 0; k < frames; ++k) {
        ASSERT_TRUE(recording.readFrame());
        EXPECT_TRUE(samples::holds(recording.data() + 8, first + k)) << k;
    }
}

/// What became of a recording's frames.
std::string counts(const dvFrameStore& store) {
    const record_status s = store.recordStatus();
    std::ostringstream text;
    text << s.taken << " taken, " << s.written << " written, " << s.lost << " lost, " << s.failed
         << " failed, " << s.beyondLimit << " beyond" << (s.waiting() ? ", some waiting" : "")
         << (s.recording ? ", recording" : "") << (s.complete ? ", complete" : "")
         << (s.failing ? ", failing" : "") << (s.behind ? ", behind" : "");
    return text.str();
}

/// A store with a ring, and what it is fed from.
struct Ring {
    samples::Source source;
    dvFrameStore store;

    explicit Ring(unsigned long frames) { EXPECT_TRUE(store.init(samples::palSize, 400000, frames)); }
    /// Captures frames `first` to `last`.
    bool capture(std::uint32_t first, std::uint32_t last) {
        while (first <= last && source.addTo(store, first)) {
            ++first;
        }
        return first > last;
    }
};

/// The same on a disk that fails when it is told to, and what the store tells of its recordings.
struct Faulty : vcore::vObject, Ring {
    FaultyDisk disk;
    std::string news;

    explicit Faulty(unsigned long ringFrames) : Ring(ringFrames) {
        store.connect(L"recError", this, this, &Faulty::onRecError);
        store.connect(L"recEnd", this, this, &Faulty::onRecEnd);
    }
    void onRecError(unsigned long long frame, unsigned long long count, unsigned long error,
                    record_event event) {
        std::ostringstream text;
        text << static_cast<int>(event) << " at " << frame << " of " << count << " by " << error << "; ";
        news += text.str();
    }
    void onRecEnd() { news += "end; "; }
    using Ring::capture;
    /// The same, and waits until `counter` stands at `value`.
    bool capture(std::uint32_t first, std::uint32_t last, std::uint64_t record_status::*counter,
                 std::uint64_t value) {
        return capture(first, last) &&
               samples::eventually([&] { return store.recordStatus().*counter == value; });
    }
    /// Captures a frame whose write hangs.
    bool hangs(std::uint32_t seed) {
        disk.hanging = false;
        disk.fault = FaultyDisk::hangs;
        return capture(seed, seed) && samples::eventually([&] { return disk.hanging.load(); });
    }
};

TEST(FrameStore, NumbersFramesAndKeepsTheNewest) {
    samples::Source source;
    dvFrameStore store;
    EXPECT_FALSE(source.addTo(store, 0)) << "no ring yet";
    EXPECT_FALSE(store.init(samples::palSize, 400000, 0) || store.startRecord(name)) << "a ring needs a slot";
    ASSERT_TRUE(store.init(samples::palSize, 400000, 5));
    vvideo::dvFrame frame(samples::palSize, nullptr);
    EXPECT_FALSE(store.findFrame(~0ull) || store.get(&frame, ~0ull)) << "an empty slot has no number";
    for (std::uint32_t k = 0; k < 12; ++k) {
        ASSERT_TRUE(source.addTo(store, k) && store.lastFrame() == k + 1);
    }
    EXPECT_FALSE(store.get(&frame, 6)) << "frame 11 took its slot";
    for (std::uint32_t k = 7; k < 12; ++k) {
        ASSERT_TRUE(store.get(&frame, k));
        EXPECT_TRUE(samples::holds(frame.data(), k));
        EXPECT_EQ(store.findFrame(k)->id(), k);
    }
    EXPECT_FALSE(store.get(&frame, 12));
    EXPECT_FALSE(store.get(static_cast<vvideo::dvFrame*>(nullptr), 11));
    EXPECT_FALSE(store.add(nullptr));
    EXPECT_EQ(store.writtenFrame(), 0u) << "nobody writes";
    IMediaSample* sample = source.sample(99);
    ASSERT_TRUE(store.get(sample, 11));
    BYTE* data = nullptr;
    sample->GetPointer(&data);
    EXPECT_TRUE(samples::holds(data, 11));
    REFERENCE_TIME time = 0;
    EXPECT_EQ(sample->GetTime(&time, &time), VFW_E_SAMPLE_TIME_NOT_SET) << "for immediate display";
    EXPECT_TRUE(sample->IsSyncPoint() == S_OK && sample->IsDiscontinuity() == S_OK);
    sample->Release();
    store.done();
    EXPECT_TRUE(store.lastFrame() == ~0ull && store.writtenFrame() == ~0ull);
}

/// A sample that has a look around while it is being copied.
struct Watched : fake::Sample {
    using Sample::Sample;
    std::function<void()> duringCopy;
    STDMETHODIMP GetPointer(BYTE** out) override {
        duringCopy();
        return Sample::GetPointer(out);
    }
};

TEST(FrameStore, PublishesANumberWithItsContents) {
    dvFrameStore store;
    ASSERT_TRUE(store.init(samples::palSize, 400000, 2));
    Watched sample(samples::palSize);
    int copies = 0;
    for (unsigned long long k = 0; k < 5; ++k) {
        sample.duringCopy = [&] {
            ++copies;
            EXPECT_EQ(store.lastFrame(), k);
            EXPECT_EQ(store.findFrame(k), nullptr) << "not there yet";
            EXPECT_FALSE(k > 1 && store.findFrame(k - 2)) << "being overwritten";
        };
        ASSERT_TRUE(store.add(&sample));
        EXPECT_NE(store.findFrame(k), nullptr);
    }
    EXPECT_EQ(copies, 5);
}

TEST(FrameStore, TakesFramesFromMemoryAndSaysWhoseNumbersTheyHave) {
    dvFrameStore store;
    EXPECT_FALSE(store.add(samples::bytes(0).data(), samples::palSize)) << "no ring yet";
    ASSERT_TRUE(store.init(samples::palSize, 400000, 5));
    EXPECT_FALSE(store.add(nullptr, samples::palSize) || store.add(samples::bytes(0).data(), 120000));
    EXPECT_EQ(store.lastFrame(), 0u) << "a refused frame uses no number up";
    vvideo::dvFrame frame(samples::palSize, nullptr);
    const auto path = std::filesystem::absolute(name).wstring();
    const auto holdsFirst = [&](const wchar_t* file) { return store.get(&frame, 0, file); };
    const auto capture = [&](std::uint32_t seed) {
        return store.add(samples::bytes(seed).data(), samples::palSize) && store.get(&frame, 0) &&
               samples::holds(frame.data(), seed);
    };
    EXPECT_TRUE(capture(1) && !holdsFirst(path.c_str()) && !holdsFirst(L"") && !holdsFirst(nullptr));
    ASSERT_TRUE(store.startRecord(name));
    EXPECT_TRUE(capture(2) && holdsFirst(path.c_str()));
    store.stopRecord();
    expectRecorded(2, 1);
    EXPECT_TRUE(holdsFirst(path.c_str())) << "the recording is over, but the numbers are still its own";
    EXPECT_FALSE(holdsFirst((path + L"x").c_str()));
    store.flush();
    EXPECT_TRUE(capture(3) && !holdsFirst(path.c_str())) << "numbers that no file has";
}

TEST(FrameStore, KnowsTheFrameRateAndRecordsSizeAndDuration) {
    dvFrameStore store;
    EXPECT_EQ(store.framesPerSecond(), 30u);
    for (const auto& [size, rate] : {std::pair(144000ul, 25ul), {120000ul, 30ul}, {143999ul, 30ul}}) {
        ASSERT_TRUE(store.init(size, 400000, 2));
        EXPECT_EQ(store.framesPerSecond(), rate) << size;
    }
    samples::Source source(samples::ntscSize);
    ASSERT_TRUE(store.init(samples::ntscSize, 333667, 10));
    ASSERT_TRUE(store.startRecord(name));
    ASSERT_TRUE(source.addTo(store, 1));
    store.stopRecord();
    dvPlayFile recording;
    ASSERT_TRUE(recording.open(name, 0));
    EXPECT_EQ(recording.frameSize(), samples::ntscSize);
    EXPECT_EQ(recording.type().timePerFrame(), 333667);
    for (const auto& [size, frames] : {std::pair(0xFFFFFFFFul, 2ul), {576001, 2}, {144000, 0xFFFFFFFF}}) {
        EXPECT_FALSE(store.init(size, 400000, frames) || store.initialized()) << size;
    }
    EXPECT_TRUE(store.init(576000, 400000, 2)) << "100 Mbit/s";
}

struct FarStore : dvFrameStore {
    using dvFrameStore::continueAt;
};

TEST(FrameStore, RecordsFramesWithNumbersBehind32BitsUpToTheLimit) {
    constexpr unsigned long long distant = (1ull << 32) - 4;
    struct Listener : vcore::vObject {
        std::atomic<unsigned long long> written = 0;
        void onPoolInfo(unsigned long long, unsigned long long position) { written = position; }
    } listener;
    for (const wchar_t* file : {name, aviName}) {
        FarStore store;
        store.connect(L"poolInfo", &listener, &listener, &Listener::onPoolInfo);
        ASSERT_TRUE(store.init(samples::palSize, 400000, 20));
        store.setMaxFilesize(static_cast<long long>(distant + 7));
        ASSERT_TRUE(store.startRecord(file));
        store.continueAt(distant);
        for (std::uint32_t k = 0; k < 9; ++k) {
            ASSERT_TRUE(store.add(samples::bytes(k).data(), samples::palSize));
        }
        EXPECT_EQ(store.lastFrame(), distant + 9);
        vvideo::dvFrame frame(samples::palSize, nullptr);
        EXPECT_TRUE(store.get(&frame, distant + 6) && samples::holds(frame.data(), 6));
        EXPECT_FALSE(store.get(&frame, 2)) << "as a 32-bit number it would be frame 6";
        store.stopRecord();
        EXPECT_EQ(store.writtenFrame(), distant + 9);
        EXPECT_EQ(counts(store), "9 taken, 7 written, 0 lost, 0 failed, 2 beyond, complete");
        EXPECT_GE(listener.written, distant);
        expectRecorded(0, 7, file);
    }
}

TEST(FrameStore, WritesEveryFrameAndBeginsEachRecordingAtZero) {
    Ring f(50);
    for (std::uint32_t first = 0; first < 500; first += 100) {
        const wchar_t* file = first % 200 == 0 ? name : aviName;
        ASSERT_TRUE(f.capture(999, 999) && f.store.startRecord(file));
        EXPECT_EQ(f.store.lastFrame(), 0u);
        EXPECT_EQ(f.store.findFrame(0), nullptr) << "no frame of the time before";
        ASSERT_TRUE(f.capture(first, first + 29));
        f.store.stopRecord();
        EXPECT_EQ(f.store.writtenFrame(), 30u) << "a stop writes what was captured by then";
        EXPECT_EQ(counts(f.store), "30 taken, 30 written, 0 lost, 0 failed, 0 beyond, complete");
        EXPECT_TRUE(f.store.findFrame(29)) << "the ring outlives the recording";
        expectRecorded(first, 30, file);
    }
}

TEST(FrameStore, ARefusedRecordingLosesNothing) {
    Ring f(50);
    ASSERT_TRUE(f.store.startRecord(name) && f.capture(5, 5));
    for (const wchar_t* refused :
         {static_cast<const wchar_t*>(nullptr), L"no such folder\\x.dv", L"", L"no such folder\\x.AVI.dv"}) {
        EXPECT_FALSE(f.store.startRecord(refused));
        const record_status status = f.store.recordStatus();
        EXPECT_TRUE(status.firstError == ERROR_CANNOT_MAKE && *status.firstErrorText);
        EXPECT_TRUE(!f.store.running() && f.store.lastFrame() == 1);
        EXPECT_EQ(std::wstring(f.store.fileName()), name);
    }
    expectRecorded(5, 1);
    EXPECT_TRUE(f.store.startRecord(L".avi at the beginning is no AVI file"));
}

/// Holds the writer up in its first report until `go`, and notes backlog and priority of every report.
struct Watcher : vcore::vObject {
    vcore::event go{1, nullptr};
    std::atomic<bool> reached = false;
    std::vector<std::pair<unsigned long, int>> seen;
    void onPoolInfo(unsigned long long last, unsigned long long written, unsigned long frames) {
        EXPECT_EQ(frames, 30u);
        seen.emplace_back(static_cast<unsigned long>(last - written), GetThreadPriority(GetCurrentThread()));
        reached = true;
        go.wait(30000);
    }
};

TEST(FrameStore, RaisesItsPriorityWithTheBacklog) {
    Watcher watcher;
    Ring f(30);
    f.store.connect(L"poolInfo", &watcher, &watcher, &Watcher::onPoolInfo);
    ASSERT_TRUE(f.store.startRecord(name) && f.capture(0, 0));
    ASSERT_TRUE(samples::eventually([&] { return watcher.reached.load(); }));
    ASSERT_TRUE(f.capture(1, 24));
    watcher.go.set();
    EXPECT_TRUE(samples::eventually([&] { return f.store.writtenFrame() == 25; }));
    f.store.done();
    ASSERT_EQ(watcher.seen.size(), 25u);
    EXPECT_EQ(watcher.seen[1], std::pair(24ul, THREAD_PRIORITY_NORMAL)) << "unchanged until there is need";
    // A report shows what the one before it has led to.
    for (size_t i = 2; i < watcher.seen.size(); ++i) {
        const unsigned long backlog = watcher.seen[i - 1].first;
        EXPECT_EQ(watcher.seen[i].second, backlog > 15 ? 2 : backlog > 10 ? 1 : -1) << "at report " << i;
    }
}

TEST(FrameStore, AStalledDiskHoldsUpNobodyAndLosesNothingThatIsWritten) {
    Faulty f(5);
    ASSERT_TRUE(f.store.startRecord(name) && f.capture(6, 6, &record_status::written, 1) && f.hangs(7));
    ASSERT_TRUE(f.capture(8, 8));
    f.store.done();
    ASSERT_TRUE(f.store.running()) << "held up for longer than it is waited for";
    EXPECT_EQ(counts(f.store), "3 taken, 1 written, 0 lost, 0 failed, 0 beyond, some waiting, recording");
    f.disk.fault = FaultyDisk::none;
    EXPECT_TRUE(samples::eventually([&] { return f.store.finished(); }));
    EXPECT_EQ(counts(f.store), "3 taken, 2 written, 1 lost, 0 failed, 0 beyond, complete")
        << "the ring is gone";
    expectRecorded(6, 2);
    ASSERT_TRUE(f.store.init(samples::palSize, 400000, 5) &&
                f.store.startRecord(L"frame_store_test.killed.dv") && f.hangs(9));
    EXPECT_TRUE(f.store.startRecord(name)) << "kills the writer";
    EXPECT_EQ(f.news, "end; end; ");
    f.disk.fault = FaultyDisk::none;
    ASSERT_TRUE(f.capture(10, 13));
    f.store.stopRecord();
    expectRecorded(10, 4);
    EXPECT_TRUE(DeleteFileW(L"frame_store_test.killed.dv"));
}

TEST(FrameStore, WhatTheDiskRefusesIsCountedAndTold) {
    Faulty f(50);
    for (const wchar_t* file : {name, aviName}) {
        for (const FaultyDisk::Fault fault : {FaultyDisk::full, FaultyDisk::takesHalf}) {
            f.news.clear();
            ASSERT_TRUE(f.store.startRecord(file) && f.capture(0, 2, &record_status::written, 3));
            f.disk.fault = fault;
            ASSERT_TRUE(f.capture(91, 94, &record_status::failed, 4));
            EXPECT_EQ(counts(f.store), "7 taken, 3 written, 0 lost, 4 failed, 0 beyond, recording, failing");
            f.disk.fault = FaultyDisk::none;
            ASSERT_TRUE(f.capture(3, 4, &record_status::written, 5));
            f.disk.fault = fault;
            ASSERT_TRUE(f.capture(95, 95, &record_status::failed, 5));
            f.store.stopRecord();
            f.disk.fault = FaultyDisk::none;
            EXPECT_EQ(f.news, std::string("1 at 3 of 1 by 112; 2 at 7 of 4 by 0; 1 at 9 of 1 by 112; ") +
                                  (file == aviName ? "5 at 10 of 5 by 112; end; " : "end; "));
            EXPECT_EQ(counts(f.store), std::string("10 taken, 5 written, 0 lost, 5 failed, 0 beyond") +
                                           (file == aviName ? ", failing" : ", complete, failing"));
            EXPECT_TRUE(f.store.recordStatus().firstError == ERROR_DISK_FULL &&
                        *f.store.recordStatus().firstErrorText);
            expectRecorded(0, 5, file);
        }
    }
    ULARGE_INTEGER room{};
    ASSERT_TRUE(GetDiskFreeSpaceExW(nullptr, &room, nullptr, nullptr));
    EXPECT_NEAR(static_cast<double>(f.store.recordStatus().driveSpace_frames) * 144384,
                static_cast<double>(room.QuadPart), 2e9);
}

TEST(FrameStore, WhatTheRingGoesOverIsCountedAndTold) {
    Faulty f(5);
    ASSERT_TRUE(f.store.startRecord(name) && f.hangs(0) && f.capture(1, 14, &record_status::taken, 15));
    EXPECT_EQ(counts(f.store), "15 taken, 0 written, 0 lost, 0 failed, 0 beyond, some waiting, recording");
    f.disk.fault = FaultyDisk::none;
    ASSERT_TRUE(samples::eventually([&] { return f.store.recordStatus().waiting() == 0; }));
    EXPECT_EQ(counts(f.store), "15 taken, 6 written, 9 lost, 0 failed, 0 beyond, recording");
    ASSERT_TRUE(f.hangs(15) && f.capture(16, 17, &record_status::taken, 18));
    f.store.flush();
    f.disk.fault = FaultyDisk::none;
    ASSERT_TRUE(f.capture(18, 18));
    f.store.stopRecord();
    EXPECT_EQ(counts(f.store), "19 taken, 8 written, 11 lost, 0 failed, 0 beyond, complete")
        << "two were thrown away";
    EXPECT_EQ(f.news, "3 at 1 of 1 by 170; 4 at 14 of 9 by 0; end; ");
    dvPlayFile file;
    ASSERT_TRUE(file.open(name, 0));
    for (const std::uint32_t seed : {0, 11, 12, 13, 14, 10, 11, 12, 13, 14, 10, 11, 12, 13, 14, 15, 18}) {
        EXPECT_TRUE(file.readFrame() && samples::holds(file.data() + 8, seed)) << seed;
    }
    EXPECT_FALSE(file.readFrame());
}

void* WINAPIV noMemory(size_t, size_t) {
    return nullptr;
}

HANDLE WINAPI noThread(SECURITY_ATTRIBUTES*, SIZE_T, LPTHREAD_START_ROUTINE, void*, DWORD, DWORD*) {
    SetLastError(ERROR_NOT_ENOUGH_MEMORY);
    return nullptr;
}

std::atomic<DWORD> poorThread;

void makePoor() {
    poorThread = GetCurrentThreadId();
}

/// The writer gets no memory for texts; the run-time library needs some to throw.
void* WINAPIV noMemoryForTexts(size_t bytes) {
    return GetCurrentThreadId() == poorThread && bytes > 24 && bytes < 60 ? nullptr : std::malloc(bytes);
}

TEST(FrameStore, WithoutMemoryItRecordsNothingOrLessButLives) {
    if (onGuardedHeap()) {
        GTEST_SKIP() << "its memory cannot be made to fail";
    }
    Faulty f(50);
    ASSERT_TRUE(f.capture(1, 1));
    for (const auto& [call, refusal] : {std::pair("_aligned_malloc", reinterpret_cast<void*>(&noMemory)),
                                        {"CreateThread", reinterpret_cast<void*>(&noThread)}}) {
        const ImportPatch patch(engineModule(), call, refusal);
        for (const wchar_t* file : {name, aviName}) {
            DeleteFileW(file);
            EXPECT_FALSE(f.store.startRecord(file)) << call;
            EXPECT_EQ(GetFileAttributesW(file), INVALID_FILE_ATTRIBUTES);
            EXPECT_NE(*f.store.recordStatus().firstErrorText, L'\0');
            EXPECT_TRUE(f.store.finished() && f.store.lastFrame() == 1 && f.store.findFrame(0));
        }
    }
    poorThread = 0;
    const ImportPatch patch(engineModule(), "malloc", reinterpret_cast<void*>(&noMemoryForTexts));
    f.store.connectFunc(L"poolInfo", &makePoor);
    ASSERT_TRUE(f.store.startRecord(aviName));
    f.disk.fault = FaultyDisk::full;
    EXPECT_TRUE(f.capture(99, 99, &record_status::failed, 1));
    EXPECT_EQ(f.store.recordStatus().firstError, ERROR_NOT_ENOUGH_MEMORY) << "for the reason";
    f.disk.fault = FaultyDisk::none;
    ASSERT_TRUE(f.capture(0, 1, &record_status::taken, 3));
    f.store.stopRecord();
    EXPECT_EQ(counts(f.store), "3 taken, 2 written, 0 lost, 1 failed, 0 beyond, complete");
    expectRecorded(0, 2, aviName);
}

TEST(FrameStore, AStopLeavesOutWhatComesLater) {
    struct Camera : vcore::vObject {
        dvFrameStore* store = nullptr;
        const std::vector<unsigned char> frame = samples::bytes(1);
        void onPoolInfo() { store->add(frame.data(), samples::palSize); }
    } camera; // as fast as the disk: for every frame that is written there is another one
    dvFrameStore store;
    camera.store = &store;
    store.setMaxFilesize(4);
    store.connect(L"poolInfo", &camera, &camera, &Camera::onPoolInfo);
    ULONGLONG fastest_ms = ~0ull;
    for (int i = 0; i < 3 && fastest_ms > 900; ++i) {
        ASSERT_TRUE(store.init(samples::palSize, 400000, 30) && store.startRecord(name));
        camera.onPoolInfo();
        ASSERT_TRUE(samples::eventually([&] { return store.writtenFrame() > 10; }));
        fastest_ms = std::min(fastest_ms, samples::elapsed_ms([&] { store.stopRecord(); }));
        EXPECT_LT(store.writtenFrame(), store.lastFrame());
    }
    EXPECT_LE(fastest_ms, 900u) << "the writer is given a second";
}

TEST(FrameStore, AStopRightAfterAStartIsNotLost) {
    dvFrameStore store;
    ASSERT_TRUE(store.init(samples::palSize, 400000, 4));
    std::vector<ULONGLONG> stops;
    for (int i = 0; i < 50; ++i) {
        ASSERT_TRUE(store.startRecord(name));
        stops.push_back(samples::elapsed_ms([&] { store.stopRecord(); }));
        EXPECT_FALSE(store.running());
    }
    EXPECT_LT(samples::median(stops), 900u) << "the writer is given a second";
}

} // namespace
