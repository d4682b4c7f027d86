#include "marvo.h"

#include "tests/support/avi_builder.h"

#include <gtest/gtest.h>

#include <atomic>
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
    ASSERT_TRUE(store.init(samples::palSize, 400000, 5));
    vvideo::dvFrame frame(samples::palSize, nullptr);
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
