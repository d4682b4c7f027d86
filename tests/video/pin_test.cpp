#include "tests/video/fakes.h"

#include <gtest/gtest.h>

#include <memory>

using fake::references;
using vvideo::dvInputPin;
using vvideo::dvMediaType;
using vvideo::dvOutputPin;

namespace {

struct Filter : vvideo::dvBaseFilter {};

struct Sink : vvideo::dvSink {
    bool receive(dvInputPin*, IMediaSample*) override { return ++received, takes; }
    bool acceptFormat(dvInputPin*, dvMediaType& type) override { return type->lSampleSize == accepts; }
    void notifyConnect(dvInputPin*) override { ++connects; }
    void notifyAllocator(dvInputPin* pin) override { allocator = pin->allocator(); }
    void notifyComplete(dvInputPin*) override { ++completes; }
    bool takes = true;
    ULONG accepts = 1;
    int received = 0, connects = 0, completes = 0;
    IMemAllocator* allocator = nullptr;
};

// Two own pins, a foreign one and an allocator, which must all be unreferenced at the end.
class Pins : public testing::Test {
protected:
    void SetUp() override {
        input->registerSink(&sink);
        type->lSampleSize = 1;
        other->lSampleSize = 2;
        output->setType(type);
    }

    void TearDown() override {
        EXPECT_TRUE(references(*input) == 1 && references(*output) == 1);
        input.reset();
        output.reset();
        EXPECT_TRUE(references(filter) == 1 && peer.references() == 1 && allocator.count == 1);
    }

    Filter filter;
    Sink sink;
    dvMediaType type, other;
    fake::Peer peer;
    fake::Allocator allocator;
    fake::Sample sample;
    IMediaSample* batch[2] = {&sample, &sample};
    long done = 9;
    IMemAllocator* told = nullptr;
    std::unique_ptr<dvInputPin> input = std::make_unique<dvInputPin>(&filter, L"Input", 0);
    std::unique_ptr<dvOutputPin> output = std::make_unique<dvOutputPin>(&filter, L"Output");
    IMemInputPin& transport = *input;
};

} // namespace

TEST_F(Pins, TellAboutThemselves) {
    for (IPin* const pin : {static_cast<IPin*>(input.get()), static_cast<IPin*>(output.get())}) {
        const bool in = pin == input.get();
        PIN_INFO info;
        EXPECT_EQ(pin->QueryPinInfo(&info), S_OK);
        EXPECT_TRUE(info.pFilter == &filter && info.dir == (in ? PINDIR_INPUT : PINDIR_OUTPUT));
        EXPECT_STREQ(info.achName, in ? L"Input" : L"Output");
        info.pFilter->Release();
        EXPECT_EQ(pin->ConnectedTo(nullptr), VFW_E_NOT_CONNECTED);
        EXPECT_EQ(pin->Disconnect(), S_FALSE);
        for (const HRESULT result : {pin->Connect(nullptr, type), pin->ReceiveConnection(nullptr, type),
                                     pin->QueryPinInfo(nullptr), pin->ConnectionMediaType(nullptr)}) {
            EXPECT_EQ(result, E_POINTER);
        }
        void* out = nullptr;
        pin->QueryInterface(IID_IMemInputPin, &out);
        EXPECT_EQ(out, in ? &transport : nullptr);
    }
    EXPECT_EQ(references(filter), 2u) << "a referenced input pin keeps its filter";
    transport.Release();
    LPWSTR id = nullptr;
    EXPECT_EQ(input->QueryId(&id), S_OK);
    EXPECT_EQ(output->QueryId(&id), S_OK) << "into the caller's buffer";
    EXPECT_STREQ(id, L"Output");
    CoTaskMemFree(id);
    input->EndOfStream();
    EXPECT_EQ(sink.completes, 1);
}

TEST_F(Pins, EnumerateTheInputsTypesThroughOneObject) {
    input->addType(type);
    input->addType(other);
    IEnumMediaTypes* types = nullptr;
    AM_MEDIA_TYPE* entry = nullptr;
    for (const ULONG size : {1u, 2u}) {
        EXPECT_EQ(input->EnumMediaTypes(&types), S_OK);
        types->Next(1, &entry, nullptr);
        EXPECT_EQ(entry->lSampleSize, size) << "the position is shared";
        EXPECT_EQ(types->Release(), 1u);
    }
}

