#include "marvo.h"

#include "tests/support/recording.h"
#include "tests/support/samples.h"
#include "tests/support/foreign_pin.h"
#include "tests/support/import_patch.h"
#include "tests/video/fakes.h"

#include <gtest/gtest.h>

#include <atomic>
#include <map>

namespace {

constexpr wchar_t name[] = L"play_filter_test.dv";
constexpr unsigned message = WM_APP + 1;

/// A window that collects the posted progress.
class Drain {
public:
    play_info info;
    HWND window = CreateWindowExW(0, L"STATIC", L"", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, nullptr, nullptr);

    ~Drain() { DestroyWindow(window); }

    /// The frame numbers posted since the last call.
    std::vector<unsigned long> take() {
        std::vector<unsigned long> frames;
        MSG posted;
        while (PeekMessageW(&posted, window, message, message, PM_REMOVE)) {
            EXPECT_EQ(posted.lParam, reinterpret_cast<LPARAM>(&info));
            frames.push_back(static_cast<unsigned long>(posted.wParam));
        }
        return frames;
    }

    /// The numbers of the next `count` ticks.
    std::vector<unsigned long> next(size_t count) {
        take();
        std::vector<unsigned long> frames;
        samples::eventually([&] {
            for (unsigned long frame : take()) {
                frames.push_back(frame);
            }
            return frames.size() >= count;
        });
        frames.resize(std::min(frames.size(), count));
        return frames;
    }
};

/// A play filter that delivers into a foreign pin, on a store with a ring of 50 frames.
struct PlayFilter : testing::Test {
    samples::Source source;
    ForeignPin sink;
    Drain drain;
    dvFrameStore store;
    dvPlayFilter filter;

    void SetUp() override {
        ASSERT_TRUE(store.init(samples::palSize, 400000, 50));
        start(sink);
    }

    void start(ForeignPin& receiver) {
        vvideo::dvMediaType type;
        type.initDVType(samples::palSize, false);
        ASSERT_TRUE(filter.init(store, type));
        filter.setInfoDrain(drain.window, message, &drain.info);
        ASSERT_EQ(pinOf(filter, 0)->Connect(&receiver, nullptr), S_OK);
        runBy(systemClock().ptr());
    }

    void runBy(IReferenceClock* clock) {
        filter.SetSyncSource(clock);
        ASSERT_EQ(filter.Run(0), S_OK);
    }

    void disconnect(ForeignPin& receiver) {
        filter.done();
        filter.SetSyncSource(nullptr);
        receiver.Disconnect();
        pinOf(filter, 0)->Disconnect();
    }

    void TearDown() override {
        disconnect(sink);
        EXPECT_EQ(sink.references(), 1);
    }

    void capture(std::uint32_t first, std::uint32_t count) {
        for (std::uint32_t k = first; k < first + count; ++k) {
            ASSERT_TRUE(source.addTo(store, k));
        }
    }

    /// Whether numbers of ticks follow each other within the range, `step` further or, on a busy machine,
    /// repeated.
    static void expectSteps(const std::vector<unsigned long>& frames, unsigned long from, unsigned long count,
                            unsigned long step) {
        ASSERT_GT(frames.size(), 10u);
        for (size_t i = 1; i < frames.size(); ++i) {
            EXPECT_TRUE(frames[i] == frames[i - 1] ||
                        frames[i] - from == (frames[i - 1] - from + step) % count)
                << frames[i - 1] << " to " << frames[i];
        }
        EXPECT_LT(std::count(frames.begin(), frames.end(), frames.front()), std::ssize(frames));
    }

