/// @file
/// A window with overridable events.
#pragma once

#include "marvo/core/platform.h"
#include "marvo/core/vobject.h"

#include <atomic>

namespace vwin {

/// One window: a hidden frameless popup of its own, or a child inside a host's window (see reparent()).
///
/// The window is made at its first use, not by the constructor: a global widget then costs nothing while the
/// library is loaded, and its window belongs to the thread that shows it. When the host destroys the window
/// that the widget is in, destroyEvent() is raised and the next use makes a new window. When the window goes
/// without a word, with the thread that owns it, the next use makes a new one all the same.
///
/// Threads: meant for one thread; calls from other threads never block on it for more than 300 ms, even when
/// it does not dispatch messages. Events are raised on the window's own thread. Errors: without a display no
/// window can be made; every operation then answers false or null.
class MARVO_API vWidget : public vcore::vObject {
public:
    /// A widget of the window class "VIDEOFRAME" with style value 0.
    vWidget();
    /// A widget of the window class `className` (registered for this library at the first use). `style` is a
    /// value for derived classes to interpret; it is no window style of the system.
    vWidget(const wchar_t* className, unsigned long style);
    vWidget(const vWidget&) = delete;
    vWidget& operator=(const vWidget&) = delete;
    /// Destroys the window; no event is raised any more.
    virtual ~vWidget();

    /// The window is being destroyed by someone else, usually with the host's window. handle() gives a new
    /// window already. Does nothing by default.
    virtual void destroyEvent();
    /// The client area has a new size in pixels. Does nothing by default.
    virtual void resizeEvent(int width, int height);
    /// The timer with this id has run out. Does nothing by default.
    virtual void timerEvent(char id);

    /// Shows or hides the window. Hiding makes no window. False, and nothing changes, in a host that does not
    /// answer.
    bool show(bool visible);
    /// Hides or shows the window: show() the other way round.
    bool hide(bool hidden);
    /// Whether the window is shown (its own state, whatever its host's).
    bool visible() const;
    /// Sets the size in pixels; false for a negative one.
    bool resize(int width, int height);
    /// Has the whole window painted again. False when there is no window yet.
    bool invalidate();
    /// Puts the window as a child into the client area of `host`, at its upper left corner; null gives it
    /// back to its own parent, the desktop, as a popup. Shown or hidden stays as it was.
    ///
    /// False, and nothing changes, when `host` is no window, cannot be its parent, or it or the host before
    /// does not answer.
    ///
    /// From a thread that does not own the window the owner is asked to do it. An owner that does not answer
    /// is given up: the old window is left to it, hidden and to be closed, and a new window is made on this
    /// thread.
    bool reparent(HWND host);
    /// Whether the window that this one is in answers: false when it belongs to another thread, and that
    /// takes no messages for 300 ms. Moving or sizing a window there takes as long as that lasts.
    bool hostAnswers() const;
    /// Whether the window's background is painted before its content; on by default.
    void setEraseBackground(bool on);
    /// The window, made if there is none; null when it cannot be made.
    HWND handle();
    /// The style value given to the constructor.
    unsigned long style() const { return style_; }

private:
    static LRESULT CALLBACK windowProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
    HWND current() const;
    LRESULT handleMessage(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
    void onDestroy(HWND window);
    void keepChildren(HWND dying);
    HWND create();
    void retire(HWND window);
    static bool moveInto(HWND window, HWND host);

    static constexpr size_t classNameSize = 64;

    wchar_t className_[classNameSize] = {};
    unsigned long style_ = 0;
    std::atomic<bool> eraseBackground_ = true;
    std::atomic<HWND> window_ = nullptr;
};

} // namespace vwin
