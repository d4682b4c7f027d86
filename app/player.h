/// @file
/// Which picture is shown, and what follows it.
#pragma once

#include "app/engine.h"
#include "app/reel.h"
#include "app/view.h"

#include <cstdint>
#include <optional>

namespace app {

/// Shows the pictures of a reel with the engine: live, held, and replays over the borders of files, in ranges
/// that are played once, in a loop or to and fro.
///
/// The engine gets ranges as large as the file, so that steps and scrubbing never leave them, and the ends of
/// what the operator plays are kept here. A held live picture is shown from the ring; before the ring goes
/// over it, it becomes a held replay of its file.
class Player {
public:
    /// What is shown.
    enum class Show {
        nothing,
        live,
        liveHeld, ///< a frame of the ring, held
        replay,   ///< frames of a file, held or running
    };

    /// What became of a wish.
    enum class Result {
        done,
        nothing,   ///< there is no such picture at all
        alreadySo, ///< it is so already
        notOnDisk, ///< it is in no file (yet), or not any more
        refused,   ///< by the engine, whose explanation says why
    };

    /// What happened by itself.
    enum class Event {
        none,
        ended,  ///< the end of what was played: held there
        toLive, ///< a replay has caught up with live
    };

    /// `evening` is the reel whose last file grows with the camera's frames. Both outlive this object.
    Player(Engine& engine, const Reel& evening) : engine_(engine), evening_(evening), reel_(&evening) {}
    Player(const Player&) = delete;
    Player& operator=(const Player&) = delete;

    /// Shows another reel from now on, whose first picture is already held in the engine's replay of its
    /// first file with that range. Null: the evening's again, of which nothing is shown yet.
    void showOld(const Reel* old, FrameSpan range);
    /// The engine was built anew, or taken apart: live, or nothing.
    void reset(bool live);
    /// A recording has begun, which made the engine live: shows what was shown before. Unless that was live,
    /// the file it came from may be another one now.
    Result restore();

    /// To the newest picture.
    Result goLive();
    /// Holds the picture that is shown.
    Result hold();
    /// Holds the picture of a place.
    Result showPlace(std::uint64_t place);
    /// Plays on from the picture that is shown; negative: backward. A range goes on to count unless its end
    /// is reached already.
    Result play(double speed);
    /// Plays a range from its start at speed 1; `alone`: once, whatever the mode.
    Result playRange(FrameSpan range, bool alone);
    /// Another speed or direction of a running replay.
    Result setSpeed(double speed);
    /// How ranges are played from now on.
    void setMode(PlayMode mode) { mode_ = mode; }

    /// Follows the engine, which has come to `frame`: its picture, or the one due in this tick.
    Event follow(const EngineState& state, std::uint64_t frame, std::int64_t now_ms);

    /// What is shown.
    Show show() const { return show_; }
    /// Whether the picture stands.
    bool held() const { return show_ == Show::liveHeld || (show_ == Show::replay && held_); }
    /// Whether the evening's reel is shown.
    bool ofEvening() const { return reel_ == &evening_; }
    const Reel& reel() const { return *reel_; }
    /// The picture's place; nothing when there is none.
    std::optional<std::uint64_t> place() const;
    /// Frames per tick of a replay; that of the last one while nothing is played.
    double speed() const { return speed_; }
    PlayMode mode() const { return mode_; }
    /// What is played; nothing: everything.
    const std::optional<FrameSpan>& range() const { return range_; }
    /// Whether the ring holds a place's frame for `margin` frames more.
    bool inRing(const EngineState& state, std::uint64_t place, std::uint64_t margin) const;

private:
    Result showInRing(std::uint64_t frame);
    Result cue(const EngineState& state, std::uint64_t place);
    bool onDisk(const EngineState& state, const Segment& segment, std::uint64_t frame) const;
    void expect(std::uint64_t place);
    Result run(double speed);
    Result runFrom(const EngineState& state, std::uint64_t place);
    bool holdAt(std::uint64_t place);
    void keepHeldPicture(const EngineState& state, std::int64_t now_ms);
    Event advance(const EngineState& state);
    Event atEnd(const EngineState& state, FrameSpan bounds);
    Event overBorder(const EngineState& state);
    Event catchUp();
    const Segment& segment() const { return reel_->segments()[segment_]; }

    Engine& engine_;
    const Reel& evening_;
    const Reel* reel_;
    Show show_ = Show::nothing;
    bool held_ = false;
    bool alone_ = false;
    double speed_ = 1.0;
    PlayMode mode_ = PlayMode::once;
    std::optional<FrameSpan> range_;
    std::uint64_t place_ = 0;
    std::optional<std::uint64_t> livePlace_;
    /// The engine's replay: a file of the reel, and what of it can be reached.
    std::size_t segment_ = 0;
    FrameSpan span_;
    /// The frame that the engine was sent to: until it comes near, it still tells of what was before.
    std::optional<std::uint64_t> expected_;
    int strays_ = 0; ///< reports since then that were not near
    std::int64_t triedToKeep_ms_ = 0;
};

} // namespace app