    /// Waits until the picture of frame `number` is delivered.
    void expectShown(std::uint32_t number) {
        const auto picture = samples::bytes(number);
        EXPECT_TRUE(samples::eventually([&] { return sink.shows(picture); }))
            << number << ", but " << filter.playedFrame() << " is shown";
    }
};

TEST_F(PlayFilter, ShowsGrayBeforeTheFirstFrameAndThenTheNewest) {
    ASSERT_TRUE(samples::eventually([&] { return sink.count() >= 2; }));
    vvideo::dvFrame gray(samples::palSize, nullptr);
    gray.fillGray();
    EXPECT_EQ(std::memcmp(sink.arrivals().back().bytes.data(), gray.data(), samples::palSize), 0);
    EXPECT_EQ(filter.playedFrame(), ~0ull);
    EXPECT_FALSE(filter.playing());
    filter.setRecording(true);
    capture(0, 1);
    expectShown(0);
    EXPECT_TRUE(sink.arrivals().front().discontinuity && !sink.arrivals().back().discontinuity);
    drain.next(1);
    EXPECT_TRUE(drain.info.recording);
    disconnect(sink);
    start(sink);
    drain.next(2);
    EXPECT_FALSE(drain.info.recording) << "that was the session before";
}

TEST_F(PlayFilter, CatchesUpGentlyAndJumpsWhenFarBehind) {
    capture(0, 1);
    expectShown(0);
    capture(1, 12);
    const auto gentle = drain.next(6);
    for (size_t i = 1; i < gentle.size(); ++i) {
        EXPECT_LE(gentle[i] - gentle[i - 1], 2u) << "one extra frame a tick at most";
    }
    expectShown(12);
    filter.setPause(true); // so that the frames come at once, however slowly they are made
    capture(13, 40);
    filter.setPause(false);
    // The jump leads to the frame that comes next.
    ASSERT_TRUE(samples::eventually([&] { return filter.frame() == 53; }));
    capture(53, 1);
    expectShown(53);
    const auto shown = sink.arrivals();
    EXPECT_FALSE(std::any_of(shown.begin(), shown.end(), [](const Arrival& arrival) {
        return samples::holds(arrival.bytes.data(), 30);
    })) << "a jump leaves frames out";
}

TEST_F(PlayFilter, LoopsARangeInBothDirections) {
    recording::write(name, 40);
    ASSERT_TRUE(filter.play(19, 10, name, 1.0, 100, 50));
    EXPECT_TRUE(filter.playing());
    expectSteps(drain.next(25), 10, 10, 1);
    EXPECT_EQ(drain.info.from, 10u);
    EXPECT_EQ(drain.info.to, 19u);
    EXPECT_TRUE(drain.info.replaying);
    ASSERT_TRUE(filter.setSpeed(-1.0));
    drain.next(3);
    expectSteps(drain.next(25), 10, 10, 9);
}

TEST_F(PlayFilter, SpeedRepeatsSkipsAndHolds) {
    recording::write(name, 60);
    ASSERT_TRUE(filter.play(10, 49, name, 0.5, 100, 50));
    auto frames = drain.next(31);
    expectSteps(frames, 10, 40, 1);
    std::map<unsigned long, int> ticks; // of each frame, but for the first and the last, which may be cut
    for (size_t i = 0; i < frames.size(); ++i) {
        ticks[frames[i]] += frames[i] != frames.front() && frames[i] != frames.back();
    }
    // A busy machine may hold a frame for longer, but not all of them.
    EXPECT_EQ(std::count_if(ticks.begin(), ticks.end(), [](const auto& t) { return t.second == 1; }), 0);
    EXPECT_NE(std::count_if(ticks.begin(), ticks.end(), [](const auto& t) { return t.second == 2; }), 0);
    ASSERT_TRUE(filter.setSpeed(2.0));
    filter.seekFrame(10);
    drain.next(3);
    frames = drain.next(11);
    expectSteps(frames, 10, 40, 2);
    ASSERT_TRUE(filter.setSpeed(0));
    drain.next(3);
    frames = drain.next(5);
    EXPECT_EQ(frames.front(), frames.back());
    EXPECT_FALSE(filter.setSpeed(std::numeric_limits<double>::quiet_NaN()));
    EXPECT_FALSE(filter.setSpeed(-std::numeric_limits<double>::infinity()));
    EXPECT_EQ(filter.speed(), 0.0);
}

TEST_F(PlayFilter, PauseHoldsTheFrameAndSeekStillShows) {
    recording::write(name, 60);
    ASSERT_TRUE(filter.play(10, 49, name, 1.0, 100, 50));
    expectShown(14);
    filter.setPause(true);
    drain.next(3);
    const unsigned long long held = filter.playedFrame();
    const size_t count = sink.count();
    ASSERT_TRUE(samples::eventually([&] { return sink.count() > count + 5; }))
        << "the picture goes on being sent";
    EXPECT_EQ(filter.playedFrame(), held);
    filter.seekFrame(33);
    expectShown(33);
    filter.seekFrame(33 + 40);
    EXPECT_EQ(filter.frame(), 33) << "wrapped into the range";
    filter.seekFrame(9);
    EXPECT_EQ(filter.frame(), 49);
    filter.live();
    filter.setPause(true);
    filter.seekFrame(5'000'000'000);
    EXPECT_EQ(filter.frame(), 5'000'000'000);
    filter.seekFrame(-1);
    EXPECT_EQ(drain.next(5).size(), 5u);
    EXPECT_NE(filter.playedFrame(), ~0ull) << "no frame, whatever the empty slots of the ring hold";
}

TEST_F(PlayFilter, ASeekInTheMiddleOfATickIsNotSteppedOver) {
    struct : vcore::vObject {
        dvPlayFilter* filter = nullptr;
        std::atomic<bool> seek = false;
        void onPlayTime() {
            if (seek.exchange(false)) {
                filter->seekFrame(33);
            }
        }
    } seeker;
    seeker.filter = &filter;
    filter.connect(L"playTime", &seeker, &seeker, &std::remove_reference_t<decltype(seeker)>::onPlayTime);
    recording::write(name, 60);
    ASSERT_TRUE(filter.play(10, 49, name, 0.0, 100, 50));
    expectShown(10);
    filter.setSpeed(1.0);
    drain.take();
    seeker.seek = true;
    const auto frames = drain.next(10);
    EXPECT_NE(std::find(frames.begin(), frames.end(), 33ul), frames.end());
    filter.disconnect();
}

TEST_F(PlayFilter, ReplaysAnotherFileThanTheRingsFromThatFile) {
    constexpr wchar_t other[] = L"play_filter_other.dv";
    recording::write(other, 40);
    DeleteFileW(name);
    capture(100, 20);
    for (const bool recorded : {false, true}) {
        if (recorded) {
            ASSERT_TRUE(store.startRecord(name));
            capture(200, 20); // seed 200 + k under number k
        }
        ASSERT_TRUE(filter.play(5, 12, other, 0.0, 100, 50));
        expectShown(5);
        filter.live();
    }
    EXPECT_TRUE(samples::eventually([&] { return store.writtenFrame() == 20; }));
    ASSERT_TRUE(filter.play(6, 12, L".\\PLAY_filter_test.dv", 0.0, 100, 50));
    expectShown(206);
    ASSERT_TRUE(filter.play(7, 12, nullptr, 0.0, 100, 50));
    expectShown(207);
    store.stopRecord();
    filter.done();
    EXPECT_FALSE(filter.play(7, 12, nullptr, 0.0, 0, 50)) << "no store whose recording could be meant";
}

TEST_F(PlayFilter, StallsInsteadOfSkippingWhatIsNotThere) {
    recording::write(name, 40);
    capture(0, 1);
    ASSERT_TRUE(filter.play(0, 35, name, 1.0, 0, 50));
    filter.setBreaker(120);
    const auto frames = drain.next(20);
    for (size_t i = 1; i < frames.size(); ++i) {
        EXPECT_LE(frames[i], frames[i - 1] + 1) << "slow loading never skips a frame";
    }
}

TEST_F(PlayFilter, TheSameRangeStartsAgainAtOnce) {
    recording::write(name, 40);
    ASSERT_TRUE(filter.play(5, 30, name, 1.0, 100, 50));
    expectShown(9);
    EXPECT_LT(samples::elapsed_ms([&] { EXPECT_TRUE(filter.play(5, 30, name, 0.0, 20000, 50)); }), 10000u)
        << "no reload, so no delay";
    expectShown(5);
}

TEST_F(PlayFilter, LiveAndRefusedReplays) {
    capture(0, 3);
    EXPECT_FALSE(filter.play(0, 9, L"no such file.dv", 1.0, 0, 50));
    EXPECT_FALSE(filter.play(0, 9, L"", 1.0, 0, 50));
    EXPECT_FALSE(filter.playing()) << "a refused replay changes nothing";
    recording::write(name, 40);
    ASSERT_TRUE(filter.play(5, 30, name, 0.5, 0, 50));
    EXPECT_FALSE(filter.play(0, 9, L"no such file.dv", 1.0, 0, 50));
    expectShown(12); // the replay goes on
    filter.setPause(true);
    EXPECT_TRUE(filter.live());
    EXPECT_FALSE(filter.playing() || filter.paused());
    EXPECT_EQ(filter.speed(), 1.0);
    EXPECT_EQ(filter.frame(), 3);
    EXPECT_TRUE(filter.reset());
    EXPECT_EQ(filter.frame(), 0);
}

/// What the filter has told, one behind the other.
struct Told : vcore::vObject {
    std::mutex mutex;
    std::vector<play_error> errors;
    std::vector<std::pair<unsigned long, unsigned long>> faults;

    explicit Told(dvPlayFilter& filter) {
        filter.connect(L"playError", this, this, &Told::onError);
        filter.connect(L"playFault", this, this, &Told::onFault);
    }
    void onError(unsigned long long first, unsigned long long frames, unsigned long error) {
        const std::lock_guard lock(mutex);
        errors.push_back({first, frames, static_cast<std::uint32_t>(error)});
    }
    void onFault(unsigned long fault, unsigned long begun) {
        const std::lock_guard lock(mutex);
        faults.emplace_back(fault, begun);
    }
    template <class List>
    bool ends(const List& list, size_t count, const typename List::value_type& last) {
        return samples::eventually([&] {
                   const std::lock_guard lock(mutex);
                   return list.size() >= count;
               }) &&
               list.size() == count && list.back() == last;
    }
};

TEST_F(PlayFilter, TellsOnceWhatCannotBeReadAndHoldsThePicture) {
    Told told(filter);
    constexpr auto half = 20ull * recording::recordSize;
    recording::write(name, 40);
    ASSERT_TRUE(filter.play(10, 35, name, 1.0, 100, 6));
    expectShown(12);
    recording::resize(name, half);
    EXPECT_TRUE(told.ends(told.errors, 1, {20, 16, ERROR_HANDLE_EOF}));
    expectShown(19);
    const size_t count = sink.count();
    EXPECT_TRUE(samples::eventually([&] { return sink.count() > count + 20; }));
    expectShown(19);
    EXPECT_EQ(told.errors.size(), 1u) << "not each time that it is tried";
    recording::append(name, 20, 20);
    EXPECT_TRUE(told.ends(told.errors, 2, {20, 0, 0}));
    expectShown(30);
    recording::resize(name, half);
    EXPECT_TRUE(told.ends(told.errors, 3, {20, 16, ERROR_HANDLE_EOF}));
    EXPECT_TRUE(filter.play(10, 35, name, 1.0, 0, 6)) << "opens it anew";
    expectShown(18);
    EXPECT_FALSE(filter.unreadable().frames != 0) << "a range of what is there";
    recording::resize(name, half / 2);
    ASSERT_TRUE(samples::eventually([&] { return filter.unreadable().frames != 0; }));
    EXPECT_LT(samples::elapsed_ms([&] { filter.live(); }), 2000u);
    capture(0, 2);
    expectShown(1);
    EXPECT_EQ(told.errors.back().frames, 0u);
    filter.disconnect();
}

TEST_F(PlayFilter, AClockWithoutTicksIsToldAndDoesNotStopThePicture) {
    struct Clock : fake::Counted<IReferenceClock> {
        HRESULT advised = S_OK; // and then nothing comes
        STDMETHODIMP GetTime(REFERENCE_TIME* now) override { return *now = 1, S_OK; }
        STDMETHODIMP AdviseTime(REFERENCE_TIME, REFERENCE_TIME, HEVENT, DWORD_PTR*) override {
            return E_FAIL;
        }
        STDMETHODIMP AdvisePeriodic(REFERENCE_TIME, REFERENCE_TIME, HSEMAPHORE, DWORD_PTR* cookie) override {
            return *cookie = 1, advised;
        }
        STDMETHODIMP Unadvise(DWORD_PTR) override { return S_OK; }
    } clock;
    Told told(filter);
    std::uint32_t frame = 0;
    for (const HRESULT advised : {S_OK, E_FAIL}) {
        clock.advised = advised;
        runBy(&clock);
        EXPECT_TRUE(told.ends(told.faults, 2 * frame + 1, {play_no_ticks, 1}));
        EXPECT_EQ(filter.faults(), play_no_ticks);
        capture(frame, 1);
        expectShown(frame++);
        runBy(systemClock().ptr());
        EXPECT_TRUE(told.ends(told.faults, 2 * frame, {play_no_ticks, 0}));
    }
    EXPECT_EQ(clock.count, 1);
    filter.disconnect();
}

TEST_F(PlayFilter, AReceiverThatRefusesOrKeepsASampleIsTold) {
    struct Stubborn : ForeignPin {
        std::atomic<bool> refuses = true, keeps = false;
        STDMETHODIMP Receive(IMediaSample* sample) override {
            while (keeps) {
                Sleep(5);
            }
            return refuses ? E_FAIL : ForeignPin::Receive(sample);
        }
        std::vector<IMemAllocator*> allocators;
        STDMETHODIMP NotifyAllocator(IMemAllocator* allocator, BOOL) override {
            return allocators.push_back(allocator), S_OK;
        }
    } stubborn;
    Told told(filter);
    disconnect(sink);
    start(stubborn);
    EXPECT_TRUE(told.ends(told.faults, 1, {play_refused, 1}));
    stubborn.refuses = false;
    EXPECT_TRUE(told.ends(told.faults, 2, {play_refused, 0}));
    recording::write(name, 20);
    stubborn.keeps = true;
    ASSERT_TRUE(samples::eventually([&] { return filter.faults() == play_held_up; }));
    EXPECT_LT(samples::elapsed_ms([&] {
                  EXPECT_TRUE(filter.play(0, 9, name, 1.0, 0, 6) && filter.setSpeed(0.5));
                  EXPECT_TRUE(filter.setPause(true) && filter.live());
              }),
              3000u);
    EXPECT_LT(samples::elapsed_ms([&] { disconnect(stubborn); }), 10000u);
    EXPECT_EQ(filter.faults(), 0u);
    stubborn.keeps = false;
    start(stubborn);
    ASSERT_EQ(stubborn.allocators.size(), 2u);
    EXPECT_NE(stubborn.allocators[0], stubborn.allocators[1]) << "a sample is lost with each killed thread";
    capture(0, 1);
    EXPECT_TRUE(samples::eventually([&] { return stubborn.shows(samples::bytes(0)); }));
    disconnect(stubborn);
    filter.disconnect();
}

std::atomic<DWORD> longestNap_ms;

void WINAPI nap(DWORD ms) {
    longestNap_ms = std::max(longestNap_ms.load(), ms);
    Sleep(std::min(ms, 20ul));
}

TEST_F(PlayFilter, NobodyWaitsForDaysForAReplay) {
    const ImportPatch patch(engineModule(), "Sleep", reinterpret_cast<void*>(&nap));
    recording::write(name, 20);
    ASSERT_TRUE(filter.play(0, 9, name, 1.0, -1, 6));
    EXPECT_LT(longestNap_ms, 1000u);
    ASSERT_TRUE(filter.play(0, 8, name, 1.0, 2000000000, 6));
    EXPECT_EQ(longestNap_ms, 60000u);
}

TEST_F(PlayFilter, WaitsForASlowReceiver) {
    struct Slow : ForeignPin {
        std::atomic<int> entered = 0;
        std::atomic<int> left = 0;
        STDMETHODIMP Receive(IMediaSample*) override {
            ++entered;
            Sleep(400); // longer than a stop waits at first
            ++left;
            return S_OK;
        }
    } slow;
    disconnect(sink);
    start(slow);
    ASSERT_TRUE(samples::eventually([&] { return slow.entered > slow.left; }));
    filter.done();
    EXPECT_EQ(slow.entered, slow.left) << "killed inside the receiver";
    disconnect(slow);
    EXPECT_EQ(slow.references(), 1);
}

} // namespace
