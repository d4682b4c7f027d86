#include "app/session.h"

#include "app/rolling_file.h"
#include "app/view_builder.h"

#include <algorithm>
#include <cmath>
#include <cwchar>

namespace app {

namespace {

constexpr std::int64_t questionTime_ms = 3000;
constexpr std::int64_t drivePeriod_ms = 2000;
constexpr std::int64_t retryPeriod_ms = 10000;
constexpr double clipSeconds = 10.0;
constexpr double fastest = 4.0;

/// The speeds that J and L go up.
constexpr double shuttleSpeeds[] = {1.0, 2.0, 4.0};

std::optional<double> numberOf(const std::wstring& text) {
    std::wstring plain = text;
    std::replace(plain.begin(), plain.end(), L',', L'.');
    wchar_t* end = nullptr;
    const double value = std::wcstod(plain.c_str(), &end);
    const bool whole = !plain.empty() && end == plain.c_str() + plain.size() && std::isfinite(value);
    return whole ? std::optional(value) : std::nullopt;
}

} // namespace

Session::Session(Engine& engine, Disk& disk, Recordings& recordings, const Settings& settings)
    : engine_(engine), disk_(disk), recordings_(recordings), settings_(settings), player_(engine, evening_),
      recorder_(engine, disk, recordings, evening_), eveningClips_(disk), oldClips_(disk) {
    recorder_.set(folder(), settings_.raw);
    refresh();
}

// Every public call ends with a fresh view.

/// A command: a key takes the message of the one before away.
template <class Act>
Outcome Session::acted(Act act) {
    const std::uint64_t serial = message_.serial;
    state_ = engine_.state();
    recorder_.follow(state_);
    const Outcome outcome = act();
    if (message_.serial == serial && outcome != Outcome::told) {
        message_.text.clear();
    }
    refresh();
    return outcome;
}

bool Session::start(Moment now) {
    now_ = now;
    const bool started = startEngine();
    if (started) {
        if (recorder_.startRolling(now_)) {
            done(Text::toldCameraFound);
        }
    }
    refresh();
    return started;
}

/// Builds the engine anew: live, and not recording yet.
bool Session::startEngine() {
    const bool started = engine_.start();
    closeOld();
    playlist_.reset();
    loss_.reset();
    player_.reset(started);
    recorder_.engineReset(started, now_);
    rollingTried_ms_ = now_.steady_ms;
    state_ = engine_.state();
    if (!started) {
        const std::wstring why = engine_.explanation();
        why.empty() ? told(Text::toldNoCamera) : told(Text::toldStartFailed, {why});
    }
    return started;
}

void Session::tick(Moment now) {
    now_ = now;
    state_ = engine_.state();
    recorder_.follow(state_);
    if (question_ && now_.steady_ms > question_->until_ms) {
        question_.reset();
    }
    watchCamera();
    watchRecording();
    watchDrive();
    roll();
    take(player_.follow(state_, state_.shown, now_.steady_ms));
    if (now_.steady_ms - clipsTried_ms_ >= retryPeriod_ms) {
        clipsTried_ms_ = now_.steady_ms;
        eveningClips_.save();
        oldClips_.save();
    }
    refresh();
}

void Session::shown(std::uint64_t frame) {
    state_ = engine_.state();
    recorder_.follow(state_);
    take(player_.follow(state_, frame, now_.steady_ms));
    refresh();
}

Outcome Session::perform(Command command, const std::wstring& argument) {
    return acted([&] {
        const bool answers = command == Command::confirm || command == Command::dismiss ||
                             (question_ && question_->command == command);
        if (!answers) {
            question_.reset();
        }
        return dispatch(command, argument);
    });
}

Outcome Session::scrubTo(std::uint64_t place) {
    return acted([&] { return showNearest(place); });
}

Outcome Session::jog(int frames) {
    return acted([&] { return frames == 0 ? Outcome::done : step(frames); });
}

Outcome Session::shuttle(int steps) {
    return acted([&] {
        if (player_.show() == Player::Show::live && steps > 0) {
            return told(Text::toldForwardInLive);
        }
        // 0 stands in the middle of the ladder, the speeds on both sides.
        constexpr int most = static_cast<int>(std::size(speeds));
        const bool standing = player_.held() || player_.show() == Player::Show::live;
        const double now = standing ? 0.0 : player_.speed();
        int rung = 0;
        for (int i = 0; i < most; ++i) {
            rung += std::abs(now) >= speeds[i] - 1e-9 ? 1 : 0;
        }
        const int wanted = std::clamp((now < 0 ? -rung : rung) + steps, -most, most);
        if (wanted == (now < 0 ? -rung : rung)) {
            return told(Text::toldFastest, {numberText(fastest, settings_.language)});
        }
        if (wanted == 0) {
            return hold();
        }
        return playAt(wanted > 0 ? speeds[wanted - 1] : -speeds[-wanted - 1]);
    });
}

Outcome Session::open(const std::wstring& file) {
    return acted([&] {
        question_.reset();
        for (const Segment& segment : evening_.segments()) {
            if (segment.there() && samePath(segment.file, file)) {
                closeOld();
                const Outcome outcome = showNearest(segment.start);
                if (player_.show() == Player::Show::nothing) {
                    player_.goLive();
                }
                return outcome == Outcome::done ? done(Text::toldOfThisEvening, {nameOf(file)}) : outcome;
            }
        }
        std::wstring why;
        const std::optional<RecordingFacts> facts = recordings_.look(file, why);
        if (!facts) {
            return told(Text::toldOpenFailed, {file, why});
        }
        if (facts->frames < 2) {
            return told(Text::toldTooShort, {file});
        }
        if (state_.built && facts->frameBytes != 0 && state_.frameBytes != 0 &&
            facts->frameBytes != state_.frameBytes) {
            return told(Text::toldOtherSystem, {nameOf(file), std::to_wstring(facts->frameBytes),
                                                std::to_wstring(state_.frameBytes)});
        }
        const std::optional<FrameSpan> range = engine_.replay(file, {0, facts->frames - 1}, 0);
        if (!range) {
            return told(Text::toldOpenFailed, {file, engine_.explanation()});
        }
        Segment segment;
        segment.file = file;
        segment.frames = range->last + 1;
        segment.startedAt_ms = facts->recordedAt_ms.value_or(0);
        segment.frameDuration_100ns =
            facts->frameDuration_100ns > 0 ? facts->frameDuration_100ns : segment.frameDuration_100ns;
        oldClips_.save();
        playlist_.reset();
        old_.emplace();
        old_->add(segment);
        player_.showOld(&*old_, *range);
        settings_.addRecent(file);
        const std::vector<std::wstring> findings = oldClips_.load(segment, settings_.language);
        if (!findings.empty()) {
            tell(findings.front(), true);
            return Outcome::done;
        }
        return done(Text::toldOpened, {nameOf(file), lengthText(segment.places())});
    });
}

Outcome Session::call(const std::string& text) {
    return acted([&] {
        return engine_.call(text) ? done(Text::toldCall, {wide(text)})
                                  : told(Text::toldCallFailed, {engine_.explanation()});
    });
}

Outcome Session::chooseClip(std::uint64_t id) {
    return acted([&] { return clips().list.choose(id) ? Outcome::done : told(Text::toldNoClips); });
}

void Session::apply(const Settings& settings) {
    settings_ = settings;
    recorder_.set(folder(), settings_.raw);
    refresh();
}

void Session::tell(const std::wstring& text, bool refused) {
    message_ = {text, refused, message_.serial + 1};
    view_.message = message_;
}

void Session::shutDown() {
    if (recorder_.state() == Recorder::State::recording) {
        engine_.stopRecord();
    }
    eveningClips_.save();
    oldClips_.save();
    engine_.stop();
    player_.reset(false);
    recorder_.engineReset(false, now_);
    refresh();
}

std::optional<PictureAt> Session::pictureAt(std::uint64_t place) const {
    const std::optional<Place> found = reel().find(place);
    if (!found) {
        return std::nullopt;
    }
    return PictureAt{reel().segments()[found->segment].file, found->frame, player_.inRing(state_, place, 1)};
}

std::wstring Session::describe(std::uint64_t place) {
    const std::optional<Place> found = reel().find(place);
    if (!found) {
        return L"";
    }
    const std::wstring& file = reel().segments()[found->segment].file;
    const std::wstring code = file.empty() ? L"" : recordings_.timeCode(file, found->frame);
    return placeText(place) + (code.empty() ? L"" : L"  " + code);
}

// Messages.

Outcome Session::done(Text id, const std::vector<std::wstring>& values) {
    tell(text(id, settings_.language, values), false);
    return Outcome::done;
}

Outcome Session::told(Text id, const std::vector<std::wstring>& values) {
    tell(text(id, settings_.language, values), true);
    return Outcome::told;
}

Outcome Session::needs(Command command) {
    const CommandInfo& info = commandInfo(command);
    return told(Text::toldNeedsArgument,
                {text(info.text, settings_.language), text(*info.argument, settings_.language)});
}

Outcome Session::report(Player::Result result) {
    switch (result) {
    case Player::Result::done:
        return Outcome::done;
    case Player::Result::nothing:
        return told(state_.built ? Text::toldNoPicture : Text::toldNothingToShow);
    case Player::Result::alreadySo:
        return told(player_.held() ? Text::toldHeldAlready : Text::toldLiveAlready);
    case Player::Result::notOnDisk:
        return told(Text::toldFrameNotOnDisk);
    case Player::Result::refused:
        break;
    }
    return told(Text::toldCommandFailed, {engine_.explanation()});
}

std::wstring Session::placeText(std::uint64_t place) const {
    return ViewBuilder::placeText(reel(), place);
}

std::wstring Session::lengthText(FrameSpan places) const {
    const std::optional<Place> found = reel().find(reel().nearest(places.first));
    const std::int64_t duration_100ns =
        found ? reel().segments()[found->segment].frameDuration_100ns : 400000;
    return durationText(static_cast<std::int64_t>(places.length()) * duration_100ns / 10000,
                        settings_.language);
}

Outcome Session::dispatch(Command command, const std::wstring& argument) {
    switch (command) {
    case Command::record:
        return record();
    case Command::stop:
        return stop();
    case Command::open:
        return argument.empty() ? Outcome::window : open(argument);
    case Command::lookForCamera:
        return lookForCamera();
    case Command::field:
        return nextField();
    case Command::mute:
        return toggle(settings_.mute, Text::toldMuted, Text::toldSound);
    case Command::timeDisplay:
        return toggle(showTime_, Text::toldTimeOn, Text::toldTimeOff);
    case Command::fullScreen:
    case Command::outputWindow:
    case Command::zoomIn:
    case Command::zoomOut:
    case Command::zoomWhole:
    case Command::settings:
    case Command::help:
        return Outcome::window;
    case Command::quit:
        return quit();
    case Command::confirm:
        return confirm();
    case Command::dismiss:
        return dismiss();
    default:
        return command < Command::markIn ? transport(command, argument) : clipCommand(command, argument);
    }
}

// Transport.

Outcome Session::transport(Command command, const std::wstring& argument) {
    const std::optional<double> number = numberOf(argument);
    switch (command) {
    case Command::live:
        return goLive();
    case Command::hold:
        return hold();
    case Command::holdOrGoOn:
        return holdOrGoOn();
    case Command::stepForward:
        return step(1);
    case Command::stepBack:
        return step(-1);
    case Command::stepForward10:
        return step(10);
    case Command::stepBack10:
        return step(-10);
    case Command::home:
        return home();
    case Command::end:
        return reel().empty() ? report(Player::Result::nothing) : showNearest(reel().span()->last);
    case Command::goTo:
        return goTo(argument);
    case Command::playForward:
        return shuttleKey(1);
    case Command::playBackward:
        return shuttleKey(-1);
    case Command::reverse:
        return setSpeed(-player_.speed());
    case Command::speed:
        if (!number || std::abs(*number) > fastest) {
            return needs(command);
        }
        return *number == 0 ? hold() : setSpeed(*number);
    case Command::again5:
        return again(5);
    case Command::again10:
        return again(10);
    case Command::again20:
        return again(20);
    case Command::again:
        return number && *number >= 0.2 && *number <= 600 ? again(*number) : needs(command);
    case Command::playOnce:
        return setMode(PlayMode::once);
    case Command::loop:
        return setMode(PlayMode::loop);
    case Command::pingPong:
        return setMode(PlayMode::pingPong);
    case Command::nextPlayMode:
        return setMode(static_cast<PlayMode>((static_cast<int>(player_.mode()) + 1) % 3));
    default:
        break;
    }
    const double magnitude = speeds[static_cast<int>(command) - static_cast<int>(Command::speed1)];
    return setSpeed(player_.speed() < 0 ? -magnitude : magnitude);
}

Outcome Session::goLive() {
    const Player::Result result = player_.goLive();
    if (result == Player::Result::nothing) {
        return told(Text::toldNoCamera);
    }
    if (result == Player::Result::refused) {
        return report(result);
    }
    closeOld();
    playlist_.reset();
    return result == Player::Result::alreadySo ? told(Text::toldLiveAlready) : done(Text::toldLive);
}

Outcome Session::hold() {
    playlist_.reset();
    const Player::Result result = player_.hold();
    return result == Player::Result::done ? done(Text::toldHeld, {placeText(*player_.place())})
                                          : report(result);
}

Outcome Session::holdOrGoOn() {
    return player_.held() ? report(player_.play(player_.speed())) : hold();
}

Outcome Session::step(std::int64_t frames) {
    playlist_.reset();
    if (!player_.held()) {
        if (const Player::Result held = player_.hold(); held != Player::Result::done) {
            return report(held);
        }
        // Before live there is nothing: holding it is the step.
        if (reel().moved(*player_.place(), frames) == *player_.place()) {
            return done(Text::toldHeld, {placeText(*player_.place())});
        }
    }
    const std::uint64_t wanted = reel().moved(*player_.place(), frames);
    if (wanted == *player_.place()) {
        return told(frames < 0 ? Text::toldAtStart : Text::toldAtEnd);
    }
    return report(player_.showPlace(wanted));
}

Outcome Session::showNearest(std::uint64_t place) {
    if (reel().empty()) {
        return report(Player::Result::nothing);
    }
    playlist_.reset();
    return report(player_.showPlace(reel().nearest(place)));
}

/// The start of the file that is shown, and from there the start of the one before.
Outcome Session::home() {
    const std::optional<std::uint64_t> place = player_.place();
    if (!place || !reel().find(reel().nearest(*place))) {
        return report(Player::Result::nothing);
    }
    const std::uint64_t here = reel().nearest(*place);
    std::uint64_t first = reel().segments()[reel().find(here)->segment].start;
    if (first == here) {
        const std::uint64_t before = reel().moved(first, -1);
        first = reel().segments()[reel().find(before)->segment].start;
    }
    return first == here && player_.held() ? told(Text::toldAtStart) : showNearest(first);
}

Outcome Session::goTo(const std::wstring& argument) {
    const std::optional<double> number = numberOf(argument);
    const std::optional<std::uint64_t> place = player_.place();
    if (!number || *number < 0 || *number > 1e12 || *number != std::floor(*number)) {
        return needs(Command::goTo);
    }
    const std::optional<Place> found = place ? reel().find(*place) : std::nullopt;
    if (!found) {
        return report(Player::Result::nothing);
    }
    const Segment& segment = reel().segments()[found->segment];
    const auto frame = static_cast<std::uint64_t>(*number);
    const std::optional<std::uint64_t> wanted = reel().placeOf(segment.file, frame);
    return wanted ? showNearest(*wanted) : report(Player::Result::notOnDisk);
}

/// J and L: play, and with each further press faster.
Outcome Session::shuttleKey(int direction) {
    if (player_.show() == Player::Show::live && direction > 0) {
        return told(Text::toldForwardInLive);
    }
    const bool same =
        player_.show() == Player::Show::replay && !player_.held() && (player_.speed() > 0) == (direction > 0);
    if (!same) {
        return playAt(direction);
    }
    for (const double speed : shuttleSpeeds) {
        if (speed > std::abs(player_.speed()) + 1e-9) {
            return playAt(direction * speed);
        }
    }
    return told(Text::toldFastest, {numberText(fastest, settings_.language)});
}

Outcome Session::setSpeed(double factor) {
    if (player_.show() == Player::Show::live) {
        return told(Text::toldSpeedInLive);
    }
    if (player_.show() == Player::Show::replay && !player_.held() && player_.speed() == factor) {
        return told(Text::toldSameSpeed, {numberText(factor, settings_.language)});
    }
    return playAt(factor);
}

Outcome Session::playAt(double speed) {
    const bool running = player_.show() == Player::Show::replay && !player_.held();
    const Player::Result result = running ? player_.setSpeed(speed) : player_.play(speed);
    return result == Player::Result::done ? done(Text::toldSpeed, {numberText(speed, settings_.language)})
                                          : report(result);
}

Outcome Session::again(double seconds) {
    const std::optional<std::uint64_t> here = old_ ? player_.place() : std::nullopt;
    if (reel().empty()) {
        return report(Player::Result::nothing);
    }
    const std::uint64_t last = here.value_or(reel().span()->last);
    const std::int64_t duration_100ns = reel().segments()[reel().find(last)->segment].frameDuration_100ns;
    const std::int64_t frames =
        std::max(2ll, std::llround(seconds * 1e7 / static_cast<double>(duration_100ns)));
    const std::uint64_t first = reel().moved(last, 1 - frames);
    if (first == last) {
        return told(Text::toldAtStart);
    }
    playlist_.reset();
    if (const Player::Result result = player_.playRange({first, last}, false);
        result != Player::Result::done) {
        return report(result);
    }
    const bool whole = first != reel().moved(last, 2 - frames);
    return done(whole ? Text::toldAgain : Text::toldAgainLess, {lengthText({first, last}), placeText(first)});
}

Outcome Session::setMode(PlayMode mode) {
    const bool already = player_.mode() == mode;
    player_.setMode(mode);
    const std::wstring name = text(ViewBuilder::modeText(mode), settings_.language);
    return already ? told(Text::toldModeAlready, {name}) : done(Text::toldMode, {name});
}

Outcome Session::nextField() {
    if (!player_.held()) {
        return told(Text::toldFieldHeld);
    }
    field_ = static_cast<Field>((static_cast<int>(field_) + 1) % 3);
    return done(field_ == Field::both    ? Text::toldFieldBoth
                : field_ == Field::first ? Text::toldFieldFirst
                                         : Text::toldFieldSecond);
}

Outcome Session::toggle(bool& value, Text on, Text off) {
    value = !value;
    return done(value ? on : off);
}

// Clips.

Outcome Session::clipCommand(Command command, const std::wstring& argument) {
    const bool any = !clips().list.clips().empty();
    switch (command) {
    case Command::markIn:
        return markIn();
    case Command::markOut:
        return markOut();
    case Command::clearMarks:
        return clearMark();
    case Command::clipOfLast10: {
        const std::optional<std::uint64_t> place = player_.place();
        if (!place) {
            return report(Player::Result::nothing);
        }
        const Segment& segment = reel().segments()[reel().find(reel().nearest(*place))->segment];
        const auto frames =
            std::llround(clipSeconds * 1e7 / static_cast<double>(segment.frameDuration_100ns));
        return makeClip({reel().moved(*place, 1 - frames), *place});
    }
    case Command::undo:
        return undo();
    case Command::exportAll:
        return any ? Outcome::window : told(Text::toldNoClips);
    case Command::playAll:
        return any ? playAll() : told(Text::toldNoClips);
    default:
        break;
    }
    if (!any) {
        return told(Text::toldNoClips);
    }
    switch (command) {
    case Command::nextClip:
        return neighbour(1);
    case Command::previousClip:
        return neighbour(-1);
    case Command::playClip:
        return playClip(argument);
    case Command::deleteClip:
        return deleteClip();
    case Command::clipUp:
        return moveClip(-1);
    case Command::clipDown:
        return moveClip(1);
    case Command::renameClip:
        return renameClip(argument);
    default:
        return clips().list.chosen() ? Outcome::window : told(Text::toldNoClipChosen);
    }
}

Outcome Session::markIn() {
    std::optional<std::uint64_t> place = player_.place();
    // A recording that has just begun has no frame yet: its first is meant, not the last of the file before.
    if (player_.show() == Player::Show::live && !evening_.segments().empty() && evening_.last().growing) {
        place = std::max(place.value_or(0), evening_.last().start);
    }
    if (!place) {
        return report(Player::Result::nothing);
    }
    clips().markIn = *place;
    return done(Text::toldMarkIn, {placeText(*place)});
}

Outcome Session::markOut() {
    const std::optional<std::uint64_t> place = player_.place();
    const std::optional<std::uint64_t> in = clips().markIn;
    if (!in) {
        return told(Text::toldNoMark);
    }
    if (!place) {
        return report(Player::Result::nothing);
    }
    const Outcome outcome = makeClip({std::min(*in, *place), std::max(*in, *place)});
    if (outcome == Outcome::done) {
        clips().markIn.reset();
    }
    return outcome;
}

Outcome Session::clearMark() {
    if (!clips().markIn) {
        return told(Text::toldNoMarks);
    }
    const std::uint64_t place = *clips().markIn;
    clips().markIn.reset();
    return done(Text::toldMarksCleared, {placeText(place)});
}

Outcome Session::makeClip(FrameSpan places) {
    ClipList& list = clips().list;
    const int made = clips().add(reel(), places, settings_.language);
    if (made == 0) {
        return told(Text::toldNotRecorded);
    }
    clips().save();
    const Clip& last = list.clips().back();
    if (made > 1) {
        return done(Text::toldClipSplit,
                    {list.clips()[list.clips().size() - 2].name, last.name, std::to_wstring(made)});
    }
    return done(Text::toldClip,
                {last.name, durationText(last.length_ms(), settings_.language), placeText(places.first)});
}

std::optional<FrameSpan> Session::placesOf(const Clip& clip) const {
    return ViewBuilder::placesOf(reel(), clip);
}

Outcome Session::neighbour(int by) {
    ClipList& list = clips().list;
    if (!list.chosen()) {
        list.choose(list.clips().front().id);
    } else if (!list.chooseNext(by)) {
        return told(by > 0 ? Text::toldLastClip : Text::toldFirstClip);
    }
    const Clip& clip = *list.chosen();
    if (playlist_) {
        const auto at = std::find(playlist_->clips.begin(), playlist_->clips.end(), clip.id);
        if (at != playlist_->clips.end() &&
            playFromList(static_cast<std::size_t>(at - playlist_->clips.begin()))) {
            return Outcome::done;
        }
    }
    return done(Text::toldClipChosen, {clip.name, durationText(clip.length_ms(), settings_.language)});
}

Outcome Session::playClip(const std::wstring& argument) {
    ClipList& list = clips().list;
    if (!argument.empty()) {
        const std::optional<double> number = numberOf(argument);
        const auto count = static_cast<double>(list.clips().size());
        if (!number || *number < 1 || *number > count || *number != std::floor(*number)) {
            return told(Text::toldNoClipNumber, {argument, std::to_wstring(list.clips().size())});
        }
        list.choose(list.clips()[static_cast<std::size_t>(*number) - 1].id);
    }
    return list.chosen() ? playClip(*list.chosen()) : told(Text::toldNoClipChosen);
}

Outcome Session::playClip(const Clip& clip) {
    const std::optional<FrameSpan> places = placesOf(clip);
    if (!places) {
        return told(Text::toldClipGone, {clip.name, clip.file});
    }
    const Player::Result result = player_.playRange(*places, false);
    if (result != Player::Result::done) {
        return report(result);
    }
    playlist_.reset();
    return done(Text::toldClipChosen, {clip.name, durationText(clip.length_ms(), settings_.language)});
}

Outcome Session::playAll() {
    Playlist list;
    for (const Clip& clip : clips().list.clips()) {
        list.clips.push_back(clip.id);
    }
    const std::wstring count = std::to_wstring(list.clips.size());
    playlist_ = std::move(list);
    if (!playFromList(0)) {
        const Clip& first = clips().list.clips().front();
        return told(Text::toldClipGone, {first.name, first.file});
    }
    return done(Text::toldPlayAll, {count});
}

/// Plays the first clip from there on that can be played. False, and no playlist any more, when none can.
bool Session::playFromList(std::size_t first) {
    for (std::size_t at = first; at < playlist_->clips.size(); ++at) {
        const Clip* const clip = clips().list.find(playlist_->clips[at]);
        const std::optional<FrameSpan> places = clip ? placesOf(*clip) : std::nullopt;
        if (places && player_.playRange(*places, true) == Player::Result::done) {
            playlist_->at = at;
            clips().list.choose(clip->id);
            return true;
        }
    }
    playlist_.reset();
    return false;
}

Outcome Session::deleteClip() {
    const Clip* const clip = clips().list.chosen();
    if (!clip) {
        return told(Text::toldNoClipChosen);
    }
    const std::wstring name = clip->name;
    clips().list.remove(clip->id);
    clips().save();
    return done(Text::toldClipDeleted, {name});
}

Outcome Session::moveClip(int by) {
    ClipList& list = clips().list;
    const Clip* const clip = list.chosen();
    if (!clip) {
        return told(Text::toldNoClipChosen);
    }
    const std::uint64_t id = clip->id;
    if (!list.move(id, by)) {
        return told(by > 0 ? Text::toldLastClip : Text::toldFirstClip);
    }
    clips().save();
    return done(Text::toldClipMoved, {list.find(id)->name, std::to_wstring(*list.position(id) + 1),
                                      std::to_wstring(list.clips().size())});
}

Outcome Session::renameClip(const std::wstring& name) {
    const Clip* const clip = clips().list.chosen();
    if (!clip) {
        return told(Text::toldNoClipChosen);
    }
    if (name.empty()) {
        return Outcome::window;
    }
    if (!clips().list.rename(clip->id, name)) {
        return told(Text::toldClipNotRenamed, {name});
    }
    clips().save();
    return done(Text::toldClipRenamed, {name});
}

Outcome Session::undo() {
    const std::optional<ClipList::Change> change = clips().list.undo();
    if (!change) {
        return told(Text::toldNothingToUndo);
    }
    clips().save();
    constexpr Text texts[] = {Text::undoneAdded, Text::undoneRemoved, Text::undoneRenamed, Text::undoneMoved};
    return done(texts[static_cast<int>(*change)]);
}

// Recording.

Outcome Session::record() {
    if (!state_.built) {
        return told(Text::toldNoCamera);
    }
    if (recorder_.state() == Recorder::State::recording) {
        return told(Text::toldRecordingAlready,
                    {nameOf(recorder_.file()), timeOfDayText(recorder_.startedAt().timeOfDay_ms, false)});
    }
    const bool started = recorder_.startRecording(now_);
    rollingTried_ms_ = now_.steady_ms;
    restoreShown();
    if (!started) {
        return told(Text::toldRecordFailed, {folder(), recorder_.explanation()});
    }
    ended_.clear();
    return done(Text::toldRecording, {recorder_.file()});
}

Outcome Session::stop() {
    if (recorder_.state() != Recorder::State::recording) {
        return told(Text::toldNotRecording);
    }
    if (question_ && question_->command == Command::stop) {
        return confirm();
    }
    return ask(Command::stop, Text::askStop, {nameOf(recorder_.file())});
}

void Session::stopNow() {
    const std::wstring name = nameOf(recorder_.file());
    recorder_.stopRecording();
    const EngineState::Recording how = engine_.state().recording;
    const std::wstring length =
        durationText(static_cast<std::int64_t>(how.written) * evening_.last().frameDuration_100ns / 10000,
                     settings_.language);
    const std::uint64_t missing = how.lost + how.failed;
    if (missing == 0 && how.complete) {
        done(Text::toldStopped, {name, length});
    } else {
        told(Text::toldStoppedShort,
             {name, length, std::to_wstring(missing),
              how.error.empty() ? text(Text::unknownReason, settings_.language) : how.error});
    }
    recorder_.startRolling(now_);
    rollingTried_ms_ = now_.steady_ms;
    restoreShown();
}

/// The engine is live after a start of a recording: shows what was shown before.
void Session::restoreShown() {
    state_ = engine_.state();
    player_.restore();
    if (old_ && player_.ofEvening()) {
        closeOld();
    }
}

void Session::closeOld() {
    if (!old_) {
        return;
    }
    oldClips_.save();
    if (!player_.ofEvening()) {
        player_.showOld(nullptr, {});
    }
    old_.reset();
}

Outcome Session::lookForCamera() {
    if (state_.built && state_.camera == EngineState::Camera::live) {
        return told(Text::toldCameraThere);
    }
    if (state_.built && recorder_.state() == Recorder::State::recording) {
        return told(Text::toldCameraReturns);
    }
    restartAt_ms_.reset();
    if (!startEngine()) {
        return Outcome::told;
    }
    recorder_.startRolling(now_);
    return done(Text::toldCameraFound);
}

Outcome Session::quit() {
    if (question_ && question_->command == Command::quit) {
        return confirm();
    }
    if (recorder_.state() == Recorder::State::recording) {
        return ask(Command::quit, Text::askQuitRecording, {nameOf(recorder_.file())});
    }
    if (busy_) {
        return ask(Command::quit, Text::askQuitBusy);
    }
    if (state_.built) {
        return ask(Command::quit, Text::askQuit);
    }
    quit_ = true;
    return done(Text::toldQuit);
}

Outcome Session::ask(Command command, Text id, const std::vector<std::wstring>& values) {
    question_ = {command, now_.steady_ms + questionTime_ms};
    questionText_ = text(id, settings_.language, values);
    tell(questionText_, true);
    return Outcome::told;
}

Outcome Session::confirm() {
    if (!question_) {
        return told(Text::toldNoQuestion);
    }
    const Command command = question_->command;
    question_.reset();
    if (command == Command::stop) {
        stopNow();
        return Outcome::done;
    }
    quit_ = true;
    return done(Text::toldQuit);
}

Outcome Session::dismiss() {
    if (question_) {
        question_.reset();
        return done(Text::toldQuestionOff);
    }
    if (message_.text.empty()) {
        return Outcome::window;
    }
    message_.text.clear();
    return Outcome::done;
}

// What happens by itself.

void Session::take(Player::Event event) {
    if (event == Player::Event::toLive) {
        closeOld();
        done(Text::toldLive);
        return;
    }
    if (event != Player::Event::ended) {
        return;
    }
    if (playlist_) {
        if (playFromList(playlist_->at + 1)) {
            return;
        }
        if (player_.mode() != PlayMode::once) {
            playAll();
            return;
        }
    }
    const bool back = settings_.backToLive && player_.range() && player_.ofEvening() && state_.built;
    if (back && player_.goLive() == Player::Result::done) {
        done(Text::toldEndToLive);
    } else {
        done(Text::toldEndOfRange, {placeText(*player_.place())});
    }
}

void Session::watchCamera() {
    using Camera = EngineState::Camera;
    if (restartAt_ms_ && now_.steady_ms >= *restartAt_ms_) {
        restartForOtherFormat();
        return;
    }
    if (!state_.built) {
        return;
    }
    if (state_.camera == Camera::changed) {
        restartRecords_ = recorder_.state() == Recorder::State::recording;
        restartForOtherFormat();
        return;
    }
    const bool lost = state_.camera == Camera::gone || state_.camera == Camera::silent;
    if (lost) {
        const bool gone = state_.camera == Camera::gone;
        if (!loss_) {
            const std::uint64_t next = evening_.last().start + evening_.last().frames;
            loss_ = {now_.steady_ms - static_cast<std::int64_t>(state_.cameraSince_ms), next};
            told(gone ? Text::toldCameraLost : Text::toldCameraSilent);
        }
    } else if (loss_ && state_.camera == Camera::live) {
        // In a file that began meanwhile time counts from its start.
        const std::int64_t since_ms = std::max(loss_->since_ms, recorder_.startedAt().steady_ms);
        const std::int64_t length_ms = std::max<std::int64_t>(now_.steady_ms - since_ms, 0);
        const std::wstring length = durationText(now_.steady_ms - loss_->since_ms, settings_.language);
        evening_.addGap({std::max(loss_->nextPlace, evening_.last().start), length_ms});
        loss_.reset();
        done(Text::toldCameraBack, {length, nameOf(recorder_.file())});
    }
}

void Session::restartForOtherFormat() {
    const std::wstring before = nameOf(recorder_.file());
    const bool records = restartRecords_;
    restartAt_ms_.reset();
    if (!startEngine()) {
        const std::wstring why = engine_.explanation();
        told(Text::toldCameraChangedGone,
             {why.empty() ? text(Text::unknownReason, settings_.language) : why});
        restartAt_ms_ = now_.steady_ms + retryPeriod_ms;
        return;
    }
    restartRecords_ = false;
    const bool started = records ? recorder_.startRecording(now_) : recorder_.startRolling(now_);
    state_ = engine_.state();
    if (started) {
        done(Text::toldCameraChanged, {before, nameOf(recorder_.file())});
    } else {
        told(Text::toldRecordFailed, {folder(), recorder_.explanation()});
    }
}

void Session::watchRecording() {
    const bool on = recorder_.state() != Recorder::State::off;
    if (on && state_.built && !state_.recording.on) {
        const std::wstring why = state_.recording.error.empty()
                                     ? text(Text::unknownReason, settings_.language)
                                     : state_.recording.error;
        ended_ = text(Text::alarmEnded, settings_.language, {nameOf(recorder_.file()), why});
        tell(ended_, true);
        recorder_.endedByItself(now_);
        rollingTried_ms_ = now_.steady_ms;
    }
    if (!on && state_.built && now_.steady_ms - rollingTried_ms_ >= retryPeriod_ms) {
        rollingTried_ms_ = now_.steady_ms;
        recorder_.startRolling(now_);
        restoreShown();
    }
}

void Session::watchDrive() {
    if (driveAsked_ms_ == 0 || now_.steady_ms - driveAsked_ms_ >= drivePeriod_ms) {
        driveAsked_ms_ = now_.steady_ms;
        freeBytes_ = disk_.freeBytes(folder());
    }
}

/// The next rolling file. Its length is that of its frames: a camera that is gone uses nothing up.
void Session::roll() {
    if (recorder_.state() != Recorder::State::rolling || evening_.segments().empty()) {
        return;
    }
    const Segment& file = evening_.last();
    const auto recorded_ms = static_cast<std::int64_t>(file.frames) * file.frameDuration_100ns / 10000;
    const bool watched = player_.show() != Player::Show::live;
    // A second more than was asked for, since the last frames of a file cannot be replayed.
    if (RollingFile::due(recorded_ms - 1000, settings_.rolling_min * 60000ll, watched)) {
        recorder_.startRolling(now_);
        rollingTried_ms_ = now_.steady_ms;
        restoreShown();
    }
}

void Session::refresh() {
    state_ = engine_.state();
    if (!player_.held()) {
        field_ = Field::both;
    }
    ViewBuilder builder(settings_, state_, player_, recorder_, old_ ? oldClips_ : eveningClips_, evening_);
    builder.now = now_;
    builder.lossSince_ms = loss_ ? std::optional(loss_->since_ms) : std::nullopt;
    builder.freeBytes = freeBytes_;
    builder.ended = ended_;
    builder.unsaved = !eveningClips_.unsavedFile().empty() ? &eveningClips_ : &oldClips_;
    builder.playlistAt = playlist_ ? std::optional(playlist_->at) : std::nullopt;
    builder.playlistClips = playlist_ ? playlist_->clips.size() : 0;
    view_ = builder.build();
    view_.message = message_;
    view_.question = question_ ? std::optional(questionText_) : std::nullopt;
    view_.field = field_;
    view_.showTime = showTime_;
    view_.quit = quit_;
}

} // namespace app
