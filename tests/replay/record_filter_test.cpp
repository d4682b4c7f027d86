#include "marvo.h"

#include "tests/support/samples.h"
#include "tests/support/foreign_pin.h"
#include "tests/video/fakes.h"

#include <gtest/gtest.h>

#include <thread>

namespace {

/// A record filter whose input is fed as an unconnected own pin is: directly, one reference per sample handed
/// over.
struct RecordFilter : testing::Test {
    samples::Source source;
    ForeignPin preview;
    dvRecFilter filter;
    vwin::com_<IPin> input = pinOf(filter, 0), output = pinOf(filter, 1);
    vwin::com_<IMemInputPin> transport;

    void SetUp() override {
        transport.ref(input.ptr());
        vvideo::dvMediaType type;
        type.initDVType(samples::palSize, false);
        ASSERT_EQ(input->ReceiveConnection(&preview, type), S_OK);
        ASSERT_TRUE(filter.init(5));
        ASSERT_EQ(output->Connect(&preview, nullptr), S_OK);
    }

    void TearDown() override {
        filter.done();
        output->Disconnect();
        input->Disconnect();
        preview.Disconnect();
        EXPECT_EQ(preview.references(), 1);
    }

    /// Hands a sample to the filter as a foreign pin does and checks that its reference is untouched.
    HRESULT feed(std::uint32_t seed) {
        IMediaSample* sample = source.sample(seed);
        sample->SetTime(nullptr, nullptr);
        const HRESULT result = transport->Receive(sample);
        EXPECT_EQ(sample->Release(), 0u);
        return result;
    }
};

TEST_F(RecordFilter, StoresAndPassesOnToWhoeverListens) {
    for (std::uint32_t k = 0; k < 3; ++k) {
        EXPECT_EQ(feed(k), S_OK);
    }
    EXPECT_EQ(filter.frameCount(), 3u);
    EXPECT_EQ(filter.frameCount(), 0u) << "since the last time";
    EXPECT_EQ(filter.store().lastFrame(), 3u);
    vvideo::dvFrame frame(samples::palSize, nullptr);
    ASSERT_TRUE(filter.store().get(&frame, 2));
    EXPECT_TRUE(samples::holds(frame.data(), 2));
    const auto arrivals = preview.arrivals();
    ASSERT_EQ(arrivals.size(), 3u);
    for (std::uint32_t k = 0; k < 3; ++k) {
        EXPECT_TRUE(samples::holds(arrivals[k].bytes.data(), k));
        EXPECT_FALSE(arrivals[k].hasTime);
        EXPECT_TRUE(arrivals[k].syncPoint && arrivals[k].discontinuity);
    }
    output->Disconnect();
    for (std::uint32_t k = 3; k < 23; ++k) {
        EXPECT_EQ(feed(k), S_OK) << "a sample was kept";
    }
    EXPECT_EQ(filter.store().lastFrame(), 23u);
}

TEST_F(RecordFilter, PauseOnlyPassesOnAndDoneRefusesUntilTheNextInit) {
    filter.setPause(true);
    feed(0);
    EXPECT_EQ(filter.store().lastFrame(), 0u);
    EXPECT_EQ(preview.count(), 1u);
    filter.setPause(false);
    feed(1);
    EXPECT_EQ(filter.store().lastFrame(), 1u);
    filter.done();
    feed(2);
    EXPECT_EQ(preview.count(), 2u);
    EXPECT_FALSE(filter.store().initialized());
    EXPECT_FALSE(filter.init(0)) << "a ring needs a slot";
    ASSERT_TRUE(filter.init(5));
    feed(3);
    EXPECT_EQ(filter.store().lastFrame(), 1u);
}

TEST_F(RecordFilter, RecordsTheSampleThatIsOnItsWayWhenDoneComes) {
    struct Slow : fake::Sample {
        vcore::event entered{1, nullptr};
        Slow() : Sample(samples::palSize) {}
        STDMETHODIMP GetPointer(BYTE** out) override {
            entered.set();
            Sleep(40); // less than `done` waits
            return fake::Sample::GetPointer(out);
        }
    } slow;
    constexpr wchar_t name[] = L"record_filter_test.dv";
    ASSERT_TRUE(filter.store().startRecord(name));
    std::thread capture([&] { transport->Receive(&slow); });
    ASSERT_TRUE(slow.entered.wait(30000));
    filter.done();
    capture.join();
    dvPlayFile recorded;
    ASSERT_TRUE(recorded.open(name, 0));
    EXPECT_EQ(recorded.frameCount(), 1u);
}

TEST_F(RecordFilter, KeepsNothingOfADisconnectedCaptureBranch) {
    vvideo::dvAlloc allocator;
    const auto references = [&] {
        allocator->AddRef();
        return allocator->Release();
    };
    const ULONG before = references();
    transport->NotifyAllocator(allocator, FALSE);
    EXPECT_GT(references(), before);
    input->Disconnect();
    EXPECT_EQ(references(), before);
}

TEST_F(RecordFilter, OffersTheCapturedFormatButTouchesNoStrayPointer) {
    vvideo::dvMediaType kept;
    filter.getMediaType(*static_cast<_AMMediaType*>(kept));
    EXPECT_EQ(kept.frameSize(), samples::palSize);
    EXPECT_EQ(kept->majortype, MEDIATYPE_Interleaved);
    BYTE stray = 0;
    AM_MEDIA_TYPE type{};
    type.pbFormat = &stray;
    input->Disconnect();
    ASSERT_EQ(input->ReceiveConnection(&preview, &type), S_OK);
    filter.getMediaType(*static_cast<_AMMediaType*>(kept));
    EXPECT_EQ(kept->pbFormat, nullptr);
}

} // namespace
