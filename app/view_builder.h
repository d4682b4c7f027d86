/// @file
/// From the state of the evening to what a window draws.
#pragma once

#include "app/clip_desk.h"
#include "app/engine.h"
#include "app/moment.h"
#include "app/player.h"
#include "app/recorder.h"
#include "app/settings.h"
#include "app/view.h"

#include <cstdint>
#include <optional>
#include <string>

namespace app {

/// Builds a view from what the parts of a session say. Lives no longer than they do.
class ViewBuilder {
public:
    ViewBuilder(const Settings& settings, const EngineState& state, const Player& player,
                const Recorder& recorder, const ClipDesk& clips, const Reel& evening)
        : settings_(settings), state_(state), player_(player), recorder_(recorder), clips_(clips),
          evening_(evening) {}

    Moment now;
    std::optional<std::int64_t> lossSince_ms; ///< since when no picture comes, on the steady clock
    std::optional<std::uint64_t> freeBytes;   ///< of the recordings' drive
    std::wstring ended;                       ///< what is to be said of a recording that ended by itself
    const ClipDesk* unsaved = nullptr;        ///< a desk that may have unsaved clips
    std::optional<std::size_t> playlistAt;    ///< position in the playlist that is played
    std::size_t playlistClips = 0;

    /// The view but for what the session itself keeps: message, question, field, switches.
    View build();

    /// "13:45:07.480", or "0:12:34.56" from the start of its file when the time of day is not known.
    static std::wstring placeText(const Reel& reel, std::uint64_t place);
    /// Where a clip lies in a reel, as far as it is there.
    static std::optional<FrameSpan> placesOf(const Reel& reel, const Clip& clip);
    /// The name of a way of playing.
    static Text modeText(PlayMode mode);

private:
    std::wstring say(Text id, const std::vector<std::wstring>& values = {}) const {
        return text(id, settings_.language, values);
    }
    std::wstring duration(std::int64_t length_ms) const {
        return durationText(length_ms, settings_.language);
    }
    void buildPicture();
    void buildSource();
    void buildRecording();
    void buildDrive();
    void buildSignal();
    void buildLine();
    void buildClips();
    void buildAlarms();
    void alarm(View::Alarm::Weight weight, std::wstring text);

    const Settings& settings_;
    const EngineState& state_;
    const Player& player_;
    const Recorder& recorder_;
    const ClipDesk& clips_;
    const Reel& evening_;
    View view_;
};

} // namespace app
