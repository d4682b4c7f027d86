/// @file
/// What is under the mouse on the timeline.
#pragma once

#include "app/window/picture_worker.h"
#include "app/window/still_view.h"

namespace app {

/// A small picture with a line of text above the timeline. The mouse does not notice it.
class HoverView : public Panel {
public:
    /// As `createPanel`, hidden.
    bool createHover(HWND parent, Fonts& fonts) { return createPanel(parent, fonts, WS_DISABLED); }
    /// Shows the words with their lower edge at `y`, in the middle above `x`, within `width`. The picture of
    /// another place before is shown until its own comes.
    void showAt(int x, int y, int width, const std::wstring& words);
    /// The picture for it.
    void setPicture(dvPicture picture);

protected:
    void paint(Canvas& canvas, const Area& area) override;

private:
    std::wstring words_;
    dvPicture picture_;
};

} // namespace app
