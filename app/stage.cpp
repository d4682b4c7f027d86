#include "app/stage.h"

#include "app/view_builder.h"

namespace app {

Stage::Stage(Engine& engineOf, Disk& diskOf, Recordings& recordingsOf, const Settings& settingsOf)
    : engine(engineOf), disk(diskOf), recordings(recordingsOf), settings(settingsOf), player(engine, evening),
      recorder(engine, disk, recordings, evening), eveningClips(disk), oldClips(disk) {
    recorder.set(settings.folder, settings.raw);
}

void Stage::look() {
    state = engine.state();
    recorder.follow(state);
}

std::optional<FrameSpan> Stage::placesOf(const Clip& clip) const {
    return ViewBuilder::placesOf(reel(), clip);
}

void Stage::closeOld() {
    if (!old) {
        return;
    }
    oldClips.save();
    if (!player.ofEvening()) {
        player.showOld(nullptr, {});
    }
    old.reset();
}

/// The engine is live after a start of a recording: shows what was shown before.
void Stage::restoreShown() {
    state = engine.state();
    player.restore();
    if (old && player.ofEvening()) {
        closeOld();
    }
}

void Stage::tell(const std::wstring& text, bool refused) {
    message = {text, refused, message.serial + 1};
}

Outcome Stage::done(Text id, const std::vector<std::wstring>& values) {
    tell(text(id, settings.language, values), false);
    return Outcome::done;
}

Outcome Stage::told(Text id, const std::vector<std::wstring>& values) {
    tell(text(id, settings.language, values), true);
    return Outcome::told;
}

Outcome Stage::needs(Command command) {
    const CommandInfo& info = commandInfo(command);
    return told(Text::toldNeedsArgument,
                {text(info.text, settings.language), text(*info.argument, settings.language)});
}

Outcome Stage::report(Player::Result result) {
    switch (result) {
    case Player::Result::done:
        return Outcome::done;
    case Player::Result::nothing:
        return told(state.built ? Text::toldNoPicture : Text::toldNothingToShow);
    case Player::Result::alreadySo:
        return told(player.held() ? Text::toldHeldAlready : Text::toldLiveAlready);
    case Player::Result::notOnDisk:
        return told(Text::toldFrameNotOnDisk);
    case Player::Result::refused:
        break;
    }
    return told(Text::toldCommandFailed, {engine.explanation()});
}

std::wstring Stage::placeText(std::uint64_t place) const {
    return ViewBuilder::placeText(reel(), place);
}

std::wstring Stage::lengthText(FrameSpan places) const {
    const std::optional<Place> found = reel().find(reel().nearest(places.first));
    const std::int64_t duration_100ns =
        found ? reel().segments()[found->segment].frameDuration_100ns : 400000;
    return durationText(static_cast<std::int64_t>(places.length()) * duration_100ns / 10000,
                        settings.language);
}

} // namespace app
