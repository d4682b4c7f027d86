/// @file
/// The sound of the frames that are shown.
#pragma once

#include "app/window/frame_follower.h"
#include "app/window/sound_output.h"

#include <atomic>
#include <functional>
#include <mutex>

namespace app {

/// Takes the sound out of the frames that are shown, on a thread of its own, plays it unless it is mute, and
/// keeps the samples for the level meter.
class SoundFollower : public FrameFollower {
public:
    SoundFollower() { start(); }
    ~SoundFollower() override { stop(); }

    /// Whether the sound can be heard; it is mute at first. What does not run at normal speed is silent, too.
    void setMuted(bool muted) { muted_ = muted; }
    /// The sides of the picture as the newest frame says, width to height.
    dvAspect aspect();
    /// Hands the samples that came since the last call to the meter.
    void meter(const std::function<void(const std::int16_t*, size_t count, unsigned channels)>& take);
    /// Why nothing can be heard, told once; empty when there is nothing to tell.
    std::wstring complaint();

private:
    void take(const std::vector<unsigned char>& bytes) override;
    void rest() override;

    std::atomic<bool> muted_ = true;
    std::mutex resultLock_;
    std::vector<std::int16_t> samples_; // under the lock, like all up to the complaint
    unsigned channels_ = 0;
    dvAspect aspect_;
    std::wstring complaint_;
    // The thread's own.
    dvSound sound_;
    SoundOutput output_;
    bool complained_ = false;
};

} // namespace app
