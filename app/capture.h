/// @file
/// Camera and recording.
#pragma once

#include "app/command.h"

#include <cstdint>
#include <optional>
#include <string>

namespace app {

struct Stage;

/// What starts, ends and begins anew what is captured: the camera, the recording, the rolling file; by the
/// operator's commands and by itself.
class Capture {
public:
    /// `stage` outlives this object.
    explicit Capture(Stage& stage) : stage_(stage) {}

    /// Looks for the camera, and begins the rolling file. False without a camera, which is told.
    bool start();
    /// Begins a recording.
    Outcome record();
    /// Ends the recording, and goes on with the rolling file.
    void stop();
    /// Starts anew when there is no camera, or none that sends.
    Outcome lookForCamera();
    /// Follows camera, recording and drive, and begins the next rolling file when this one is long enough;
    /// every tick.
    void watch();

    /// Since when the camera sends nothing, on the steady clock; nothing while it does.
    std::optional<std::int64_t> lossSince_ms() const;
    /// What is to be said of a recording that ended by itself; empty without one.
    const std::wstring& ended() const { return ended_; }
    /// What the drive of the recordings has left; nothing when that is not known.
    std::optional<std::uint64_t> freeBytes() const { return freeBytes_; }

private:
    struct Loss {
        std::int64_t since_ms;   ///< on the steady clock
        std::uint64_t nextPlace; ///< of the first frame behind it, unless another file begins before
    };

    bool startEngine();
    bool startRolling();
    void restartForOtherFormat();
    void watchCamera();
    void watchRecording();
    void watchDrive();
    void roll();

    Stage& stage_;
    std::optional<Loss> loss_;
    std::optional<std::uint64_t> freeBytes_;
    std::int64_t driveAsked_ms_ = 0;
    std::int64_t rollingTried_ms_ = 0;
    std::optional<std::int64_t> restartAt_ms_;
    bool restartRecords_ = false;
    std::wstring ended_;
};

} // namespace app
