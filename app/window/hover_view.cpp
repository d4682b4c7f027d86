#include "app/window/hover_view.h"

#include <algorithm>

namespace app {

namespace {

constexpr int pictureWidth = 200;
constexpr int pictureHeight = 150;
constexpr int wordsHeight = 26;

} // namespace

void HoverView::showAt(int x, int y, int width, const std::wstring& words) {
    words_ = words;
    const int across = scaled(pictureWidth + 8);
    const int up = scaled(pictureHeight + wordsHeight + 8);
    const int left = std::clamp(x - across / 2, 0, std::max(0, width - across));
    SetWindowPos(handle(), HWND_TOP, left, y - up, across, up, SWP_NOACTIVATE | SWP_SHOWWINDOW);
    invalidate();
}

void HoverView::setPicture(dvPicture picture) {
    picture_ = std::move(picture);
    invalidate();
}

void HoverView::paint(Canvas& canvas, const Area& area) {
    canvas.fill(area, colour::raised);
    Area rest = area.inset(canvas.scaled(4), canvas.scaled(4));
    canvas.text(rest.takeBottom(canvas.scaled(wordsHeight)), words_, Writing::small, colour::text,
                Canvas::Align::middle);
    canvas.fill(rest, RGB(0, 0, 0));
    if (picture_.width == 0) {
        return;
    }
    const int height =
        std::min(rest.height(), MulDiv(rest.width(), static_cast<int>(picture_.aspectDenominator),
                                       static_cast<int>(picture_.aspectNumerator)));
    const int top = rest.top + (rest.height() - height) / 2;
    drawPicture(canvas.context(),
                {picture_.pixels.data(), static_cast<int>(picture_.width), static_cast<int>(picture_.height)},
                Field::both, {rest.left, top, rest.right, top + height});
}

} // namespace app
