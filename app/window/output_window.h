/// @file
/// The audience's picture.
#pragma once

#include "app/view.h"
#include "app/window/frame_follower.h"
#include "app/window/window.h"

#include <atomic>
#include <functional>
#include <mutex>

namespace app {

/// A window without any words, on a monitor of its own, that shows what the operator sees. It decodes and
/// draws on a thread of its own, with a decoder of its own, so a slow monitor holds nobody up; pictures that
/// it is too slow for are left out.
class OutputWindow : public Window, private FrameFollower {
public:
    OutputWindow() = default;
    ~OutputWindow() override { close(); }

    /// Opens it over the whole of a monitor, counted from 1; 0 or one that is not there: the first that
    /// `owner` is not on. With a single monitor it is an ordinary window. False without a display.
    bool open(HWND owner, int monitor);
    /// Closes it and ends its thread.
    void close();
    bool opened() const { return handle() != nullptr; }
    /// The monitors have changed: it goes where there still is one.
    void monitorsChanged();
    /// Shows these lines of this frame.
    void follow(const FrameAddress& address, Field field);
    /// There is nothing to show.
    void followNothing() { pause(); }

    /// The operator closed it.
    std::function<void()> onClosed;

protected:
    LRESULT handleMessage(UINT message, WPARAM wParam, LPARAM lParam) override;

private:
    void take(const std::vector<unsigned char>& bytes) override;
    void rest() override;
    void draw(HDC context);

    HWND owner_ = nullptr;
    int monitor_ = 0;
    std::atomic<Field> field_ = Field::both;
    std::atomic<HWND> target_ = nullptr; // for the thread
    std::mutex pictureLock_;
    dvPicture picture_; // under the lock
    // The thread's own.
    dvFrameDecoder decoder_;
    dvPicture next_;
};

} // namespace app
