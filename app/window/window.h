/// @file
/// What every window of the application has in common.
#pragma once

#include "app/window/canvas.h"

namespace app {

/// A window of the system whose messages a class handles. Made, used and destroyed on one thread.
class Window {
public:
    Window(const Window&) = delete;
    Window& operator=(const Window&) = delete;
    /// Destroys the window if it still exists; no message is handled any more.
    virtual ~Window();

    /// Null before it is made and after it was closed.
    HWND handle() const { return window_; }
    /// The client area, from 0, 0.
    Area client() const;
    /// Has all of it painted again.
    void invalidate() const { InvalidateRect(window_, nullptr, FALSE); }
    /// Moves and sizes it within its parent.
    void place(const Area& area) const;
    void show(bool on) const { ShowWindow(window_, on ? SW_SHOWNA : SW_HIDE); }
    bool visible() const {
        return window_ != nullptr && (GetWindowLongW(window_, GWL_STYLE) & WS_VISIBLE) != 0;
    }

protected:
    Window() = default;
    /// Makes the window, black where nobody paints; false without a display.
    bool create(const wchar_t* title, DWORD style, DWORD extendedStyle, HWND parent, const Area& area);
    /// Handles a message; what it does not know goes to the system.
    virtual LRESULT handleMessage(UINT message, WPARAM wParam, LPARAM lParam);
    /// Forgets and destroys it, before the members of a derived class go.
    void destroy();

private:
    static LRESULT CALLBACK windowProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam);

    HWND window_ = nullptr;
};

/// A child window that paints itself as a whole, without flicker.
class Panel : public Window {
public:
    /// Makes the panel, hidden or shown by `place` and `show`; false without a display. The fonts must
    /// outlive it.
    bool createPanel(HWND parent, Fonts& fonts, DWORD more = 0);

protected:
    Panel() = default;
    /// Paints the whole client area.
    virtual void paint(Canvas& canvas, const Area& area) = 0;
    LRESULT handleMessage(UINT message, WPARAM wParam, LPARAM lParam) override;
    Fonts& fonts() { return *fonts_; }
    int scaled(int length) const { return fonts_->scaled(length); }
    /// Has WM_MOUSELEAVE sent when the mouse has left.
    void watchMouseLeave() const;

private:
    Fonts* fonts_ = nullptr;
    BackBuffer buffer_;
};

/// The mouse's place out of a message's lParam.
inline POINT pointOf(LPARAM lParam) {
    return {static_cast<short>(LOWORD(lParam)), static_cast<short>(HIWORD(lParam))};
}

} // namespace app
