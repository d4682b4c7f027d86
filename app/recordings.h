/// @file
/// What the session wants to know about files of recordings.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace app {

/// What is known of a recording's file.
struct RecordingFacts {
    std::uint64_t frames = 0;
    unsigned long frameBytes = 0; ///< of its DV frames; 0: they differ or are not known
    std::int64_t frameDuration_100ns = 0;
    std::optional<std::int64_t> recordedAt_ms; ///< time of day of frame 0 (see Moment); nothing: not known
};

/// Looks into files of recordings, whatever their kind. The window implements it with the engine's reader,
/// tests with a table.
class Recordings {
public:
    virtual ~Recordings() = default;

    /// Opens `file` and says what it holds; nothing, with the reason in `why` (which names the file, and has
    /// no full stop), when it is no recording.
    virtual std::optional<RecordingFacts> look(const std::wstring& file, std::wstring& why) = 0;
    /// The time code of a frame as "hh:mm:ss:ff"; empty when there is none.
    virtual std::wstring timeCode(const std::wstring& file, std::uint64_t frame) = 0;
};

} // namespace app
