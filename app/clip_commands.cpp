#include "app/clip_commands.h"

#include "app/stage.h"

#include <algorithm>
#include <cmath>

namespace app {

namespace {

constexpr double clipSeconds = 10.0;

} // namespace

Outcome ClipCommands::perform(Command command, const std::wstring& argument) {
    const bool any = !stage_.clips().list.clips().empty();
    switch (command) {
    case Command::markIn:
        return markIn();
    case Command::markOut:
        return markOut();
    case Command::clearMarks:
        return clearMark();
    case Command::clipOfLast10: {
        const std::optional<std::uint64_t> place = stage_.player.place();
        if (!place) {
            return stage_.report(Player::Result::nothing);
        }
        const Segment& segment =
            stage_.reel().segments()[stage_.reel().find(stage_.reel().nearest(*place))->segment];
        const auto frames =
            std::llround(clipSeconds * 1e7 / static_cast<double>(segment.frameDuration_100ns));
        return makeClip({stage_.reel().moved(*place, 1 - frames), *place});
    }
    case Command::undo:
        return undo();
    case Command::exportAll:
        return any ? Outcome::window : stage_.told(Text::toldNoClips);
    case Command::playAll:
        return any ? playAll() : stage_.told(Text::toldNoClips);
    default:
        break;
    }
    if (!any) {
        return stage_.told(Text::toldNoClips);
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
        return stage_.clips().list.chosen() ? Outcome::window : stage_.told(Text::toldNoClipChosen);
    }
}

Outcome ClipCommands::markIn() {
    const Reel& evening = stage_.evening;
    std::optional<std::uint64_t> place = stage_.player.place();
    // A recording that has just begun has no frame yet: its first is meant, not the last of the file before.
    if (stage_.player.show() == Player::Show::live && !evening.segments().empty() && evening.last().growing) {
        place = std::max(place.value_or(0), evening.last().start);
    }
    if (!place) {
        return stage_.report(Player::Result::nothing);
    }
    stage_.clips().markIn = *place;
    return stage_.done(Text::toldMarkIn, {stage_.placeText(*place)});
}

Outcome ClipCommands::markOut() {
    const std::optional<std::uint64_t> place = stage_.player.place();
    const std::optional<std::uint64_t> in = stage_.clips().markIn;
    if (!in) {
        return stage_.told(Text::toldNoMark);
    }
    if (!place) {
        return stage_.report(Player::Result::nothing);
    }
    const Outcome outcome = makeClip({std::min(*in, *place), std::max(*in, *place)});
    if (outcome == Outcome::done) {
        stage_.clips().markIn.reset();
    }
    return outcome;
}

Outcome ClipCommands::clearMark() {
    if (!stage_.clips().markIn) {
        return stage_.told(Text::toldNoMarks);
    }
    const std::uint64_t place = *stage_.clips().markIn;
    stage_.clips().markIn.reset();
    return stage_.done(Text::toldMarksCleared, {stage_.placeText(place)});
}

Outcome ClipCommands::makeClip(FrameSpan places) {
    ClipList& list = stage_.clips().list;
    const int made = stage_.clips().add(stage_.reel(), places, stage_.settings.language);
    if (made == 0) {
        return stage_.told(Text::toldNotRecorded);
    }
    stage_.clips().save();
    const Clip& last = list.clips().back();
    if (made > 1) {
        return stage_.done(Text::toldClipSplit,
                           {list.clips()[list.clips().size() - 2].name, last.name, std::to_wstring(made)});
    }
    return stage_.done(Text::toldClip, {last.name, durationText(last.length_ms(), stage_.settings.language),
                                        stage_.placeText(places.first)});
}

Outcome ClipCommands::neighbour(int by) {
    ClipList& list = stage_.clips().list;
    if (!list.chosen()) {
        list.choose(list.clips().front().id);
    } else if (!list.chooseNext(by)) {
        return stage_.told(by > 0 ? Text::toldLastClip : Text::toldFirstClip);
    }
    const Clip& clip = *list.chosen();
    if (stage_.playlist) {
        const auto at = std::find(stage_.playlist->clips.begin(), stage_.playlist->clips.end(), clip.id);
        if (at != stage_.playlist->clips.end() &&
            playFromList(static_cast<std::size_t>(at - stage_.playlist->clips.begin()))) {
            return Outcome::done;
        }
    }
    return stage_.done(Text::toldClipChosen,
                       {clip.name, durationText(clip.length_ms(), stage_.settings.language)});
}

Outcome ClipCommands::playClip(const std::wstring& argument) {
    ClipList& list = stage_.clips().list;
    if (!argument.empty()) {
        const std::optional<double> number = numberOf(argument);
        const auto count = static_cast<double>(list.clips().size());
        if (!number || *number < 1 || *number > count || *number != std::floor(*number)) {
            return stage_.told(Text::toldNoClipNumber, {argument, std::to_wstring(list.clips().size())});
        }
        list.choose(list.clips()[static_cast<std::size_t>(*number) - 1].id);
    }
    return list.chosen() ? playClip(*list.chosen()) : stage_.told(Text::toldNoClipChosen);
}

Outcome ClipCommands::playClip(const Clip& clip) {
    const std::optional<FrameSpan> places = stage_.placesOf(clip);
    if (!places) {
        return stage_.told(Text::toldClipGone, {clip.name, clip.file});
    }
    const Player::Result result = stage_.player.playRange(*places, false);
    if (result != Player::Result::done) {
        return stage_.report(result);
    }
    stage_.playlist.reset();
    return stage_.done(Text::toldClipChosen,
                       {clip.name, durationText(clip.length_ms(), stage_.settings.language)});
}

Outcome ClipCommands::playAll() {
    Playlist list;
    for (const Clip& clip : stage_.clips().list.clips()) {
        list.clips.push_back(clip.id);
    }
    const std::wstring count = std::to_wstring(list.clips.size());
    stage_.playlist = std::move(list);
    if (!playFromList(0)) {
        const Clip& first = stage_.clips().list.clips().front();
        return stage_.told(Text::toldClipGone, {first.name, first.file});
    }
    return stage_.done(Text::toldPlayAll, {count});
}

/// Plays the first clip from there on that can be played. False, and no playlist any more, when none can.
bool ClipCommands::playFromList(std::size_t first) {
    for (std::size_t at = first; at < stage_.playlist->clips.size(); ++at) {
        const Clip* const clip = stage_.clips().list.find(stage_.playlist->clips[at]);
        const std::optional<FrameSpan> places = clip ? stage_.placesOf(*clip) : std::nullopt;
        if (places && stage_.player.playRange(*places, true) == Player::Result::done) {
            stage_.playlist->at = at;
            stage_.clips().list.choose(clip->id);
            return true;
        }
    }
    stage_.playlist.reset();
    return false;
}

Outcome ClipCommands::deleteClip() {
    const Clip* const clip = stage_.clips().list.chosen();
    if (!clip) {
        return stage_.told(Text::toldNoClipChosen);
    }
    const std::wstring name = clip->name;
    stage_.clips().list.remove(clip->id);
    stage_.clips().save();
    return stage_.done(Text::toldClipDeleted, {name});
}

Outcome ClipCommands::moveClip(int by) {
    ClipList& list = stage_.clips().list;
    const Clip* const clip = list.chosen();
    if (!clip) {
        return stage_.told(Text::toldNoClipChosen);
    }
    const std::uint64_t id = clip->id;
    if (!list.move(id, by)) {
        return stage_.told(by > 0 ? Text::toldLastClip : Text::toldFirstClip);
    }
    stage_.clips().save();
    return stage_.done(Text::toldClipMoved, {list.find(id)->name, std::to_wstring(*list.position(id) + 1),
                                             std::to_wstring(list.clips().size())});
}

Outcome ClipCommands::renameClip(const std::wstring& name) {
    const Clip* const clip = stage_.clips().list.chosen();
    if (!clip) {
        return stage_.told(Text::toldNoClipChosen);
    }
    if (name.empty()) {
        return Outcome::window;
    }
    if (!stage_.clips().list.rename(clip->id, name)) {
        return stage_.told(Text::toldClipNotRenamed, {name});
    }
    stage_.clips().save();
    return stage_.done(Text::toldClipRenamed, {name});
}

Outcome ClipCommands::undo() {
    const std::optional<ClipList::Change> change = stage_.clips().list.undo();
    if (!change) {
        return stage_.told(Text::toldNothingToUndo);
    }
    stage_.clips().save();
    constexpr Text texts[] = {Text::undoneAdded, Text::undoneRemoved, Text::undoneRenamed, Text::undoneMoved};
    return stage_.done(texts[static_cast<int>(*change)]);
}

bool ClipCommands::playNext() {
    if (!stage_.playlist) {
        return false;
    }
    if (playFromList(stage_.playlist->at + 1)) {
        return true;
    }
    if (stage_.player.mode() == PlayMode::once) {
        return false;
    }
    playAll();
    return true;
}

} // namespace app
