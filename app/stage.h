/// @file
/// What the parts of a session share.
#pragma once

#include "app/clip_desk.h"
#include "app/command.h"
#include "app/disk.h"
#include "app/engine.h"
#include "app/moment.h"
#include "app/player.h"
#include "app/recorder.h"
#include "app/recordings.h"
#include "app/reel.h"
#include "app/settings.h"
#include "app/text.h"
#include "app/view.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace app {

/// The clips that are played one after the other.
struct Playlist {
    std::vector<std::uint64_t> clips; ///< by their ids
    std::size_t at = 0;               ///< which of them is played
};

/// What a session's transport, clips and capture work on: the engine and its last state, the material of the
/// evening and the old recording that is shown instead, who plays and who records, and what was last said to
/// the operator. Its data is theirs to change. One thread.
struct Stage {
    Stage(Engine& engine, Disk& disk, Recordings& recordings, const Settings& settings);
    Stage(const Stage&) = delete;
    Stage& operator=(const Stage&) = delete;

    /// How long what failed by itself rests until it is tried again.
    static constexpr std::int64_t retryPeriod_ms = 10000;

    /// Asks the engine how it is, and lets the reel grow.
    void look();
    /// The reel that is shown.
    const Reel& reel() const { return old ? *old : evening; }
    /// The clips that are shown.
    ClipDesk& clips() { return old ? oldClips : eveningClips; }
    /// Where a clip lies in the reel that is shown; nothing when it is not there.
    std::optional<FrameSpan> placesOf(const Clip& clip) const;
    /// Shows the evening instead of an old recording, whose clips are saved.
    void closeOld();
    /// The engine is live after a start of a recording: shows what was shown before.
    void restoreShown();

    /// Shows a message.
    void tell(const std::wstring& text, bool refused);
    /// Tells of an effect, or of why there is none; for the outcome of a command.
    Outcome done(Text id, const std::vector<std::wstring>& values = {});
    Outcome told(Text id, const std::vector<std::wstring>& values = {}); ///< see there
    /// Tells that a command wants another argument.
    Outcome needs(Command command);
    /// Tells why the player did not do something.
    Outcome report(Player::Result result);
    /// A place, as time of day or as time in its file.
    std::wstring placeText(std::uint64_t place) const;
    /// How long a range is.
    std::wstring lengthText(FrameSpan places) const;

    Engine& engine;
    Disk& disk;
    Recordings& recordings;
    Settings settings;
    Reel evening;
    std::optional<Reel> old; ///< an old recording that is shown instead
    Player player;
    Recorder recorder;
    ClipDesk eveningClips;
    ClipDesk oldClips;
    EngineState state;
    Moment now; ///< of the last tick
    View::Message message;
    std::optional<Playlist> playlist;
};

} // namespace app
