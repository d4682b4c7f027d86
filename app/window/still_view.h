/// @file
/// A picture that the application draws itself.
#pragma once

#include "app/view.h"
#include "app/window/window.h"

#include <vector>

namespace app {

/// A picture in memory, rows from the top, four bytes a pixel: blue, green, red, and one unused.
struct PixelView {
    const void* pixels = nullptr;
    int width = 0;
    int height = 0;
};

/// Draws the lines of a picture into an area.
void drawPicture(HDC context, const PixelView& picture, Field field, const Area& area);

/// A still picture over the video. The mouse does not notice it.
class StillView : public Panel {
public:
    /// As `createPanel`, hidden.
    bool createStill(HWND parent, Fonts& fonts) { return createPanel(parent, fonts, WS_DISABLED); }
    /// Copies a picture and shows these lines of it.
    void set(const PixelView& picture, Field field);

protected:
    void paint(Canvas& canvas, const Area& area) override;

private:
    std::vector<unsigned char> pixels_;
    PixelView picture_;
    Field field_ = Field::both;
};

} // namespace app
