#include "marvo/gui/widget.h"

#include <gtest/gtest.h>

#include <future>
#include <thread>

namespace {

class NotingWidget : public vwin::vWidget {
public:
    NotingWidget() : vWidget(L"MARVO TEST", 0x100000) {}
    void destroyEvent() override {
        ++destroyed;
        reparent(nullptr);
    }
    void resizeEvent(int width, int height) override { size = {width, height}; }
    void timerEvent(char id) override { timer = id; }

    int destroyed = 0;
    SIZE size = {};
    char timer = 0;
};

/// A host's window; the test is skipped where there is no display.
struct WidgetTest : testing::Test {
    void SetUp() override {
        if (host == nullptr) {
            GTEST_SKIP() << "no display";
        }
    }
    void TearDown() override { DestroyWindow(host); }

    HWND host =
        CreateWindowExW(0, L"STATIC", L"", WS_POPUP, 0, 0, 400, 300, nullptr, nullptr, nullptr, nullptr);
};

} // namespace

TEST_F(WidgetTest, IsAHiddenPopupUntilItIsPutIntoAHost) {
    NotingWidget widget;
    EXPECT_TRUE(widget.hide(true) && widget.show(false) && widget.reparent(nullptr));
    EXPECT_FALSE(widget.invalidate()) << "hiding must not make a window";
    ASSERT_TRUE(widget.handle() && !widget.visible());
    EXPECT_FALSE(widget.resize(-1, 5) || widget.reparent(widget.handle())) << "it cannot be in itself";
    EXPECT_TRUE(GetWindowLongPtrW(widget.handle(), GWL_STYLE) & WS_POPUP);

    EXPECT_TRUE(widget.resize(320, 240) && widget.reparent(host) && widget.show(true));
    EXPECT_TRUE(widget.visible() && widget.size.cx == 320 && widget.size.cy == 240);
    EXPECT_EQ(GetAncestor(widget.handle(), GA_PARENT), host);
    EXPECT_TRUE(GetWindowLongPtrW(widget.handle(), GWL_STYLE) & WS_CHILD);

    EXPECT_TRUE(widget.reparent(nullptr));
    EXPECT_NE(GetAncestor(widget.handle(), GA_PARENT), host);
    EXPECT_TRUE(GetWindowLongPtrW(widget.handle(), GWL_STYLE) & WS_POPUP);
}

TEST_F(WidgetTest, EventsReachTheWidget) {
    NotingWidget widget;
    SendMessageW(widget.handle(), WM_TIMER, 7, 0);
    EXPECT_EQ(widget.timer, 7);
    widget.setEraseBackground(false);
    EXPECT_EQ(SendMessageW(widget.handle(), WM_ERASEBKGND, 0, 0), TRUE);
}

TEST_F(WidgetTest, AnOwnerThatDispatchesNoMessagesIsGivenUp) {
    NotingWidget widget;
    std::promise<void> leave;
    std::promise<HWND> made;
    std::thread owner([&] {
        made.set_value(widget.handle());
        leave.get_future().wait();
    });
    HWND old = made.get_future().get();
    EXPECT_TRUE(widget.resize(64, 48) && widget.show(true) && widget.reparent(host));
    EXPECT_NE(widget.handle(), old);
    EXPECT_EQ(GetAncestor(widget.handle(), GA_PARENT), host);
    leave.set_value();
    owner.join();
    EXPECT_FALSE(IsWindow(old));
    EXPECT_EQ(widget.destroyed, 0);
}
