/// @file
/// What of a replay cannot be read.
#pragma once

#include <cstdint>

/// The frames of a replay that could not be read when they were tried last: the file was cut, another one was
/// written over it, or the disk does not answer.
struct play_error {
    std::uint64_t first = 0;  ///< the first of them
    std::uint64_t frames = 0; ///< how many, within the range that is played; 0: every frame could be read
    std::uint32_t error = 0;  ///< the system's code, ERROR_HANDLE_EOF for frames that are gone from the file

    /// Whether `frame` is one of them.
    bool holds(std::uint64_t frame) const { return frame >= first && frame - first < frames; }
    /// Whether both tell the same.
    bool operator==(const play_error& other) const {
        return first == other.first && frames == other.frames && error == other.error;
    }
};
