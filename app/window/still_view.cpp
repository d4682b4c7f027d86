#include "app/window/still_view.h"

namespace app {

void drawPicture(HDC context, const PixelView& picture, Field field, const Area& area) {
    if (picture.pixels == nullptr || area.width() <= 0 || area.height() <= 0) {
        return;
    }
    // Two lines that follow each other are taken for one of twice the width: its halves are the fields.
    const bool one = field != Field::both;
    BITMAPINFO info = {};
    info.bmiHeader.biSize = sizeof info.bmiHeader;
    info.bmiHeader.biWidth = one ? picture.width * 2 : picture.width;
    info.bmiHeader.biHeight = -(one ? picture.height / 2 : picture.height);
    info.bmiHeader.biPlanes = 1;
    info.bmiHeader.biBitCount = 32;
    info.bmiHeader.biCompression = BI_RGB;
    const int mode = SetStretchBltMode(context, HALFTONE);
    SetBrushOrgEx(context, 0, 0, nullptr);
    StretchDIBits(context, area.left, area.top, area.width(), area.height(),
                  field == Field::second ? picture.width : 0, 0, picture.width, -info.bmiHeader.biHeight,
                  picture.pixels, &info, DIB_RGB_COLORS, SRCCOPY);
    SetStretchBltMode(context, mode);
}

void StillView::set(const PixelView& picture, Field field) {
    const auto* bytes = static_cast<const unsigned char*>(picture.pixels);
    pixels_.assign(bytes, bytes + static_cast<size_t>(picture.width) * picture.height * 4);
    picture_ = {pixels_.data(), picture.width, picture.height};
    field_ = field;
    invalidate();
}

void StillView::paint(Canvas& canvas, const Area& area) {
    drawPicture(canvas.context(), picture_, field_, area);
}

} // namespace app
