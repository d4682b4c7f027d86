/// @file
/// Words over the picture.
#pragma once

#include "app/window/window.h"

namespace app {

/// A box with words that lies over the video, which keeps out of its place. The mouse does not notice it.
class Badge : public Panel {
public:
    /// As `createPanel`, hidden.
    bool createBadge(HWND parent, Fonts& fonts) { return createPanel(parent, fonts, WS_DISABLED); }
    /// Sets the words, up to two lines, and the box's colour; without words it is hidden.
    void set(const std::wstring& first, const std::wstring& second, COLORREF colour, Writing writing);
    /// The size that the words need.
    SIZE wanted();
    bool empty() const { return first_.empty(); }

protected:
    void paint(Canvas& canvas, const Area& area) override;

private:
    std::wstring first_;
    std::wstring second_;
    COLORREF colour_ = colour::panel;
    Writing writing_ = Writing::strong;
};

} // namespace app
