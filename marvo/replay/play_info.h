/// @file
/// What the host is told about play.
#pragma once

#include <cstdint>

/// The progress record that a host hands to `dvFrontEnd::setInfoDrain`. The play filter fills it once per
/// tick and then posts the host's message; it does not wait for the host, so a slow host may read values that
/// are newer than the message.
struct play_info {
    std::uint64_t frame = 0; ///< frame number being shown
    std::uint64_t from = 0;  ///< first frame of the active replay range
    std::uint64_t to = 0;    ///< last frame of the active replay range, inclusive
    std::uint64_t last = 0;  ///< one past the newest captured frame; 0 without a frame store
    bool replaying = false;  ///< a replay range is active (not live)
    bool recording = false;  ///< recording to file is on

    play_info() = default;

    /// All fields, in their order.
    play_info(std::uint64_t shown, std::uint64_t first, std::uint64_t final, std::uint64_t newest,
              bool isReplaying, bool isRecording)
        : frame(shown), from(first), to(final), last(newest), replaying(isReplaying), recording(isRecording) {
    }
};

/// All of play at one moment.
struct play_state {
    play_info info;         ///< as the info drain tells it, but `frame`: the frame that is shown
    bool paused = false;    ///< the shown frame is held
    double speed = 1.0;     ///< frames per tick
    std::uint64_t next = 0; ///< the frame that is due next
};
