#include "app/player.h"

#include <algorithm>
#include <cmath>

namespace app {

namespace {

/// The engine never replays the last frame of a file, and the one before may be in writing.
constexpr std::uint64_t unfinished_frames = 2;

/// A replay that is so near to live that no more of the file is gained has caught up.
constexpr std::uint64_t leastGain_frames = 12;

constexpr std::int64_t keepAgain_ms = 1000;

/// Frames of the ring that a shown frame may be from being gone.
std::uint64_t safeMargin(const EngineState& state) {
    return std::max<std::uint64_t>(5, state.ringFrames / 5);
}

std::uint64_t difference(std::uint64_t a, std::uint64_t b) {
    return a > b ? a - b : b - a;
}

} // namespace

void Player::showOld(const Reel* old, FrameSpan range) {
    reel_ = old ? old : &evening_;
    range_.reset();
    alone_ = false;
    show_ = Show::nothing;
    if (old) {
        show_ = Show::replay;
        held_ = true;
        speed_ = 1.0;
        segment_ = 0;
        span_ = range;
        place_ = old->segments().front().placeOf(range.first);
    }
}

void Player::reset(bool live) {
    reel_ = &evening_;
    show_ = live ? Show::live : Show::nothing;
    range_.reset();
    livePlace_.reset();
    speed_ = 1.0;
}

std::optional<std::uint64_t> Player::place() const {
    return show_ == Show::nothing ? std::nullopt : show_ == Show::live ? livePlace_ : std::optional(place_);
}

bool Player::inRing(const EngineState& state, std::uint64_t place, std::uint64_t margin) const {
    const std::optional<Place> found = ofEvening() ? reel_->find(place) : std::nullopt;
    return found && reel_->segments()[found->segment].growing && found->frame < state.captured &&
           found->frame + state.ringFrames >= state.captured + margin;
}

bool Player::onDisk(const EngineState& state, const Segment& segment, std::uint64_t frame) const {
    return !segment.file.empty() && (!segment.growing || frame + unfinished_frames < state.recording.written);
}

Player::Result Player::goLive() {
    const bool already = show_ == Show::live;
    if (!engine_.state().built) {
        return Result::nothing;
    }
    if (!engine_.live()) {
        return Result::refused;
    }
    reset(true);
    return already ? Result::alreadySo : Result::done;
}

Player::Result Player::hold() {
    if (show_ == Show::nothing || (show_ == Show::live && !livePlace_)) {
        return Result::nothing;
    }
    if (held()) {
        return Result::alreadySo;
    }
    if (!engine_.pause()) {
        return Result::refused;
    }
    // The engine's position is one further than the picture by now.
    const EngineState state = engine_.state();
    if (show_ == Show::live) {
        const Segment& last = evening_.last();
        place_ = state.shown >= last.firstFrame && state.shown < last.firstFrame + last.frames
                     ? last.placeOf(state.shown)
                     : *livePlace_;
        return showInRing(last.frameOf(place_));
    }
    if (!expected_ && state.shown != noFrame && span_.holds(state.shown)) {
        place_ = segment().placeOf(state.shown);
    }
    return holdAt(place_) ? Result::done : Result::refused;
}

bool Player::holdAt(std::uint64_t place) {
    place_ = place;
    held_ = true;
    expected_.reset();
    return engine_.pause() && engine_.seek(segment().frameOf(place));
}

Player::Result Player::showInRing(std::uint64_t frame) {
    // Where nothing is shown any more, the engine may still replay what was shown.
    const bool isLive = show_ == Show::live || show_ == Show::liveHeld;
    if ((!isLive && !engine_.live()) || !engine_.pause() || !engine_.seek(frame)) {
        return Result::refused;
    }
    show_ = Show::liveHeld;
    segment_ = evening_.segments().size() - 1;
    place_ = evening_.last().placeOf(frame);
    expected_.reset();
    triedToKeep_ms_ = 0;
    return Result::done;
}

Player::Result Player::showPlace(std::uint64_t place) {
    const std::optional<Place> found = reel_->find(place);
    if (!found) {
        return Result::nothing;
    }
    const EngineState state = engine_.state();
    const bool reached = show_ == Show::replay && found->segment == segment_ && span_.holds(found->frame);
    if (reached) {
        return holdAt(place) ? Result::done : Result::refused;
    }
    if (inRing(state, place, safeMargin(state))) {
        return showInRing(found->frame);
    }
    const Result cued = cue(state, place);
    const bool there = cued == Result::done && place_ == place;
    if (!there && inRing(engine_.state(), place, 1)) {
        return showInRing(found->frame);
    }
    return there || cued != Result::done ? cued : Result::notOnDisk;
}

/// Holds a place in a replay of its file, or, when the file ends before it, the last one that is there.
Player::Result Player::cue(const EngineState& state, std::uint64_t place) {
    const std::optional<Place> found = reel_->find(place);
    if (!found) {
        return Result::nothing;
    }
    const Segment& segment = reel_->segments()[found->segment];
    if (show_ == Show::replay && found->segment == segment_ && span_.holds(found->frame)) {
        return holdAt(place) ? Result::done : Result::refused;
    }
    if (segment.file.empty() || segment.frames < unfinished_frames) {
        return Result::notOnDisk;
    }
    const bool there = onDisk(state, segment, found->frame);
    if (!there && !inRing(state, place, 1)) {
        return Result::notOnDisk;
    }
    const FrameSpan all{segment.firstFrame, segment.frameOf(segment.places().last)};
    const std::optional<FrameSpan> range = engine_.replay(segment.file, all, found->frame);
    if (!range) {
        return Result::refused;
    }
    show_ = Show::replay;
    segment_ = found->segment;
    span_ = *range;
    held_ = true;
    place_ = segment.placeOf(std::clamp(found->frame, span_.first, span_.last));
    expected_.reset();
    return Result::done;
}

void Player::expect(std::uint64_t place) {
    place_ = place;
    expected_ = segment().frameOf(place);
    strays_ = 0;
}

Player::Result Player::run(double speed) {
    if (!engine_.setSpeed(speed) || !engine_.resume()) {
        return Result::refused;
    }
    speed_ = speed;
    held_ = false;
    expect(place_);
    return Result::done;
}

Player::Result Player::runFrom(const EngineState& state, std::uint64_t place) {
    const bool reached = show_ == Show::replay && reel_->find(place) &&
                         reel_->find(place)->segment == segment_ && span_.holds(segment().frameOf(place));
    if (reached && !held_) {
        expect(place);
        return engine_.seek(*expected_) ? Result::done : Result::refused;
    }
    const Result cued = cue(state, place);
    return cued == Result::done ? run(speed_) : cued;
}

Player::Result Player::play(double speed) {
    if (show_ == Show::live && speed > 0) {
        return Result::alreadySo;
    }
    if (show_ == Show::live) {
        if (const Result result = hold(); result != Result::done) {
            return result;
        }
    }
    if (show_ == Show::nothing) {
        return Result::nothing;
    }
    if (range_ && (!range_->holds(place_) || place_ == (speed > 0 ? range_->last : range_->first))) {
        range_.reset();
        alone_ = false;
    }
    if (show_ == Show::liveHeld) {
        if (const Result result = cue(engine_.state(), place_); result != Result::done) {
            return result;
        }
    }
    return run(speed);
}

Player::Result Player::playRange(FrameSpan range, bool alone) {
    const Result result = cue(engine_.state(), range.first);
    if (result != Result::done) {
        return result;
    }
    range_ = range;
    alone_ = alone;
    return run(1.0);
}

Player::Result Player::setSpeed(double speed) {
    if (!engine_.setSpeed(speed)) {
        return Result::refused;
    }
    speed_ = speed;
    return Result::done;
}

Player::Result Player::restore() {
    if (show_ == Show::live || show_ == Show::nothing) {
        return Result::done;
    }
    const bool running = !held();
    const std::uint64_t wanted = reel_->nearest(place_);
    // The engine is live by now, whatever was shown.
    show_ = Show::live;
    const EngineState state = engine_.state();
    const Result result = running ? runFrom(state, wanted) : showPlace(wanted);
    if (result != Result::done) {
        goLive();
    }
    return result;
}

Player::Event Player::follow(const EngineState& state, std::uint64_t frame, std::int64_t now_ms) {
    switch (show_) {
    case Show::nothing:
        return Event::none;
    case Show::live: {
        const bool any = !evening_.segments().empty() && evening_.last().there();
        const Segment* const last = any ? &evening_.last() : nullptr;
        // Right after the start of a file the engine still tells of the one before.
        const bool its = last && frame >= last->firstFrame && frame - last->firstFrame < last->frames;
        livePlace_ = its ? last->placeOf(frame) : last ? std::optional(last->places().last) : std::nullopt;
        return Event::none;
    }
    case Show::liveHeld:
        keepHeldPicture(state, now_ms);
        return Event::none;
    case Show::replay:
        break;
    }
    if (held_ || frame == noFrame) {
        return Event::none;
    }
    // A window that was held up, or a disk, may have it arrive late: what is near enough grows with time.
    const double reach = std::max(4.0, 4.0 * std::abs(speed_)) * (1 + strays_);
    if (!span_.holds(frame) || (expected_ && static_cast<double>(difference(frame, *expected_)) > reach)) {
        ++strays_;
        return Event::none;
    }
    expected_.reset();
    place_ = segment().placeOf(frame);
    return advance(state);
}

/// The ring goes on under a held picture. What is in the file by then is shown from there, under the same
/// number.
void Player::keepHeldPicture(const EngineState& state, std::int64_t now_ms) {
    const std::uint64_t frame = evening_.last().frameOf(place_);
    if (inRing(state, place_, safeMargin(state)) || !onDisk(state, segment(), frame) ||
        (triedToKeep_ms_ != 0 && now_ms - triedToKeep_ms_ < keepAgain_ms)) {
        return;
    }
    triedToKeep_ms_ = now_ms;
    const std::uint64_t kept = place_;
    if (cue(state, kept) == Result::done && place_ != kept && inRing(engine_.state(), kept, 1)) {
        showInRing(frame);
        triedToKeep_ms_ = now_ms;
    }
}

Player::Event Player::advance(const EngineState& state) {
    if (reel_->empty()) {
        return Event::none;
    }
    const FrameSpan bounds = range_ ? *range_ : *reel_->span();
    const bool forward = speed_ > 0;
    const double step = std::abs(speed_);
    // At more than one frame a tick the end may be stepped over.
    const auto reached = [step](std::uint64_t from, std::uint64_t to, bool past) {
        return past || from == to || (step > 1 && static_cast<double>(difference(from, to)) < step);
    };
    const std::uint64_t bound = forward ? bounds.last : bounds.first;
    if (reached(place_, bound, forward ? place_ > bound : place_ < bound)) {
        return atEnd(state, bounds);
    }
    const std::uint64_t frame = segment().frameOf(place_);
    const std::uint64_t border = forward ? span_.last : span_.first;
    return reached(frame, border, false) ? overBorder(state) : Event::none;
}

Player::Event Player::atEnd(const EngineState& state, FrameSpan bounds) {
    const bool forward = speed_ > 0;
    const std::uint64_t bound = forward ? bounds.last : bounds.first;
    if (!range_ && ofEvening() && forward && state.built) {
        return catchUp();
    }
    const bool goesOn = (range_ || !ofEvening()) && !alone_;
    if (goesOn && mode_ == PlayMode::loop) {
        runFrom(state, forward ? bounds.first : bounds.last);
        return Event::none;
    }
    if (goesOn && mode_ == PlayMode::pingPong) {
        setSpeed(-speed_);
        runFrom(state, bound);
        return Event::none;
    }
    const Place end = *reel_->find(reel_->nearest(bound));
    if (end.segment == segment_ && span_.holds(end.frame)) {
        holdAt(reel_->nearest(bound));
    } else {
        holdAt(place_);
    }
    return Event::ended;
}

/// The picture stands at the end of what the engine replays, but there is more.
Player::Event Player::overBorder(const EngineState& state) {
    const FrameSpan file = segment().places();
    // A file that turns out shorter than it was said to be is left at its end.
    const std::uint64_t from = segment().growing ? place_ : speed_ > 0 ? file.last : file.first;
    const std::uint64_t next = reel_->moved(from, speed_ > 0 ? 1 : -1);
    if (!segment().growing && next == from) {
        return holdAt(place_), Event::ended;
    }
    if (reel_->find(next)->segment != segment_) {
        return runFrom(state, next) == Result::done ? Event::none : (holdAt(place_), Event::ended);
    }
    const std::uint64_t written = state.recording.written;
    const std::uint64_t wanted =
        range_ ? std::min(range_->last, segment().places().last) : segment().places().last;
    const std::uint64_t gain =
        std::min(written - std::min(written, unfinished_frames + 1), segment().frameOf(wanted));
    const std::uint64_t gained = gain - std::min(gain, span_.last);
    const bool enough = gained >= leastGain_frames || (range_ && gain == segment().frameOf(wanted));
    if (gained > 0 && enough) {
        return runFrom(state, next) == Result::done ? Event::none : (holdAt(place_), Event::ended);
    }
    if (!range_ && state.built) {
        return catchUp();
    }
    // The rest of the range is about to be written.
    expect(place_);
    engine_.seek(*expected_);
    return Event::none;
}

Player::Event Player::catchUp() {
    goLive();
    return Event::toLive;
}

} // namespace app
