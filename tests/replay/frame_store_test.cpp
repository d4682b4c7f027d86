#include "marvo.h"

#include "tests/support/samples.h"

#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <vector>

namespace {

constexpr wchar_t name[] = L"frame_store_test.dv";

constexpr wchar_t aviName[] = L"Frame_Store_Test.AVI";

/// Expects an AVI recording whose frames hold the bytes of seeds first, first + 1, ...
void expectRecordedAvi(std::uint32_t first, unsigned long frames) {
    dvAVIFile recording;
    ASSERT_TRUE(recording.open(aviName));
    ASSERT_EQ(recording.frames(), frames);
    std::vector<char> slot(recording.getAVIFrameSize());
    for (unsigned long k = 0; k < frames; ++k) {
        ASSERT_TRUE(recording.readFrame(slot.data(), recording.getAVIFrameSize(), k));
        EXPECT_TRUE(samples::holds(reinterpret_cast<unsigned char*>(&slot[8]), first + k)) << k;
    }
}

/// Expects a recording whose frames hold the bytes of seeds first, first + 1, ...
void expectRecorded(std::uint32_t first, unsigned long frames, const wchar_t* file = name) {
    if (file == aviName) {
        expectRecordedAvi(first, frames);
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
    EXPECT_FALSE(store.initialized());
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
}

TEST(FrameStore, FillsSamplesForImmediateDisplay) {
    samples::Source source;
    dvFrameStore store;
    ASSERT_TRUE(store.init(samples::palSize, 400000, 2));
    ASSERT_TRUE(source.addTo(store, 3));
    IMediaSample* sample = source.sample(9);
    ASSERT_TRUE(store.get(sample, 0));
    BYTE* data = nullptr;
    sample->GetPointer(&data);
    EXPECT_TRUE(samples::holds(data, 3));
    REFERENCE_TIME start = 0;
    REFERENCE_TIME stop = 0;
    EXPECT_EQ(sample->GetTime(&start, &stop), VFW_E_SAMPLE_TIME_NOT_SET);
    EXPECT_EQ(sample->IsSyncPoint(), S_OK);
    EXPECT_EQ(sample->IsDiscontinuity(), S_OK);
    sample->Release();
}

TEST(FrameStore, KnowsTheFrameRate) {
    dvFrameStore store;
    EXPECT_EQ(store.framesPerSecond(), 30u);
    for (const auto& [size, rate] : {std::pair(144000ul, 25ul), {120000ul, 30ul}, {143999ul, 30ul}}) {
        ASSERT_TRUE(store.init(size, 400000, 2));
        EXPECT_EQ(store.framesPerSecond(), rate) << size;
    }
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
        EXPECT_EQ(store.writtenFrame(), 0u);
        EXPECT_EQ(store.findFrame(0), nullptr) << "no frame of the time before";
        for (std::uint32_t k = 0; k < 30; ++k) {
            ASSERT_TRUE(source.addTo(store, recording * 100 + k));
        }
        store.stopRecord();
        EXPECT_EQ(store.writtenFrame(), 30u) << "a stop writes what was captured by then";
        vvideo::dvFrame frame(samples::palSize, nullptr);
        EXPECT_TRUE(store.get(&frame, 29)) << "the ring outlives the recording";
        expectRecorded(recording * 100, 30, file);
        EXPECT_EQ(std::wstring(store.fileName()), file) << "the recording that was started last";
    }
}

TEST(FrameStore, RecordsCarryFrameSizeAndDuration) {
    samples::Source source(samples::ntscSize);
    dvFrameStore store;
    ASSERT_TRUE(store.init(samples::ntscSize, 333667, 10));
    ASSERT_TRUE(store.startRecord(name));
    ASSERT_TRUE(source.addTo(store, 1));
    store.stopRecord();
    dvPlayFile recording;
    ASSERT_TRUE(recording.open(name, 0));
    EXPECT_EQ(recording.frameSize(), samples::ntscSize);
    EXPECT_EQ(recording.type().timePerFrame(), 333667);
    ASSERT_TRUE(recording.readFrame());
    EXPECT_TRUE(samples::holds(recording.data() + 8, 1, samples::ntscSize));
}

TEST(FrameStore, StopsWritingAtTheLimit) {
    samples::Source source;
    dvFrameStore store;
    ASSERT_TRUE(store.init(samples::palSize, 400000, 50));
    store.setMaxFilesize(4);
    for (const wchar_t* file : {name, aviName}) {
        ASSERT_TRUE(store.startRecord(file));
        for (std::uint32_t k = 0; k < 10; ++k)
            ASSERT_TRUE(source.addTo(store, k));
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
    for (std::uint32_t k = 1; k < 25; ++k)
        ASSERT_TRUE(source.addTo(store, k));
    watcher.go.set();
    EXPECT_TRUE(samples::eventually([&] { return store.writtenFrame() == 25; }));
    store.done();
    ASSERT_EQ(watcher.seen.size(), 25u);
    EXPECT_EQ(watcher.seen[0].first, 1u);
    EXPECT_EQ(watcher.seen[1].first, 24u);
    // A report shows what the reports before it have led to; a thread keeps the priority it was started with until
    // the choice differs from "below normal".
    int chosen = THREAD_PRIORITY_BELOW_NORMAL;
    int priority = THREAD_PRIORITY_NORMAL;
    for (size_t i = 0; i < watcher.seen.size(); ++i) {
        const auto& [backlog, seenPriority] = watcher.seen[i];
        EXPECT_EQ(seenPriority, priority) << "at report " << i;
        const int due = i == 0 ? -1 : backlog > 15 ? 2 : backlog > 10 ? 1 : -1;
        if (due != chosen)
            chosen = priority = due;
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