TEST_F(Pins, InputAsksItsSinkAndKeepsTheType) {
    EXPECT_EQ(input->ReceiveConnection(&peer, other), VFW_E_TYPE_NOT_ACCEPTED);
    EXPECT_EQ(input->QueryAccept(other), VFW_E_TYPE_NOT_ACCEPTED);
    dvMediaType dv, got;
    dv.initDVType(sink.accepts = 144000, true);
    EXPECT_TRUE(input->QueryAccept(dv) == S_OK && input->ReceiveConnection(&peer, dv) == S_OK);
    EXPECT_EQ(sink.connects, 1);
    EXPECT_EQ(input->ReceiveConnection(&peer, dv), VFW_E_ALREADY_CONNECTED);
    EXPECT_EQ(input->Connect(&peer, dv), VFW_E_ALREADY_CONNECTED);
    EXPECT_EQ(input->ConnectionMediaType(got), S_OK);
    EXPECT_TRUE(got.height() == 576 && got->pbFormat != input->type()->pbFormat);
    input->Disconnect();
    input->unregisterSink();
    EXPECT_EQ(input->QueryAccept(dv), VFW_E_TYPE_NOT_ACCEPTED) << "nobody to ask";
}

TEST_F(Pins, OutputsTypeMayBeSetFromItself) {
    struct Pin : dvOutputPin {
        using dvOutputPin::dvOutputPin;
        using dvOutputPin::mediaType;
    } pin(&filter, L"Output");
    dvMediaType dv, got;
    dv.initDVType(144000, true);
    pin.setType(dv);
    pin.setType(pin.mediaType());
    EXPECT_TRUE(pin.ConnectionMediaType(got) == S_OK && got.height() == 576);
}

TEST_F(Pins, InputLeavesAForeignPeerBalanced) {
    for (const bool receives : {true, false}) {
        EXPECT_EQ(receives ? input->ReceiveConnection(&peer, type) : input->Connect(&peer, type), S_OK);
        IPin* connected = nullptr;
        EXPECT_EQ(input->ConnectedTo(&connected), S_OK);
        EXPECT_EQ(connected->Release(), 2u);

        EXPECT_EQ(transport.GetAllocator(&told), VFW_E_NO_ALLOCATOR);
        for (int i = 0; i < 2; ++i) {
            EXPECT_EQ(transport.NotifyAllocator(&allocator, FALSE), S_OK);
        }
        EXPECT_EQ(sink.allocator, &allocator);
        EXPECT_EQ(transport.GetAllocator(&told), S_OK);
        EXPECT_EQ(told->Release(), 2u);
        ALLOCATOR_PROPERTIES properties{};
        EXPECT_TRUE(transport.GetAllocatorRequirements(&properties) == S_OK && properties.cbBuffer == 1000);

        sink.takes = receives;
        EXPECT_EQ(transport.Receive(&sample), S_OK);
        EXPECT_EQ(transport.ReceiveMultiple(batch, 2, &done), S_OK);
        EXPECT_EQ(done, receives ? 2 : 0);
        EXPECT_EQ(sample.count, 1) << "a foreign sender keeps its references";
        EXPECT_EQ(input->Disconnect(), S_OK);
        EXPECT_TRUE(peer.references() == 1 && allocator.count == 1);
    }
    input->ReceiveConnection(&peer, type);
    transport.NotifyAllocator(&allocator, FALSE); // and is destroyed so
}

TEST_F(Pins, InputCalledDirectlyFollowsTheHouse) {
    transport.Receive(&sample);
    EXPECT_EQ(sample.count, 0);
    for (const auto& [hasSink, takes] : {std::pair{true, true}, {true, false}, {false, true}}) {
        sample.count = 2;
        sink.takes = takes;
        input->registerSink(hasSink ? &sink : nullptr);
        EXPECT_EQ(transport.ReceiveMultiple(batch, 2, &done), S_OK);
        EXPECT_TRUE(sample.count == done && done == (hasSink && takes ? 2 : 0)) << hasSink << takes;
    }
    sample.count = 1;
    EXPECT_EQ(transport.Receive(&sample), S_OK);
    EXPECT_EQ(sample.count, 0) << "without a sink";
    EXPECT_EQ(sink.received, 5);

    allocator.AddRef();
    transport.NotifyAllocator(&allocator, FALSE);
    transport.GetAllocator(&told);
    EXPECT_EQ(allocator.count, 2) << "taken over, released at the end";
}

