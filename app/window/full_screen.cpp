#include "app/window/full_screen.h"

#include <algorithm>

namespace app {

namespace {

MONITORINFO monitorOf(HWND window) {
    MONITORINFO info = {};
    info.cbSize = sizeof info;
    GetMonitorInfoW(MonitorFromWindow(window, MONITOR_DEFAULTTONEAREST), &info);
    return info;
}

void setStyle(HWND window, LONG without, LONG with) {
    SetWindowLongW(window, GWL_STYLE, (GetWindowLongW(window, GWL_STYLE) & ~without) | with);
}

} // namespace

void FullScreen::enter(HWND window) {
    if (on_) {
        return;
    }
    before_.length = sizeof before_;
    GetWindowPlacement(window, &before_);
    on_ = true;
    ::SetMenu(window, nullptr);
    setStyle(window, WS_OVERLAPPEDWINDOW, 0);
    follow(window);
}

void FullScreen::follow(HWND window) {
    if (on_) {
        const RECT r = monitorOf(window).rcMonitor;
        SetWindowPos(window, HWND_TOP, r.left, r.top, r.right - r.left, r.bottom - r.top, SWP_FRAMECHANGED);
    }
}

void FullScreen::leave(HWND window) {
    if (!on_) {
        return;
    }
    on_ = false;
    setStyle(window, 0, WS_OVERLAPPEDWINDOW);
    ::SetMenu(window, menu_);
    SetWindowPlacement(window, &before_);
    SetWindowPos(window, nullptr, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE | SWP_NOZORDER | SWP_FRAMECHANGED);
}

void FullScreen::setMenu(HWND window, HMENU menu) {
    HMENU former = menu_;
    menu_ = menu;
    if (!on_) {
        ::SetMenu(window, menu);
    }
    if (former != nullptr) {
        DestroyMenu(former);
    }
}

void FullScreen::limit(HWND window, POINT& leastSize) const {
    const RECT room = monitorOf(window).rcWork;
    leastSize = on_ ? POINT{0, 0}
                    : POINT{std::min(leastSize.x, room.right - room.left),
                            std::min(leastSize.y, room.bottom - room.top)};
}

} // namespace app
