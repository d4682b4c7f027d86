#include "fake_filter.h"

#include <gtest/gtest.h>

using vwin::com_;

TEST(ComPointer, EveryWayInAndOutKeepsTheCount) {
    fake::Filter object;
    {
        com_<IBaseFilter> one(&object);
        com_<IBaseFilter> two = one;
        com_<IBaseFilter> moved = std::move(two);
        EXPECT_FALSE(two);
        moved = *&moved;
        one = moved;
        EXPECT_EQ(object.refs(), 3u);
        com_<IMediaFilter> other;
        EXPECT_TRUE(other.ref(one.ptr()) && object.refs() == 4);
        one.attach(moved.detach());
        EXPECT_EQ(object.refs(), 3u);
        EXPECT_TRUE(!*one.put() && object.refs() == 2);
    }
    com_<IMediaFilter> held(&object);
    com_<IVideoWindow> window;
    EXPECT_FALSE(held.ref(nullptr) || held || window.ref(&object) || window) << "refused, so it is empty";
    EXPECT_EQ(object.refs(), 1u);
}

TEST(ComClsid, TextAndGuidStandForEachOther) {
    const wchar_t* text = L"{E436EBB3-524F-11CE-9F53-0020AF0BA770}";
    const vwin::com_clsid graph(text);
    EXPECT_TRUE(IsEqualGUID(graph.guid(), CLSID_FilterGraph));
    vcore::str back(64ul, 2);
    EXPECT_TRUE(vwin::com_clsid(CLSID_FilterGraph).getText(back) && back == text);
    EXPECT_TRUE(vwin::com_clsid(nullptr).empty() && vwin::com_clsid(L"{E436EBB3}").empty());
}

TEST(ComFilter, FindsPinsByNameAndDirection) {
    fake::Filter object;
    fake::Pin& in = object.input(L"Same");
    fake::Pin& out = object.output(L"Same", fake::Offer::dv);
    vwin::com_filter filter;
    ASSERT_TRUE(filter.ref(&object));
    EXPECT_EQ(filter.findPin(L"Same", -1).ptr(), &in);
    EXPECT_EQ(filter.findPin(L"Same", PINDIR_OUTPUT).ptr(), &out);
    EXPECT_EQ(filter.findPin(nullptr, PINDIR_OUTPUT).ptr(), &out);
    EXPECT_FALSE(filter.findPin(L"same", -1));
    EXPECT_EQ(object.refs(), 2u) << "the filter's own";
}

TEST(ComFilter, DestroyTakesItOutOfItsGraphButCloseDoesNotAndEmptyItIsHarmless) {
    fake::Filter source, sink;
    source.output(L"Output", fake::Offer::dv);
    sink.input(L"Input");
    vwin::com_fg graph;
    ASSERT_TRUE(graph.init(true) && graph.add(&source, L"source") && graph.add(&sink, L"sink") &&
                graph.connect(&source, L"Output", &sink, L"Input", nullptr));
    vwin::com_filter filter;
    filter.ref(&source);
    EXPECT_TRUE(filter.compareName(L"source"));
    filter.close();
    EXPECT_EQ(sink.peer(0), source.pins()[0].get());

    filter.ref(&source);
    filter.destroy();
    EXPECT_FALSE(graph.findFilter(L"source"));
    EXPECT_EQ(source.refs(), 1u) << "the sink would hold one, too";

    filter.destroy();
    vcore::str name(64ul, 2);
    EXPECT_FALSE(filter || filter.createS(L"no such class") || filter.findPin(nullptr, -1) ||
                 filter.compareName(L"") || filter.getName(name) || filter.disconnectPins());
}
