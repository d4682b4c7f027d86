/// @file
/// How loud the sound is.
#pragma once

#include "app/window/window.h"

#include <array>
#include <cstdint>

namespace app {

/// Two upright bars beside the picture: the peak of the left and of the right channel, in decibels below full
/// scale, which falls back slowly so that an eye can follow.
class LevelMeter : public Panel {
public:
    /// Takes the samples of a frame, of all channels in turn; the first two channels are shown.
    void take(const std::int16_t* samples, size_t count, unsigned channels);
    /// A tick of the picture has passed: what is shown falls.
    void tick();
    /// Whether the sound can be heard; else the meter shows that it is mute.
    void setMuted(bool muted);
    /// The newest peaks, in decibels; -60 and less is silence.
    double level_dB(size_t channel) const { return level_dB_[channel]; }

protected:
    void paint(Canvas& canvas, const Area& area) override;

private:
    static constexpr double silence_dB = -60.0;

    std::array<double, 2> level_dB_ = {silence_dB, silence_dB};
    std::array<double, 2> drawn_dB_ = {silence_dB, silence_dB};
    bool muted_ = true;
};

} // namespace app
