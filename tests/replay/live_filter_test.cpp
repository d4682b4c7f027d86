#include "marvo.h"

#include "tests/support/samples.h"
#include "tests/support/foreign_pin.h"

#include <gtest/gtest.h>

#include <atomic>

namespace {

/// A live filter connected to a foreign pin, with the system's clock.
struct LiveFilter : testing::Test {
    samples::Com com;
    ForeignPin sink;
    dvLiveFilter filter;

    void init() {
        vvideo::dvMediaType type;
        type.initDVType(samples::palSize, true);
        ASSERT_TRUE(filter.init(type));
    }

    void SetUp() override {
        init();
        ASSERT_EQ(pinOf(filter, 0)->Connect(&sink, nullptr), S_OK);
        filter.SetSyncSource(systemClock().ptr());
    }

    void TearDown() override {
        filter.done();
        filter.SetSyncSource(nullptr);
        sink.Disconnect();
        pinOf(filter, 0)->Disconnect();
        EXPECT_EQ(sink.references(), 1);
    }

    bool delivered(size_t n) {
        return samples::eventually([&] { return sink.count() >= n; });
    }

    void add(std::uint32_t seed) {
        EXPECT_TRUE(filter.addFrame(vvideo::dvFrame(samples::palSize, samples::bytes(seed).data())));
    }
};

TEST_F(LiveFilter, SendsGrayUntilTheSecondFrameThenLagsByOne) {
    ASSERT_EQ(filter.Run(0), S_OK);
    ASSERT_TRUE(delivered(2));
    add(1);
    ASSERT_TRUE(delivered(sink.count() + 3));
    vvideo::dvFrame gray(samples::palSize, nullptr);
    gray.fillGray();
    EXPECT_EQ(std::memcmp(sink.arrivals().back().bytes.data(), gray.data(), samples::palSize), 0);
    add(2);
    ASSERT_TRUE(delivered(sink.count() + 3));
    EXPECT_TRUE(samples::holds(sink.arrivals().back().bytes.data(), 1));
    EXPECT_EQ(filter.frames(), 2);
    EXPECT_EQ(filter.frames(), 0);
}

TEST_F(LiveFilter, IsPacedByTheClockAndStampsMediaTimesOnly) {
    sink.keepBytes = false;
    ASSERT_EQ(filter.Run(0), S_OK);
    ASSERT_TRUE(delivered(51));
    const auto arrivals = sink.arrivals();
    for (size_t i = 0; i < arrivals.size(); ++i) {
        EXPECT_FALSE(arrivals[i].hasTime);
        EXPECT_TRUE(arrivals[i].syncPoint);
        EXPECT_EQ(arrivals[i].discontinuity, i == 0) << i;
        EXPECT_EQ(arrivals[i].mediaStart, static_cast<long long>(i) * 400000);
        EXPECT_EQ(arrivals[i].mediaStop, static_cast<long long>(i + 1) * 400000);
    }
    // A machine that held up the first sample may have the others follow faster, but only by a few ticks.
    EXPECT_GT(arrivals[50].time_ms - arrivals[0].time_ms, 1500u) << "no faster than the clock";
    std::vector<ULONGLONG> gaps;
    for (size_t i = 1; i < arrivals.size(); ++i) {
        gaps.push_back(arrivals[i].time_ms - arrivals[i - 1].time_ms);
    }
    EXPECT_LT(samples::median(gaps), 80u) << "not at the pace of the fall-back, which is 120 ms";
}

TEST_F(LiveFilter, GoesOnWithoutAClock) {
    filter.SetSyncSource(nullptr);
    ASSERT_EQ(filter.Run(0), S_OK);
    EXPECT_TRUE(delivered(3)) << "the floor of about eight samples a second";
}

TEST_F(LiveFilter, RunsAgainWhenAReceiverHeldItsThreadForEver) {
    struct Stuck : ForeignPin {
        std::atomic<bool> stuck = false;
        STDMETHODIMP Receive(IMediaSample* sample) override {
            if (count() == 0 && !stuck.exchange(true)) {
                Sleep(INFINITE);
            }
            return ForeignPin::Receive(sample);
        }
    } receiver;
    const auto output = pinOf(filter, 0);
    output->Disconnect();
    ASSERT_EQ(output->Connect(&receiver, nullptr), S_OK);
    ASSERT_EQ(filter.Run(0), S_OK);
    ASSERT_TRUE(samples::eventually([&] { return receiver.stuck.load(); }));
    ASSERT_EQ(filter.Run(0), S_OK);
    EXPECT_TRUE(samples::eventually([&] { return receiver.count() >= 2; })) << "its samples are had again";
    filter.done();
    output->Disconnect();
    receiver.Disconnect();
}

TEST_F(LiveFilter, StopsAndStartsAgain) {
    // More sessions than there are samples: one that kept a sample would leave a later one without any.
    for (int i = 0; i < 10; ++i) {
        ASSERT_EQ(filter.Run(0), S_OK);
        ASSERT_TRUE(delivered(sink.count() + 2)) << "session " << i;
        filter.done();
        EXPECT_FALSE(filter.running());
        const size_t count = sink.count();
        Sleep(i == 0 ? 100 : 0);
        EXPECT_EQ(sink.count(), count);
        init();
    }
}

} // namespace
