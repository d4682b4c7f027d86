#include "app/transport.h"

#include "app/stage.h"
#include "app/view_builder.h"

#include <algorithm>
#include <cmath>

namespace app {

namespace {

constexpr double fastest = 4.0;

/// The speeds that J and L go up.
constexpr double shuttleSpeeds[] = {1.0, 2.0, 4.0};

} // namespace

Outcome Transport::perform(Command command, const std::wstring& argument) {
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
        return stage_.reel().empty() ? stage_.report(Player::Result::nothing)
                                     : showNearest(stage_.reel().span()->last);
    case Command::goTo:
        return goTo(argument);
    case Command::playForward:
        return shuttleKey(1);
    case Command::playBackward:
        return shuttleKey(-1);
    case Command::reverse:
        return setSpeed(-stage_.player.speed());
    case Command::speed:
        if (!number || std::abs(*number) > fastest) {
            return stage_.needs(command);
        }
        return *number == 0 ? hold() : setSpeed(*number);
    case Command::again5:
        return again(5);
    case Command::again10:
        return again(10);
    case Command::again20:
        return again(20);
    case Command::again:
        return number && *number >= 0.2 && *number <= 600 ? again(*number) : stage_.needs(command);
    case Command::playOnce:
        return setMode(PlayMode::once);
    case Command::loop:
        return setMode(PlayMode::loop);
    case Command::pingPong:
        return setMode(PlayMode::pingPong);
    case Command::nextPlayMode:
        return setMode(static_cast<PlayMode>((static_cast<int>(stage_.player.mode()) + 1) % 3));
    default:
        break;
    }
    const double magnitude = speeds[static_cast<int>(command) - static_cast<int>(Command::speed1)];
    return setSpeed(stage_.player.speed() < 0 ? -magnitude : magnitude);
}

Outcome Transport::goLive() {
    const Player::Result result = stage_.player.goLive();
    if (result == Player::Result::nothing) {
        return stage_.told(Text::toldNoCamera);
    }
    if (result == Player::Result::refused) {
        return stage_.report(result);
    }
    stage_.closeOld();
    stage_.playlist.reset();
    return result == Player::Result::alreadySo ? stage_.told(Text::toldLiveAlready)
                                               : stage_.done(Text::toldLive);
}

Outcome Transport::hold() {
    stage_.playlist.reset();
    const Player::Result result = stage_.player.hold();
    return result == Player::Result::done
               ? stage_.done(Text::toldHeld, {stage_.placeText(*stage_.player.place())})
               : stage_.report(result);
}

Outcome Transport::holdOrGoOn() {
    return stage_.player.held() ? stage_.report(stage_.player.play(stage_.player.speed())) : hold();
}

Outcome Transport::step(std::int64_t frames) {
    stage_.playlist.reset();
    if (!stage_.player.held()) {
        if (const Player::Result held = stage_.player.hold(); held != Player::Result::done) {
            return stage_.report(held);
        }
        // Before live there is nothing: holding it is the step.
        if (stage_.reel().moved(*stage_.player.place(), frames) == *stage_.player.place()) {
            return stage_.done(Text::toldHeld, {stage_.placeText(*stage_.player.place())});
        }
    }
    const std::uint64_t wanted = stage_.reel().moved(*stage_.player.place(), frames);
    if (wanted == *stage_.player.place()) {
        return stage_.told(frames < 0 ? Text::toldAtStart : Text::toldAtEnd);
    }
    return stage_.report(stage_.player.showPlace(wanted));
}

Outcome Transport::showNearest(std::uint64_t place) {
    if (stage_.reel().empty()) {
        return stage_.report(Player::Result::nothing);
    }
    stage_.playlist.reset();
    return stage_.report(stage_.player.showPlace(stage_.reel().nearest(place)));
}

/// The start of the file that is shown, and from there the start of the one before.
Outcome Transport::home() {
    const std::optional<std::uint64_t> place = stage_.player.place();
    if (!place || !stage_.reel().find(stage_.reel().nearest(*place))) {
        return stage_.report(Player::Result::nothing);
    }
    const std::uint64_t here = stage_.reel().nearest(*place);
    std::uint64_t first = stage_.reel().segments()[stage_.reel().find(here)->segment].start;
    if (first == here) {
        const std::uint64_t before = stage_.reel().moved(first, -1);
        first = stage_.reel().segments()[stage_.reel().find(before)->segment].start;
    }
    return first == here && stage_.player.held() ? stage_.told(Text::toldAtStart) : showNearest(first);
}

