#include "app/timeline.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace app {

namespace {

constexpr double fewestFrames = 10.0;

/// Far outside of every window, and still an int.
constexpr double farAway = 1e6;

} // namespace

void Timeline::setWhole(FrameSpan whole) {
    const auto before = static_cast<double>(whole_.length());
    const bool atEnd = first_ + length_ >= before;
    const auto moved = static_cast<double>(static_cast<std::int64_t>(whole.first - whole_.first));
    whole_ = whole;
    if (zoomed_) {
        first_ = atEnd ? static_cast<double>(whole_.length()) - length_ : first_ - moved;
    }
    keepInside();
}

void Timeline::setWidth(int pixels) {
    width_ = std::max(pixels, 1);
}

void Timeline::zoom(double factor, int x) {
    const double all = static_cast<double>(whole_.length());
    const double share = std::clamp(static_cast<double>(x) / width_, 0.0, 1.0);
    const double fixed = first_ + share * length_;
    length_ = std::clamp(length_ * factor, std::min(fewestFrames, all), all);
    first_ = fixed - share * length_;
    zoomed_ = length_ < all;
    keepInside();
}

void Timeline::scroll(int pixels) {
    first_ += pixels * length_ / width_;
    keepInside();
}

void Timeline::showAll() {
    zoomed_ = false;
    keepInside();
}

void Timeline::reveal(std::uint64_t place) {
    const auto at = static_cast<double>(static_cast<std::int64_t>(place - whole_.first));
    if (at < first_ || at + 1 > first_ + length_) {
        first_ = at - length_ / 2;
        keepInside();
    }
}

FrameSpan Timeline::shown() const {
    const auto first = static_cast<std::uint64_t>(std::floor(first_));
    const auto last = static_cast<std::uint64_t>(std::ceil(first_ + length_)) - 1;
    return {whole_.first + first, whole_.first + std::min(last, whole_.length() - 1)};
}

int Timeline::x(std::uint64_t place) const {
    const auto at = static_cast<double>(static_cast<std::int64_t>(place - whole_.first));
    return static_cast<int>(std::clamp(std::round((at - first_) * width_ / length_), -farAway, farAway));
}

std::uint64_t Timeline::place(int x) const {
    const double at = first_ + static_cast<double>(x) * length_ / width_;
    const double last = static_cast<double>(whole_.length() - 1);
    // Less than half a pixel more, so that the left pixel of a place leads back to it.
    const double half = length_ / width_ < 1.0 ? length_ / width_ / 2 : 0.0;
    return whole_.first + static_cast<std::uint64_t>(std::clamp(std::floor(at + half), 0.0, last));
}

bool Timeline::hits(int x, std::uint64_t place, int reach) const {
    return std::abs(x - this->x(place)) <= reach;
}

void Timeline::keepInside() {
    const double all = static_cast<double>(whole_.length());
    length_ = zoomed_ ? std::min(length_, all) : all;
    zoomed_ = length_ < all;
    first_ = zoomed_ ? std::clamp(first_, 0.0, all - length_) : 0.0;
}

} // namespace app
