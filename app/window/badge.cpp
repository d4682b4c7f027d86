#include "app/window/badge.h"

#include <algorithm>

namespace app {

void Badge::set(const std::wstring& first, const std::wstring& second, COLORREF colour, Writing writing) {
    if (first == first_ && second == second_ && colour == colour_ && writing == writing_) {
        return;
    }
    first_ = first;
    second_ = second;
    colour_ = colour;
    writing_ = writing;
    invalidate();
}

SIZE Badge::wanted() {
    HDC context = GetDC(handle());
    SIZE size = {};
    {
        Canvas canvas(context, fonts());
        const int margin = canvas.scaled(writing_ == Writing::huge ? 28 : 14);
        const int line = canvas.scaled(writing_ == Writing::huge ? 58 : 34);
        size.cx =
            std::max(canvas.widthOf(first_, writing_), canvas.widthOf(second_, Writing::large)) + 2 * margin;
        size.cy = line + (second_.empty() ? 0 : canvas.scaled(42));
    }
    ReleaseDC(handle(), context);
    return size;
}

void Badge::paint(Canvas& canvas, const Area& area) {
    canvas.fill(area, colour_);
    Area rest = area;
    if (!second_.empty()) {
        canvas.text(rest.takeBottom(canvas.scaled(48)), second_, Writing::large, colour::text,
                    Canvas::Align::middle);
    }
    canvas.text(rest, first_, writing_, colour::text, Canvas::Align::middle);
}

} // namespace app
