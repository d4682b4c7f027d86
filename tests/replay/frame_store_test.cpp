#include "marvo.h"

#include "tests/support/avi_builder.h"
#include "tests/video/fakes.h"

#include <gtest/gtest.h>

#include <atomic>
#include <filesystem>
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

TEST(FrameStore, NumbersFramesAndKeepsTheNewest) {
    samples::Source source;
    dvFrameStore store;
    EXPECT_FALSE(source.addTo(store, 0)) << "no ring yet";
    EXPECT_FALSE(store.init(samples::palSize, 400000, 0) || store.startRecord(name)) << "a ring needs a slot";
    ASSERT_TRUE(store.init(samples::palSize, 400000, 5));
    vvideo::dvFrame frame(samples::palSize, nullptr);
    EXPECT_FALSE(store.findFrame(~0ull) || store.get(&frame, ~0ull)) << "an empty slot has no number";
    for (std::uint32_t k = 0; k < 12; ++k) {
        ASSERT_TRUE(source.addTo(store, k));
        EXPECT_EQ(store.lastFrame(), k + 1);
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
    EXPECT_FALSE(store.init(0xFFFFFFFFul, 400000, 2));
}

TEST(FrameStore, WritesEveryFrameAndBeginsEachRecordingAtZero) {
    samples::Source source;
    dvFrameStore store;
    EXPECT_FALSE(store.startRecord(name)) << "no ring yet";
    ASSERT_TRUE(store.init(samples::palSize, 400000, 50));
    for (std::uint32_t recording = 0; recording < 5; ++recording) {
        const wchar_t* file = recording % 2 == 0 ? name : aviName;
        ASSERT_TRUE(source.addTo(store, 999));
        ASSERT_TRUE(store.startRecord(file));
        EXPECT_EQ(store.lastFrame(), 0u);
        EXPECT_EQ(store.findFrame(0), nullptr) << "no frame of the time before";
        for (std::uint32_t k = 0; k < 30; ++k) {
            ASSERT_TRUE(source.addTo(store, recording * 100 + k));
        }
        store.stopRecord();
        EXPECT_EQ(store.writtenFrame(), 30u) << "a stop writes what was captured by then";
        vvideo::dvFrame frame(samples::palSize, nullptr);
        EXPECT_TRUE(store.get(&frame, 29)) << "the ring outlives the recording";
        expectRecorded(recording * 100, 30, file);
    }
}

TEST(FrameStore, StopsWritingAtTheLimit) {
    samples::Source source;
    dvFrameStore store;
    ASSERT_TRUE(store.init(samples::palSize, 400000, 50));
    store.setMaxFilesize(4);
    for (const wchar_t* file : {name, aviName}) {
        ASSERT_TRUE(store.startRecord(file));
        for (std::uint32_t k = 0; k < 10; ++k) {
            ASSERT_TRUE(source.addTo(store, k));
        }
        EXPECT_TRUE(samples::eventually([&] { return store.writtenFrame() == 10; }));
        store.stopRecord();
        expectRecorded(0, 4, file);
    }
}

TEST(FrameStore, ARefusedRecordingLosesNothing) {
    samples::Source source;
    dvFrameStore store;
    ASSERT_TRUE(store.init(samples::palSize, 400000, 50));
    ASSERT_TRUE(store.startRecord(name));
    ASSERT_TRUE(source.addTo(store, 5));
    for (const wchar_t* refused :
         {static_cast<const wchar_t*>(nullptr), L"no such folder\\x.dv", L"", L"no such folder\\x.AVI.dv"}) {
        EXPECT_FALSE(store.startRecord(refused));
        EXPECT_FALSE(store.running());
        EXPECT_EQ(store.lastFrame(), 1u);
        EXPECT_EQ(std::wstring(store.fileName()), name);
    }
    expectRecorded(5, 1);
    EXPECT_TRUE(store.startRecord(L".avi at the beginning is no AVI file"));
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
    samples::Source source;
    dvFrameStore store;
    ASSERT_TRUE(store.init(samples::palSize, 400000, 30));
    store.connect(L"poolInfo", &watcher, &watcher, &Watcher::onPoolInfo);
    ASSERT_TRUE(store.startRecord(name));
    ASSERT_TRUE(source.addTo(store, 0));
    ASSERT_TRUE(samples::eventually([&] { return watcher.reached.load(); }));
    for (std::uint32_t k = 1; k < 25; ++k) {
        ASSERT_TRUE(source.addTo(store, k));
    }
    watcher.go.set();
    EXPECT_TRUE(samples::eventually([&] { return store.writtenFrame() == 25; }));
    store.done();
    ASSERT_EQ(watcher.seen.size(), 25u);
    EXPECT_EQ(watcher.seen[1], std::pair(24ul, THREAD_PRIORITY_NORMAL)) << "unchanged until there is need";
    // A report shows what the one before it has led to.
    for (size_t i = 2; i < watcher.seen.size(); ++i) {
        const unsigned long backlog = watcher.seen[i - 1].first;
        EXPECT_EQ(watcher.seen[i].second, backlog > 15 ? 2 : backlog > 10 ? 1 : -1) << "at report " << i;
    }
}

TEST(FrameStore, LeavesAFileOnAStalledDiskToItsWriter) {
    constexpr wchar_t pipe[] = L"\\\\.\\pipe\\marvo_frame_store_test"; // as slow as who reads from it
    const vcore::handle disk(
        CreateNamedPipeW(pipe, PIPE_ACCESS_INBOUND, PIPE_TYPE_BYTE, 1, 4096, 4096, 0, nullptr));
    samples::Source source;
    dvFrameStore store;
    ASSERT_TRUE(store.init(samples::palSize, 400000, 5));
    ASSERT_TRUE(store.startRecord(pipe));
    ASSERT_TRUE(source.addTo(store, 7));
    ASSERT_TRUE(samples::eventually([&] { return store.writtenFrame() == 1; }));
    Sleep(100);
    store.done();
    ASSERT_TRUE(store.running()) << "held up for longer than it is waited for";
    std::vector<unsigned char> file(1000000);
    DWORD got = 0, bytes = 0;
    while (ReadFile(disk.get(), file.data() + bytes, 4096, &got, nullptr) && got != 0) {
        bytes += got;
    }
    EXPECT_GE(bytes, samples::palSize + 8u) << "the whole record";
    EXPECT_TRUE(samples::holds(file.data() + 8, 7));
    EXPECT_TRUE(samples::eventually([&] { return store.finished(); }));
    std::vector<std::vector<unsigned char>> frames; // made before, so that most are unwritten at the stop
    for (std::uint32_t seed = 8; seed < 28; ++seed) {
        frames.push_back(samples::bytes(seed));
    }
    ASSERT_TRUE(store.init(samples::palSize, 400000, 30) && store.startRecord(name));
    for (const auto& frame : frames) {
        ASSERT_TRUE(store.add(frame.data(), samples::palSize));
    }
    store.stopRecord();
    expectRecorded(8, 20);
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
