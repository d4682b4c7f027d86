#include "app/window/level_meter.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace app {

namespace {

constexpr double fall_dB = 1.0; // a tick
constexpr double loud_dB = -9.0;
constexpr double tooLoud_dB = -1.0;

} // namespace

void LevelMeter::take(const std::int16_t* samples, size_t count, unsigned channels) {
    std::array<int, 2> peak = {};
    for (size_t i = 0; i < count && channels != 0; ++i) {
        const size_t channel = i % channels;
        if (channel < peak.size()) {
            peak[channel] = std::max(peak[channel], std::abs(static_cast<int>(samples[i])));
        }
    }
    if (channels == 1) {
        peak[1] = peak[0];
    }
    for (size_t i = 0; i < peak.size(); ++i) {
        const double level = peak[i] == 0 ? silence_dB : 20.0 * std::log10(peak[i] / 32768.0);
        level_dB_[i] = std::max(level_dB_[i], level);
    }
}

void LevelMeter::tick() {
    if (level_dB_ != drawn_dB_) {
        drawn_dB_ = level_dB_;
        invalidate();
    }
    for (double& level : level_dB_) {
        level = std::max(silence_dB, level - fall_dB);
    }
}

void LevelMeter::setMuted(bool muted) {
    if (muted_ != muted) {
        muted_ = muted;
        invalidate();
    }
}

void LevelMeter::paint(Canvas& canvas, const Area& area) {
    canvas.fill(area, colour::background);
    Area rest = area.inset(canvas.scaled(4), canvas.scaled(6));
    const Area speaker = rest.takeBottom(canvas.scaled(30));
    const int middle = (speaker.left + speaker.right) / 2 - canvas.scaled(4);
    const int centre = (speaker.top + speaker.bottom) / 2 + canvas.scaled(3);
    const int unit = canvas.scaled(4);
    const COLORREF shade = muted_ ? colour::off : colour::text;
    canvas.fill({middle - 2 * unit, centre - unit, middle - unit, centre + unit}, shade);
    canvas.polygon({{middle - unit, centre - unit},
                    {middle + unit / 2, centre - 2 * unit},
                    {middle + unit / 2, centre + 2 * unit},
                    {middle - unit, centre + unit}},
                   shade);
    if (muted_) {
        const int x = middle + 2 * unit + unit / 2;
        const int d = unit;
        const int t = std::max(1, canvas.scaled(1));
        canvas.polygon(
            {{x - d, centre - d}, {x - d + t, centre - d}, {x + d, centre + d}, {x + d - t, centre + d}},
            colour::recording);
        canvas.polygon(
            {{x + d, centre - d}, {x + d - t, centre - d}, {x - d, centre + d}, {x - d + t, centre + d}},
            colour::recording);
    } else {
        canvas.fill({middle + unit + unit / 2, centre - unit, middle + 2 * unit, centre + unit}, shade);
        canvas.fill({middle + 2 * unit + unit / 2, centre - 2 * unit, middle + 3 * unit, centre + 2 * unit},
                    shade);
    }
    const int barWidth = (rest.width() - canvas.scaled(3)) / 2;
    for (size_t i = 0; i < drawn_dB_.size(); ++i) {
        Area bar = i == 0 ? rest.takeLeft(barWidth) : rest.takeRight(barWidth);
        canvas.fill(bar, colour::panel);
        const auto heightOf = [&](double level) {
            return static_cast<int>(bar.height() * (level - silence_dB) / -silence_dB);
        };
        const int filled = heightOf(drawn_dB_[i]);
        const struct {
            double from;
            double to;
            COLORREF shade;
        } parts[] = {{silence_dB, loud_dB, colour::live},
                     {loud_dB, tooLoud_dB, colour::warning},
                     {tooLoud_dB, 0.0, colour::alarm}};
        for (const auto& part : parts) {
            const int from = heightOf(part.from);
            const int to = std::min(filled, heightOf(part.to));
            if (to > from) {
                canvas.fill({bar.left, bar.bottom - to, bar.right, bar.bottom - from}, part.shade);
            }
        }
    }
}

} // namespace app
