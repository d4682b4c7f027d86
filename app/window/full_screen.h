/// @file
/// A window over the whole of its monitor, and back.
#pragma once

#include "marvo.h"

namespace app {

/// Has a window fill the monitor that it is on, without frame and menu, and gives back place, frame and menu.
/// Monitors may change meanwhile. For one window, on its thread.
class FullScreen {
public:
    /// Whether the window fills its monitor.
    bool on() const { return on_; }
    /// Lets it fill its monitor; its place and menu are kept. Nothing happens when it does already.
    void enter(HWND window);
    /// Fills the monitor that it is on by now, after monitors have changed.
    void follow(HWND window);
    /// Gives its place, frame and menu back; where no monitor is there any more, it comes to the nearest.
    void leave(HWND window);
    /// The menu bar that it has when it does not fill its monitor; the one before is destroyed.
    void setMenu(HWND window, HMENU menu);
    /// Makes the smallest size of the window no larger than its monitor's free room; none in full screen,
    /// which no size of ours may enlarge.
    void limit(HWND window, POINT& leastSize) const;

private:
    bool on_ = false;
    HMENU menu_ = nullptr;
    WINDOWPLACEMENT before_ = {};
};

} // namespace app
