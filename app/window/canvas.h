/// @file
/// Painting without flicker.
#pragma once

#include "app/window/theme.h"

#include <initializer_list>
#include <string>

namespace app {

/// A rectangle that can be cut into parts.
struct Area {
    int left = 0;
    int top = 0;
    int right = 0;
    int bottom = 0;

    int width() const { return right - left; }
    int height() const { return bottom - top; }
    bool holds(int x, int y) const { return x >= left && x < right && y >= top && y < bottom; }
    /// Cuts a strip off one side; at most what is there.
    Area takeLeft(int length);
    Area takeRight(int length);
    Area takeTop(int length);
    Area takeBottom(int length);
    /// Smaller by `x` at both sides and by `y` above and below.
    Area inset(int x, int y) const { return {left + x, top + y, right - x, bottom - y}; }
    RECT rect() const { return {left, top, right, bottom}; }
};

/// Draws into a device context with the fonts of one resolution.
class Canvas {
public:
    /// Where text stands in its area; above and below it is always in the middle.
    enum class Align { left, middle, right };

    /// Both must outlive the canvas.
    Canvas(HDC context, Fonts& fonts);
    Canvas(const Canvas&) = delete;
    Canvas& operator=(const Canvas&) = delete;
    ~Canvas() { RestoreDC(context_, state_); }

    void fill(const Area& area, COLORREF colour);
    /// With round corners.
    void fillRound(const Area& area, int radius, COLORREF colour);
    /// A border of so many pixels inside the area.
    void frame(const Area& area, int thickness, COLORREF colour);
    /// A shape with straight edges.
    void polygon(std::initializer_list<POINT> points, COLORREF colour);
    void disc(int x, int y, int radius, COLORREF colour);
    /// One line of text, shortened with three dots where it does not fit.
    void text(const Area& area, const std::wstring& text, Writing writing, COLORREF colour,
              Align align = Align::left);
    /// Text of several lines, broken between words.
    void paragraph(const Area& area, const std::wstring& text, Writing writing, COLORREF colour);
    /// The width that a line of text takes, in pixels.
    int widthOf(const std::wstring& text, Writing writing);

    /// A length given for 96 dots per inch.
    int scaled(int length) const { return fonts_.scaled(length); }
    HDC context() const { return context_; }

private:
    HDC context_;
    Fonts& fonts_;
    int state_;
};

/// The memory that a window is painted in before it is shown as a whole.
class BackBuffer {
public:
    BackBuffer() = default;
    BackBuffer(const BackBuffer&) = delete;
    BackBuffer& operator=(const BackBuffer&) = delete;
    ~BackBuffer() { clear(); }

    /// A context of at least this size, compatible with `screen`; null without memory.
    HDC context(HDC screen, int width, int height);

private:
    void clear();

    HDC context_ = nullptr;
    HBITMAP bitmap_ = nullptr;
    HGDIOBJ former_ = nullptr;
    SIZE size_ = {};
};

} // namespace app
