/// @file
/// The picture and what lies over it.
#pragma once

#include "app/window/badge.h"
#include "app/window/still_view.h"

#include <functional>

namespace app {

/// Keeps the video in its aspect, letterboxed, and enlarges a part of it: the video's window is then larger
/// than this panel, which clips it. Stills and words lie over it.
class PicturePanel : public Panel {
public:
    /// As `createPanel`, with everything inside.
    bool createPicture(HWND parent, Fonts& fonts);

    /// The window that the engine draws into. It takes no part in the mouse's business, which is this
    /// panel's.
    HWND video() const { return video_.handle(); }
    /// The picture's width to its height on the screen, 4:3 at first.
    void setAspect(int width, int height);
    /// Shows the words that say why there is no picture, while nothing is drawn; empty: the video is shown.
    void setEmpty(const std::wstring& words);
    /// Shows a still over the video, or the video again for a picture without pixels.
    void setStill(const PixelView& picture, Field field);
    /// The sign at the upper left edge: what is shown. Empty: none.
    void setTag(const std::wstring& words, COLORREF colour);
    /// The sign at the upper right edge: what is recorded, where nothing else says so. Empty: none.
    void setCorner(const std::wstring& words, COLORREF colour);
    /// The alarm in the middle, in two lines. Empty: none.
    void setAlarm(const std::wstring& first, const std::wstring& second, COLORREF colour);

    /// Enlarges (positive) or takes back by steps around a place of the panel; at most eight times.
    void zoom(int steps, POINT around);
    /// The whole picture again.
    void resetZoom();
    double zoomFactor() const { return zoom_; }

    /// The video's window has this size now; the engine must be told.
    std::function<void(int width, int height)> onVideoSize;
    /// A double click.
    std::function<void()> onDoubleClick;
    /// The right button: a menu is wanted at this place of the screen.
    std::function<void(POINT)> onMenu;

    /// Places the video and what lies over it anew.
    void layOut();

protected:
    void paint(Canvas& canvas, const Area& area) override;
    LRESULT handleMessage(UINT message, WPARAM wParam, LPARAM lParam) override;

private:
    /// The engine's video; black where it draws nothing.
    class Video : public Window {
    public:
        bool createVideo(HWND parent) {
            return create(L"", WS_CHILD | WS_CLIPSIBLINGS | WS_CLIPCHILDREN | WS_DISABLED, 0, parent, {});
        }
    };

    Area fitted() const;
    Area enlarged() const;
    void keepInside();
    void placeBadges(bool raise);

    Video video_;
    StillView still_;
    Badge tag_;
    Badge corner_;
    Badge alarm_;
    std::wstring emptyWords_;
    int aspectWidth_ = 4;
    int aspectHeight_ = 3;
    double zoom_ = 1.0;
    double centreX_ = 0.5; // of what is visible, in parts of the picture
    double centreY_ = 0.5;
    SIZE videoSize_ = {};
    bool stillShown_ = false;
    bool dragging_ = false;
    POINT dragFrom_ = {};
};

} // namespace app
