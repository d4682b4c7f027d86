#include "app/window/canvas.h"

#include <algorithm>
#include <vector>

namespace app {

Area Area::takeLeft(int length) {
    Area part = *this;
    left = part.right = std::min(left + length, right);
    return part;
}

Area Area::takeRight(int length) {
    Area part = *this;
    right = part.left = std::max(right - length, left);
    return part;
}

Area Area::takeTop(int length) {
    Area part = *this;
    top = part.bottom = std::min(top + length, bottom);
    return part;
}

Area Area::takeBottom(int length) {
    Area part = *this;
    bottom = part.top = std::max(bottom - length, top);
    return part;
}

Canvas::Canvas(HDC context, Fonts& fonts) : context_(context), fonts_(fonts), state_(SaveDC(context)) {
    SetBkMode(context_, TRANSPARENT);
    SelectObject(context_, GetStockObject(DC_BRUSH));
    SelectObject(context_, GetStockObject(DC_PEN));
}

void Canvas::fill(const Area& area, COLORREF colour) {
    const RECT rect = area.rect();
    SetDCBrushColor(context_, colour);
    FillRect(context_, &rect, static_cast<HBRUSH>(GetStockObject(DC_BRUSH)));
}

void Canvas::fillRound(const Area& area, int radius, COLORREF colour) {
    SetDCBrushColor(context_, colour);
    SetDCPenColor(context_, colour);
    RoundRect(context_, area.left, area.top, area.right, area.bottom, 2 * radius, 2 * radius);
}

void Canvas::frame(const Area& area, int thickness, COLORREF colour) {
    Area rest = area;
    fill(rest.takeTop(thickness), colour);
    fill(rest.takeBottom(thickness), colour);
    fill(rest.takeLeft(thickness), colour);
    fill(rest.takeRight(thickness), colour);
}

void Canvas::polygon(std::initializer_list<POINT> points, COLORREF colour) {
    SetDCBrushColor(context_, colour);
    SetDCPenColor(context_, colour);
    Polygon(context_, points.begin(), static_cast<int>(points.size()));
}

void Canvas::disc(int x, int y, int radius, COLORREF colour) {
    SetDCBrushColor(context_, colour);
    SetDCPenColor(context_, colour);
    Ellipse(context_, x - radius, y - radius, x + radius + 1, y + radius + 1);
}

void Canvas::text(const Area& area, const std::wstring& text, Writing writing, COLORREF colour, Align align) {
    RECT rect = area.rect();
    SelectObject(context_, fonts_.get(writing));
    SetTextColor(context_, colour);
    const UINT side = align == Align::left ? DT_LEFT : align == Align::right ? DT_RIGHT : DT_CENTER;
    DrawTextW(context_, text.c_str(), static_cast<int>(text.size()), &rect,
              side | DT_VCENTER | DT_SINGLELINE | DT_NOPREFIX | DT_END_ELLIPSIS);
}

void Canvas::paragraph(const Area& area, const std::wstring& text, Writing writing, COLORREF colour) {
    RECT rect = area.rect();
    SelectObject(context_, fonts_.get(writing));
    SetTextColor(context_, colour);
    DrawTextW(context_, text.c_str(), static_cast<int>(text.size()), &rect,
              DT_LEFT | DT_WORDBREAK | DT_NOPREFIX | DT_END_ELLIPSIS);
}

int Canvas::widthOf(const std::wstring& text, Writing writing) {
    SelectObject(context_, fonts_.get(writing));
    SIZE size = {};
    GetTextExtentPoint32W(context_, text.c_str(), static_cast<int>(text.size()), &size);
    return size.cx;
}

HDC BackBuffer::context(HDC screen, int width, int height) {
    if (context_ != nullptr && size_.cx >= width && size_.cy >= height) {
        return context_;
    }
    clear();
    HDC context = CreateCompatibleDC(screen);
    HBITMAP bitmap = CreateCompatibleBitmap(screen, std::max(width, 1), std::max(height, 1));
    if (context == nullptr || bitmap == nullptr) {
        DeleteDC(context);
        DeleteObject(bitmap);
        return nullptr;
    }
    context_ = context;
    bitmap_ = bitmap;
    former_ = SelectObject(context_, bitmap_);
    size_ = {width, height};
    return context_;
}

void BackBuffer::clear() {
    if (context_ != nullptr) {
        SelectObject(context_, former_);
        DeleteDC(context_);
        DeleteObject(bitmap_);
        context_ = nullptr;
    }
}

} // namespace app
