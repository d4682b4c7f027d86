/// @file
/// What the window draws.
#pragma once

#include "app/clips.h"
#include "app/reel.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace app {

/// How a range is played.
enum class PlayMode { once, loop, pingPong };

/// Which lines of a held picture are shown.
enum class Field { both, first, second };

/// Everything that a window shows, as it is after the last call of the session. All texts are in the
/// operator's language.
struct View {
    /// What the picture is.
    enum class Mode {
        noCamera, ///< there is none, and no recording is open: the picture is empty
        noSignal, ///< live, but the camera is gone or silent; the picture is the last one
        live,
        held,         ///< a live picture that is held
        replay,       ///< of this evening's material, running or held
        playlist,     ///< the clips one after the other
        oldRecording, ///< an opened recording, running or held
    };

    /// How the recording is.
    enum class Recording {
        off,       ///< nothing is recorded
        rolling,   ///< the rolling file: nothing is kept for long
        recording, ///< into a file of its own
        failing,   ///< frames are missing from the file at this moment, or it has ended by itself
    };

    /// A trouble that stands as long as it lasts. The smaller number is the weightier.
    struct Alarm {
        enum class Weight { recording, drive, signal, picture, settings };
        Weight weight = Weight::settings;
        std::wstring text;
        bool operator==(const Alarm&) const = default;
    };

    /// A line about what was done, or why not. It stays until the next one or a key.
    struct Message {
        std::wstring text;        ///< empty: none
        bool refused = false;     ///< something could not be done
        std::uint64_t serial = 0; ///< another one for each message
    };

    /// A clip on the timeline and in the list.
    struct ClipRow {
        Clip clip;
        std::optional<FrameSpan> places; ///< in the reel that is shown; nothing: it lies in another one
        std::wstring timeOfDay;          ///< "13:45:07"
        std::wstring length;             ///< "4.2 s"
        bool chosen = false;
        bool playing = false;
        bool gone = false; ///< its file is not there any more
    };

    /// A file on the timeline.
    struct Part {
        std::wstring name; ///< without folder
        FrameSpan places;
        bool rolling = false;
        bool growing = false;
    };

    /// A gap on the timeline.
    struct GapMark {
        std::uint64_t before = 0; ///< the first place behind it
        std::wstring text;        ///< "no picture for 4.2 s"
    };

    /// The timeline: places of the reel that is shown.
    struct Line {
        std::optional<FrameSpan> whole;        ///< all that can be shown; nothing: no material
        std::optional<FrameSpan> current;      ///< the file whose picture is shown
        std::optional<FrameSpan> ring;         ///< in memory
        std::optional<FrameSpan> onDisk;       ///< of the file that is recorded now, what is written
        std::optional<std::uint64_t> liveEdge; ///< the newest frame; nothing in an old recording
        std::optional<std::uint64_t> position; ///< the picture that is shown
        std::optional<std::uint64_t> markIn;
        std::optional<FrameSpan> range; ///< what is played
        std::vector<Part> parts;
        std::vector<GapMark> gaps;
    };

    Mode mode = Mode::noCamera;
    std::wstring source;           ///< whose picture it is: "LIVE", "REPLAY 13:45:07", "OLD RECORDING name"
    std::wstring file;             ///< path of the picture's recording; empty: none
    std::uint64_t frame = noFrame; ///< its number there
    bool inRing = false;           ///< the engine's ring holds that frame, under that number
    bool held = false;             ///< the picture stands
    double speed = 1.0;     ///< frames per tick that are, or when held would be, played; negative: backward
    std::wstring speedText; ///< "1/3", "-2 x", "held"
    PlayMode playMode = PlayMode::once;
    std::wstring playModeText;
    Field field = Field::both;
    std::int64_t timeOfDay_ms = 0; ///< of the picture; 0: not known
    std::wstring timeOfDay;        ///< "13:45:07.480"; empty: not known
    std::wstring position;         ///< time from the start of its file, "0:12:34.56"

    Recording recording = Recording::off;
    std::wstring recordingText; ///< "ROLLING, at least 10 min", "REC 0:12:34 name", "FAILING: ..."
    std::wstring recordingFile; ///< path; also of the rolling file
    std::int64_t recorded_ms = 0;
    std::optional<std::int64_t> driveLeft_ms; ///< recording time that the drive has room for
    bool driveLow = false;                    ///< less than ten minutes
    std::wstring driveText;                   ///< "3:20 h left on D:"

    bool cameraBuilt = false;     ///< the engine has a camera
    std::int64_t noSignal_ms = 0; ///< for how long nothing has come; 0: all is well
    std::wstring noSignalText;    ///< "NO SIGNAL since 13:45:07 (12 s)"; empty: all is well

    Line line;
    std::vector<ClipRow> clips;
    std::optional<std::wstring> question; ///< to be confirmed, or dismissed, within its time
    Message message;
    std::vector<Alarm> alarms; ///< the weightiest first
    bool mute = true;
    bool showTime = true; ///< time of day over the picture
    bool quit = false;    ///< the window is to close
};

} // namespace app