TEST_F(Pins, OwnPinsComeOutOfACycleAsTheyWere) {
    output->setMem(&allocator);
    for (const bool inputFirst : {true, false, true}) {
        EXPECT_EQ(output->Connect(input.get(), nullptr), S_OK);
        EXPECT_EQ(output->Connect(input.get(), nullptr), VFW_E_ALREADY_CONNECTED);
        EXPECT_EQ(references(*output), 2u) << "its reference on itself";
        EXPECT_EQ(sink.allocator, &allocator);
        sample.count = 2;
        EXPECT_TRUE(output->deliver(&sample) && sample.count == 2);
        EXPECT_TRUE(output->sendSample(&sample) && sample.count == 1);
        output->sendSamples(batch, 1);
        EXPECT_EQ(sample.count, 1) << "the sink's";
        EXPECT_EQ(inputFirst ? input->Disconnect() : output->Disconnect(), S_OK);
        EXPECT_EQ(inputFirst ? output->Disconnect() : input->Disconnect(), S_OK);
        EXPECT_TRUE(references(*input) == 1 && references(*output) == 1);
    }
    output->setMem(nullptr);
}

TEST_F(Pins, OutputOffersTheGivenTypeThenItsOwn) {
    EXPECT_EQ(output->Connect(&peer, other), S_OK);
    EXPECT_EQ(peer.offered, (std::vector<ULONG>{2, 1}));
    output->Disconnect();
    peer.Disconnect();
    peer.acceptsSize = 99;
    EXPECT_EQ(output->Connect(&peer, nullptr), S_FALSE);
    EXPECT_EQ(output->Disconnect(), S_FALSE);
    peer.queryAccept = S_OK;
    EXPECT_EQ(output->Connect(&peer, nullptr), S_OK) << "refused, but the type is accepted";
    output->Disconnect();
    input->ReceiveConnection(&peer, type);
    EXPECT_EQ(output->Connect(input.get(), nullptr), S_OK) << "the same with an own pin that is in use";
    output->Disconnect();
    input->Disconnect();
}

TEST_F(Pins, OutputLeavesAForeignPeerBalanced) {
    output->setMem(&allocator);
    for (const HRESULT result : {S_OK, E_FAIL}) {
        EXPECT_EQ(output->Connect(&peer, nullptr), S_OK);
        EXPECT_EQ(references(*output), 2u) << "the peer's reference";
        peer.receiveResult = result;
        sample.count = 4;
        EXPECT_TRUE(output->deliver(&sample) == (result == S_OK) && sample.count == 4);
        output->sendSamples(batch, 2);
        EXPECT_EQ(sample.count, 4) << "a batch stays its sender's";
        EXPECT_EQ(output->sendSample(&sample), result == S_OK);
        EXPECT_EQ(sample.count, result == S_OK ? 4 : 3) << "used up only when it failed";
        EXPECT_FALSE(output->sendSample(nullptr)) << "is not passed on";
        EXPECT_EQ(output->Disconnect(), S_OK);
        peer.Disconnect();
        EXPECT_TRUE(peer.references() == 1 && references(*output) == 1);
    }
    EXPECT_EQ(peer.received, 8);
    EXPECT_EQ(output->ReceiveConnection(&peer, type), S_OK); // and is destroyed so
}

TEST_F(Pins, OutputWithoutATransportReleasesWhatItGets) {
    peer.transports = false;
    for (const HRESULT connects : {S_OK, VFW_E_ALREADY_CONNECTED}) {
        sample.count = 4;
        EXPECT_TRUE(output->sendSample(&sample) && output->deliver(&sample) && output->sendSample(nullptr));
        output->sendSamples(batch, 2);
        EXPECT_EQ(sample.count, 1);
        EXPECT_EQ(output->Connect(&peer, nullptr), connects);
    }
    output->Disconnect();
    peer.Disconnect();
}

// Disconnecting while a sample is under way: the foreign transport outlives the call.
TEST_F(Pins, OutputKeepsAForeignTransportDuringTheCall) {
    peer.duringReceive = [&] {
        output->Disconnect();
        EXPECT_EQ(peer.references(), 2);
    };
    output->Connect(&peer, nullptr);
    EXPECT_TRUE(output->deliver(&sample));
    EXPECT_EQ(peer.received, 1);
    peer.Disconnect();
}
