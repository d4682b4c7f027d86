/// @file
/// The host's main window: the video, buttons, keys and a status line.
#pragma once

#include "host/transport.h"
#include "marvo.h"

#include <functional>

namespace host {

/// The window. Made, used and destroyed on one thread, which dispatches its messages.
class AppWindow {
public:
    /// The message that brings play progress; wParam holds the low 32 bits of the frame number.
    static constexpr unsigned playInfoMessage = WM_APP + 1;

    AppWindow() = default;
    AppWindow(const AppWindow&) = delete;
    AppWindow& operator=(const AppWindow&) = delete;
    /// Destroys the window if it still exists.
    ~AppWindow();

    /// Makes the window with a video area of this size in pixels. False without a display.
    bool create(int videoWidth, int videoHeight);
    /// The commands that buttons and keys give; null: none. Must outlive the window or be taken back.
    void setTransport(Transport* transport) { transport_ = transport; }
    /// Called for every progress message.
    void setPlayObserver(std::function<void(unsigned long frame)> observer) {
        observer_ = std::move(observer);
    }
    /// The main window and the part of it that shows the video; null when closed.
    HWND handle() const { return window_; }
    HWND videoArea() const { return videoArea_; }
    /// Shows a message in the status line for some seconds.
    void showMessage(const std::string& text);
    /// Dispatches messages for `ms` milliseconds (negative: until the window is closed). False when it was
    /// closed.
    bool dispatch(double ms);

private:
    static LRESULT CALLBACK windowProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
    LRESULT handleMessage(UINT message, WPARAM wParam, LPARAM lParam);
    void createControls();
    void layOut(int width, int height);
    void showStatus();
    void act(size_t control);
    bool actOnKey(WPARAM key);

    HWND window_ = nullptr;
    HWND videoArea_ = nullptr;
    HWND status_ = nullptr;
    Transport* transport_ = nullptr;
    std::function<void(unsigned long)> observer_;
    unsigned long long messageUntil_ = 0;
};

} // namespace host
