#include "fake_filter.h"

#include <gtest/gtest.h>

#include <cwchar>

using fake::Offer;

namespace {

/// A graph with source, splitter and sink as the capture graph has them: the sink takes every type and has a
/// free output pin that cannot say what it offers.
struct CaptureGraph : testing::Test {
    CaptureGraph() {
        source.output(L"Capture", Offer::dv);
        splitter.input(L"Input", Offer::dv);
        splitter.output(L"Sound", Offer::sound);
        splitter.output(L"Video", Offer::dv);
        sink.input(L"Input");
        sink.output(L"Preview", Offer::refuses);
    }
    bool build() {
        return graph.init(true) && graph.add(&source, L"source") && graph.add(&splitter, L"splitter") &&
               graph.add(&sink, L"sink") && holder.ref(&source) && graph.renderSource(holder);
    }

    fake::Filter source, splitter, sink;
    vwin::com_filter holder;
    vwin::com_fg graph;
};

} // namespace

TEST(FilterGraph, UnbuiltItAnswersHarmlessly) {
    vwin::com_fg graph;
    fake::Filter filter;
    vwin::com_filter holder;
    EXPECT_TRUE(graph.done(true));
    EXPECT_FALSE(graph.add(&filter, L"a") || graph.addSource(L"input0", holder, L"b") ||
                 graph.renderSource(holder) || graph.renderPin(&filter, L"Output") || graph.remove(&filter) ||
                 graph.connect(&filter, L"a", &filter, L"b", nullptr) || graph.run(0.0) || graph.pause() ||
                 graph.stop() || graph.seek(1.0) || graph.running() || graph.finished() ||
                 graph.completed(0) || graph.registerFG() || graph.unregisterFG() || graph.mc() ||
                 graph.findFilter(L"a") || graph.findInterface(IID_IBaseFilter));
    EXPECT_EQ(graph.getEvent(0) + graph.pos() + graph.len(), 0.0);
    EXPECT_EQ(filter.refs(), 1u);
}

TEST(FilterGraph, TheSourcePinIsChosenByNameThenByDv) {
    struct {
        std::vector<std::pair<const wchar_t*, Offer>> pins;
        int expected;
    } const cases[] = {
        {{{L"A", Offer::dv}, {L"Stream 2", Offer::sound}, {L"Output", Offer::sound}}, 2},
        {{{L"A", Offer::dv}, {L"Stream 2", Offer::sound}}, 1},
        {{{L"A", Offer::sound}, {L"B", Offer::refuses}, {L"C", Offer::dv}}, 2},
        {{{L"A", Offer::sound}}, -1},
    };
    for (const auto& [pins, expected] : cases) {
        fake::Filter source, sink;
        for (const auto& [name, types] : pins) {
            source.output(name, types);
        }
        sink.input(L"Input");
        vwin::com_fg graph;
        vwin::com_filter holder;
        ASSERT_TRUE(graph.init(true) && graph.add(&source, L"source") && graph.add(&sink, L"sink") &&
                    holder.ref(&source));
        EXPECT_EQ(graph.renderSource(holder), expected >= 0);
        EXPECT_EQ(sink.peer(0), expected >= 0 ? source.pins().at(expected).get() : nullptr);
    }
}

TEST_F(CaptureGraph, DoneLeavesNothingConnectedAndEveryCountAsItWas) {
    vwin::com_<IReferenceClock> clock;
    for (bool wait : {true, false}) {
        ASSERT_TRUE(build() && clock.create(CLSID_SystemClock) && graph.setSync(clock.ptr()));
        ASSERT_TRUE(graph.run(0.0) && graph.running());
        EXPECT_TRUE(graph.done(wait));
        holder.clear();
        for (fake::Filter* filter : {&source, &splitter, &sink}) {
            EXPECT_EQ(filter->refs(), 1u) << "a peer holds one, too";
            EXPECT_EQ(filter->state(), State_Stopped);
        }
        EXPECT_EQ(clock->AddRef(), 2u) << "the clock is still held by the graph";
        clock->Release();
    }
}

TEST_F(CaptureGraph, IsRenderedThroughTheSplitterAndTakenApartOnBothEnds) {
    ASSERT_TRUE(build());
    EXPECT_EQ(splitter.peer(0), source.pins()[0].get());
    EXPECT_EQ(sink.peer(0), splitter.pins()[2].get()) << "the sound pin took the sink";
    EXPECT_FALSE(graph.disconnect(&source, L"Capture", &sink, L"Input")) << "not each other's peers";
    EXPECT_TRUE(graph.disconnect(&source, L"Capture", &splitter, L"Input"));
    EXPECT_EQ(splitter.peer(0), nullptr);
    EXPECT_TRUE(graph.remove(&splitter));
    EXPECT_EQ(sink.peer(0), nullptr);
    EXPECT_EQ(splitter.refs(), 1u);
    EXPECT_TRUE(graph.renderCaptureSource(holder, &sink));
    EXPECT_EQ(sink.peer(0), source.pins()[0].get());
    EXPECT_EQ(graph.findInterface(IID_IMediaFilter).ptr(), &source);
}

TEST_F(CaptureGraph, PauseRunStopAndEventsReachTheFilters) {
    ASSERT_TRUE(build());
    EXPECT_TRUE(graph.pause() && source.state() == State_Paused);
    EXPECT_TRUE(graph.run(2.5) && !graph.run(1e300) && source.state() == State_Running);
    EXPECT_EQ(source.started, 25000000);
    EXPECT_FALSE(graph.completed(0) || graph.finished());
    EXPECT_TRUE(graph.stop() && !graph.running() && graph.reset());
    EXPECT_TRUE(graph.getEvent(0) == EC_CLOCK_CHANGED && graph.getEvent(0) == 0);
}

TEST(FilterGraph, ItIsRegisteredUntilItIsDone) {
    vwin::com_fg graph;
    ASSERT_TRUE(graph.init(false));
    wchar_t name[64];
    std::swprintf(name, 64, L"FilterGraph %08x pid %08x",
                  static_cast<unsigned>(reinterpret_cast<uintptr_t>(graph.graph())),
                  static_cast<unsigned>(GetCurrentProcessId()));
    vwin::com_<IRunningObjectTable> table;
    vwin::com_<IMoniker> moniker;
    ASSERT_TRUE(SUCCEEDED(GetRunningObjectTable(0, table.put())) &&
                SUCCEEDED(CreateItemMoniker(L"!", name, moniker.put())));
    const auto registered = [&] { return table->IsRunning(moniker.ptr()) == S_OK; };
    EXPECT_TRUE(registered() && graph.unregisterFG());
    EXPECT_FALSE(registered() || graph.unregisterFG());
    EXPECT_TRUE(graph.registerFG() && registered() && graph.done(false) && !registered());
}
