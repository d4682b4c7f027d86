/// @file
/// Where frames lie on the timeline.
#pragma once

#include "app/engine.h"

#include <cstdint>

namespace app {

/// Turns places of a reel into pixels and back: a stretch of it is stretched over the width. Frame n covers
/// the pixels from x(n) to x(n + 1).
class Timeline {
public:
    /// The whole that can be seen. Unless zoomed in, all of it is; zoomed in at its end, the view follows the
    /// growing end.
    void setWhole(FrameSpan whole);
    /// Pixels; at least 1.
    void setWidth(int pixels);
    /// Shows `factor` times as many frames, the place under pixel `x` staying where it is. At the least ten
    /// frames are shown, at most the whole.
    void zoom(double factor, int x);
    /// Moves the view by pixels, within the whole.
    void scroll(int pixels);
    /// Shows all.
    void showAll();
    /// Moves the view so that `place` is in it.
    void reveal(std::uint64_t place);

    /// What is shown.
    FrameSpan shown() const;
    FrameSpan whole() const { return whole_; }
    int width() const { return width_; }
    bool zoomed() const { return zoomed_; }
    /// Left pixel of a place; outside of 0 to width for places that are not shown.
    int x(std::uint64_t place) const;
    /// The place under a pixel, cut to the whole.
    std::uint64_t place(int x) const;
    /// Whether `x` is at most `reach` pixels from the left pixel of `place`.
    bool hits(int x, std::uint64_t place, int reach) const;

private:
    void keepInside();

    FrameSpan whole_;
    int width_ = 1;
    double first_ = 0.0;  ///< left edge of the view, in frames from the start of the whole
    double length_ = 1.0; ///< of the view, in frames
    bool zoomed_ = false;
};

} // namespace app