Outcome Transport::goTo(const std::wstring& argument) {
    const std::optional<double> number = numberOf(argument);
    const std::optional<std::uint64_t> place = stage_.player.place();
    if (!number || *number < 0 || *number > 1e12 || *number != std::floor(*number)) {
        return stage_.needs(Command::goTo);
    }
    const std::optional<Place> found = place ? stage_.reel().find(*place) : std::nullopt;
    if (!found) {
        return stage_.report(Player::Result::nothing);
    }
    const Segment& segment = stage_.reel().segments()[found->segment];
    const auto frame = static_cast<std::uint64_t>(*number);
    const std::optional<std::uint64_t> wanted = stage_.reel().placeOf(segment.file, frame);
    return wanted ? showNearest(*wanted) : stage_.report(Player::Result::notOnDisk);
}

/// J and L: play, and with each further press faster.
Outcome Transport::shuttleKey(int direction) {
    if (stage_.player.show() == Player::Show::live && direction > 0) {
        return stage_.told(Text::toldForwardInLive);
    }
    const bool same = stage_.player.show() == Player::Show::replay && !stage_.player.held() &&
                      (stage_.player.speed() > 0) == (direction > 0);
    if (!same) {
        return playAt(direction);
    }
    for (const double speed : shuttleSpeeds) {
        if (speed > std::abs(stage_.player.speed()) + 1e-9) {
            return playAt(direction * speed);
        }
    }
    return stage_.told(Text::toldFastest, {numberText(fastest, stage_.settings.language)});
}

Outcome Transport::setSpeed(double factor) {
    if (stage_.player.show() == Player::Show::live) {
        return stage_.told(Text::toldSpeedInLive);
    }
    if (stage_.player.show() == Player::Show::replay && !stage_.player.held() &&
        stage_.player.speed() == factor) {
        return stage_.told(Text::toldSameSpeed, {numberText(factor, stage_.settings.language)});
    }
    return playAt(factor);
}

Outcome Transport::playAt(double speed) {
    const bool running = stage_.player.show() == Player::Show::replay && !stage_.player.held();
    const Player::Result result = running ? stage_.player.setSpeed(speed) : stage_.player.play(speed);
    return result == Player::Result::done
               ? stage_.done(Text::toldSpeed, {numberText(speed, stage_.settings.language)})
               : stage_.report(result);
}

Outcome Transport::again(double seconds) {
    const std::optional<std::uint64_t> here = stage_.old ? stage_.player.place() : std::nullopt;
    if (stage_.reel().empty()) {
        return stage_.report(Player::Result::nothing);
    }
    const std::uint64_t last = here.value_or(stage_.reel().span()->last);
    const std::int64_t duration_100ns =
        stage_.reel().segments()[stage_.reel().find(last)->segment].frameDuration_100ns;
    const std::int64_t frames =
        std::max(2ll, std::llround(seconds * 1e7 / static_cast<double>(duration_100ns)));
    const std::uint64_t first = stage_.reel().moved(last, 1 - frames);
    if (first == last) {
        return stage_.told(Text::toldAtStart);
    }
    stage_.playlist.reset();
    if (const Player::Result result = stage_.player.playRange({first, last}, false);
        result != Player::Result::done) {
        return stage_.report(result);
    }
    const bool whole = first != stage_.reel().moved(last, 2 - frames);
    return stage_.done(whole ? Text::toldAgain : Text::toldAgainLess,
                       {stage_.lengthText({first, last}), stage_.placeText(first)});
}

Outcome Transport::setMode(PlayMode mode) {
    const bool already = stage_.player.mode() == mode;
    stage_.player.setMode(mode);
    const std::wstring name = text(ViewBuilder::modeText(mode), stage_.settings.language);
    return already ? stage_.told(Text::toldModeAlready, {name}) : stage_.done(Text::toldMode, {name});
}

Outcome Transport::shuttle(int steps) {
    if (stage_.player.show() == Player::Show::live && steps > 0) {
        return stage_.told(Text::toldForwardInLive);
    }
    // 0 stands in the middle of the ladder, the speeds on both sides.
    constexpr int most = static_cast<int>(std::size(speeds));
    const bool standing = stage_.player.held() || stage_.player.show() == Player::Show::live;
    const double now = standing ? 0.0 : stage_.player.speed();
    int rung = 0;
    for (int i = 0; i < most; ++i) {
        rung += std::abs(now) >= speeds[i] - 1e-9 ? 1 : 0;
    }
    const int wanted = std::clamp((now < 0 ? -rung : rung) + steps, -most, most);
    if (wanted == (now < 0 ? -rung : rung)) {
        return stage_.told(Text::toldFastest, {numberText(fastest, stage_.settings.language)});
    }
    if (wanted == 0) {
        return hold();
    }
    return playAt(wanted > 0 ? speeds[wanted - 1] : -speeds[-wanted - 1]);
}

} // namespace app
