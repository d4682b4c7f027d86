#include "app/window/output_window.h"

#include "app/output_place.h"
#include "app/window/still_view.h"

#include <algorithm>

namespace app {

namespace {

struct Monitors {
    std::vector<HMONITOR> list;

    Monitors() { EnumDisplayMonitors(nullptr, nullptr, &Monitors::add, reinterpret_cast<LPARAM>(this)); }
    static BOOL CALLBACK add(HMONITOR monitor, HDC, RECT*, LPARAM self) {
        reinterpret_cast<Monitors*>(self)->list.push_back(monitor);
        return TRUE;
    }
};

/// The area of the monitor that is wanted, and whether it is free of the operator's window.
struct MonitorPlace {
    Area area;
    bool whole = false;
};

MonitorPlace placeFor(HWND owner, int wanted) {
    const std::vector<HMONITOR> monitors = Monitors().list;
    const HMONITOR operators = MonitorFromWindow(owner, MONITOR_DEFAULTTOPRIMARY);
    const auto own = std::find(monitors.begin(), monitors.end(), operators);
    const std::optional<size_t> chosen =
        outputMonitor(monitors.size(), static_cast<size_t>(own - monitors.begin()), wanted);
    const bool whole = chosen.has_value();
    MONITORINFO info = {};
    info.cbSize = sizeof info;
    GetMonitorInfoW(whole ? monitors[*chosen] : operators, &info);
    const RECT& r = whole ? info.rcMonitor : info.rcWork;
    if (whole) {
        return {{r.left, r.top, r.right, r.bottom}, true};
    }
    const int width = (r.right - r.left) / 3;
    return {{r.right - width - 20, r.top + 40, r.right - 20, r.top + 40 + width * 3 / 4}, false};
}

} // namespace

bool OutputWindow::open(HWND owner, int monitor) {
    close();
    owner_ = owner;
    monitor_ = monitor;
    const MonitorPlace at = placeFor(owner, monitor);
    const DWORD style = at.whole ? WS_POPUP : WS_OVERLAPPEDWINDOW;
    if (!create(L"Marvo", style, WS_EX_NOACTIVATE, nullptr, at.area)) {
        return false;
    }
    target_ = handle();
    ShowWindow(handle(), SW_SHOWNOACTIVATE);
    start();
    return true;
}

void OutputWindow::close() {
    stop();
    target_ = nullptr;
    destroy();
    const std::lock_guard guard(pictureLock_);
    picture_ = {};
}

void OutputWindow::monitorsChanged() {
    if (opened()) {
        HWND owner = owner_;
        open(owner, monitor_);
    }
}

void OutputWindow::follow(const FrameAddress& address, Field field) {
    if (field_.exchange(field) != field) {
        invalidate();
    }
    FrameFollower::follow(address, false);
}

LRESULT OutputWindow::handleMessage(UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
    case WM_MOUSEACTIVATE:
        return MA_NOACTIVATE;
    case WM_ERASEBKGND:
        return TRUE;
    case WM_SIZE:
        invalidate();
        return 0;
    case WM_PAINT: {
        PAINTSTRUCT painting;
        HDC context = BeginPaint(handle(), &painting);
        const RECT all = client().rect();
        FillRect(context, &all, static_cast<HBRUSH>(GetStockObject(BLACK_BRUSH)));
        draw(context);
        EndPaint(handle(), &painting);
        return 0;
    }
    case WM_CLOSE:
        if (onClosed) {
            onClosed();
        }
        return 0;
    }
    return Window::handleMessage(message, wParam, lParam);
}

void OutputWindow::take(const std::vector<unsigned char>& bytes) {
    if (!decoder_.decode(bytes.data(), bytes.size(), next_)) {
        return;
    }
    {
        const std::lock_guard guard(pictureLock_);
        std::swap(picture_, next_);
    }
    HWND window = target_;
    if (HDC context = GetDC(window)) {
        draw(context);
        ReleaseDC(window, context);
    }
}

void OutputWindow::rest() {
    decoder_.close();
}

void OutputWindow::draw(HDC context) {
    RECT room = {};
    GetClientRect(target_, &room);
    const std::lock_guard guard(pictureLock_);
    if (picture_.width == 0) {
        return;
    }
    const int across = static_cast<int>(picture_.aspectNumerator);
    const int up = static_cast<int>(picture_.aspectDenominator);
    const int width = std::min<int>(room.right, MulDiv(room.bottom, across, up));
    const int height = MulDiv(width, up, across);
    const int left = (room.right - width) / 2;
    const int top = (room.bottom - height) / 2;
    drawPicture(context,
                {picture_.pixels.data(), static_cast<int>(picture_.width), static_cast<int>(picture_.height)},
                field_, {left, top, left + width, top + height});
}

} // namespace app
