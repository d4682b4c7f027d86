/// @file
/// What the session needs of the engine.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace app {

/// A number that no frame has.
inline constexpr std::uint64_t noFrame = ~0ull;

/// Frames `first` to `last`, both included.
struct FrameSpan {
    std::uint64_t first = 0;
    std::uint64_t last = 0;

    bool operator==(const FrameSpan&) const = default;
    /// Whether `frame` lies in it.
    bool holds(std::uint64_t frame) const { return first <= frame && frame <= last; }
    /// How many frames it has.
    std::uint64_t length() const { return last - first + 1; }
};

/// The engine at one moment. Frames have the numbers of the recording that runs, which begin with 0 at every
/// `startRecord`; a replay's numbers are those of its file.
struct EngineState {
    /// How the camera is.
    enum class Camera {
        none,    ///< no capture graph is built
        live,    ///< frames come
        silent,  ///< it is there, but no frame has come for a second
        gone,    ///< the device is gone or has failed
        changed, ///< it is back with another format; nothing is captured until `start`
    };

    /// How the recording goes that was started last.
    struct Recording {
        bool on = false;       ///< its file is open
        bool failing = false;  ///< the newest write failed
        bool behind = false;   ///< the disk is too slow, frames are lost
        bool complete = false; ///< it has ended, and its file is whole
        std::uint64_t written = 0;
        std::uint64_t lost = 0;                         ///< overwritten before they were written
        std::uint64_t failed = 0;                       ///< could not be written
        std::optional<std::uint64_t> driveSpace_frames; ///< room on its drive, when it is known
        std::wstring error; ///< what failed first, without a full stop; empty: nothing
    };

    bool built = false; ///< a camera's graph is built
    Camera camera = Camera::none;
    unsigned long cameraSince_ms = 0;     ///< for how long the camera has been so
    std::uint64_t captured = 0;           ///< one past the newest captured frame
    std::uint64_t shown = noFrame;        ///< number of the picture that is shown
    unsigned long frameBytes = 0;         ///< of the camera's frames; 0: not known
    std::int64_t frameDuration_100ns = 0; ///< the same
    unsigned long ringFrames = 0;         ///< how many of the newest frames are in memory
    std::uint64_t unreadableFrom = 0;     ///< frames of the replay that could not be read ...
    std::uint64_t unreadable = 0;         ///< ... and how many; 0: none
    std::wstring unreadableError;
    bool pictureDisturbed = false; ///< clock, renderer or play graph do not show what they should
    Recording recording;
};

/// The engine as the session drives it: from one thread, the window's. Commands that fail change nothing and
/// leave the reason in `explanation`.
class Engine {
public:
    virtual ~Engine() = default;

    /// Builds the engine on the camera of the settings and goes live; takes up to five seconds. Anew when it
    /// is built already: numbers from 0, no recording.
    virtual bool start() = 0;
    /// Ends recording and replay and takes everything apart.
    virtual void stop() = 0;

    /// Back to the newest frame, not held, at speed 1.
    virtual bool live() = 0;
    /// Holds the shown picture.
    virtual bool pause() = 0;
    /// Lets it go on.
    virtual bool resume() = 0;
    /// Prepares a replay of frames `range` of `file` and holds it at frame `at`, at speed 1. The range is cut
    /// to what the file holds (never its last frame), and the range that it has become is returned; `at` is
    /// cut to that. Without a camera a play graph for that file is built. Nothing when it cannot be played;
    /// what was shown goes on.
    virtual std::optional<FrameSpan> replay(const std::wstring& file, FrameSpan range, std::uint64_t at) = 0;
    /// Frames per tick: fractions slow down, negative values go backward.
    virtual bool setSpeed(double framesPerTick) = 0;
    /// Shows `frame` next: in a replay one of its range, live one that is in memory.
    virtual bool seek(std::uint64_t frame) = 0;

    /// Records into a new file: numbers begin at 0, the ring is emptied, and play goes live.
    virtual bool startRecord(const std::wstring& file) = 0;
    /// Completes the recording. Capture goes on under the same numbers.
    virtual void stopRecord() = 0;

    /// Gives a marker to the engine.
    virtual bool call(const std::string& text) = 0;
    /// Writes a line into the engine's log.
    virtual void log(const std::wstring& text) = 0;

    /// How it is now. Cheap: asked several times in each tick.
    virtual EngineState state() = 0;
    /// Why the last command failed, without a full stop.
    virtual std::wstring explanation() const = 0;
};

} // namespace app
