#include "app/view_builder.h"

#include <algorithm>
#include <cmath>
#include <cwchar>
#include <iterator>
#include <utility>

namespace app {

namespace {

constexpr std::int64_t lowDrive_ms = 10 * 60 * 1000;

/// What a container needs for a frame beside its bytes, at the most.
constexpr std::uint64_t frameOverhead_bytes = 512;

std::int64_t length_ms(std::uint64_t frames, std::int64_t frameDuration_100ns) {
    return static_cast<std::int64_t>(frames) * frameDuration_100ns / 10000;
}

std::wstring clockText(std::int64_t length_ms, bool withFraction) {
    wchar_t buffer[64];
    const long long seconds = length_ms / 1000;
    std::swprintf(buffer, std::size(buffer),
                  withFraction ? L"%lld:%02lld:%02lld.%02lld" : L"%lld:%02lld:%02lld", seconds / 3600,
                  seconds / 60 % 60, seconds % 60, static_cast<long long>(length_ms % 1000 / 10));
    return buffer;
}

} // namespace

Text ViewBuilder::modeText(PlayMode mode) {
    return mode == PlayMode::once   ? Text::modeOnce
           : mode == PlayMode::loop ? Text::modeLoop
                                    : Text::modePingPong;
}

std::wstring ViewBuilder::placeText(const Reel& reel, std::uint64_t place) {
    if (const std::int64_t time_ms = reel.timeOfDay_ms(place); time_ms != 0) {
        return timeOfDayText(time_ms, true);
    }
    const std::optional<Place> found = reel.find(place);
    return found
               ? clockText(length_ms(found->frame, reel.segments()[found->segment].frameDuration_100ns), true)
               : L"";
}

std::optional<FrameSpan> ViewBuilder::placesOf(const Reel& reel, const Clip& clip) {
    for (const Segment& segment : reel.segments()) {
        if (!segment.there() || !samePath(segment.file, clip.file)) {
            continue;
        }
        const std::uint64_t first = std::max(clip.frames.first, segment.firstFrame);
        const std::uint64_t last = std::min(clip.frames.last, segment.frameOf(segment.places().last));
        if (first <= last) {
            return FrameSpan{segment.placeOf(first), segment.placeOf(last)};
        }
    }
    return std::nullopt;
}

View ViewBuilder::build() {
    buildPicture();
    buildSignal();
    buildSource();
    buildRecording();
    buildDrive();
    buildLine();
    buildClips();
    buildAlarms();
    return std::move(view_);
}

void ViewBuilder::buildPicture() {
    const Reel& reel = player_.reel();
    view_.cameraBuilt = state_.built;
    view_.held = player_.held();
    view_.speed = player_.speed();
    if (player_.show() != Player::Show::nothing) {
        view_.speedText = view_.held ? say(Text::speedHeld)
                                     : say(Text::speedTimes, {numberText(view_.speed, settings_.language)});
    }
    view_.playMode = player_.mode();
    view_.playModeText = say(modeText(view_.playMode));
    view_.mute = settings_.mute;
    const std::optional<std::uint64_t> place = player_.place();
    const std::optional<Place> found = place ? reel.find(*place) : std::nullopt;
    if (!found) {
        return;
    }
    const Segment& segment = reel.segments()[found->segment];
    view_.file = segment.file;
    view_.frame = found->frame;
    view_.inRing = player_.inRing(state_, *place, 1);
    view_.timeOfDay_ms = reel.timeOfDay_ms(*place);
    view_.timeOfDay = view_.timeOfDay_ms == 0 ? L"" : timeOfDayText(view_.timeOfDay_ms, true);
    view_.position = clockText(length_ms(found->frame, segment.frameDuration_100ns), true);
}

void ViewBuilder::buildSignal() {
    if (!lossSince_ms) {
        return;
    }
    view_.noSignal_ms = std::max<std::int64_t>(now.steady_ms - *lossSince_ms, 1);
    view_.noSignalText = say(Text::noSignalSince, {timeOfDayText(now.timeOfDay_ms - view_.noSignal_ms, false),
                                                   duration(view_.noSignal_ms)});
}

void ViewBuilder::buildSource() {
    using Mode = View::Mode;
    const std::wstring time = view_.timeOfDay.substr(0, 8);
    switch (player_.show()) {
    case Player::Show::nothing:
        view_.mode = Mode::noCamera;
        view_.source = say(Text::sourceNoCamera);
        return;
    case Player::Show::live:
        view_.mode = lossSince_ms ? Mode::noSignal : Mode::live;
        view_.source = say(lossSince_ms ? Text::sourceNoSignal : Text::sourceLive);
        return;
    case Player::Show::liveHeld:
        view_.mode = Mode::held;
        view_.source = say(Text::sourceHeld, {time});
        return;
    case Player::Show::replay:
        break;
    }
    if (playlistAt) {
        view_.mode = Mode::playlist;
        const Clip* const clip = clips_.list.chosen();
        view_.source = say(Text::sourcePlaylist, {std::to_wstring(*playlistAt + 1),
                                                  std::to_wstring(playlistClips), clip ? clip->name : L""});
    } else if (!player_.ofEvening()) {
        view_.mode = Mode::oldRecording;
        view_.source = say(Text::sourceOld, {nameOf(view_.file)});
    } else {
        view_.mode = Mode::replay;
        view_.source = say(Text::sourceReplay, {time});
    }
}

void ViewBuilder::buildRecording() {
    using State = Recorder::State;
    const EngineState::Recording& how = state_.recording;
    view_.recordingFile = recorder_.file();
    if (recorder_.state() == State::off) {
        view_.recording = ended.empty() ? View::Recording::off : View::Recording::failing;
        view_.recordingText = say(Text::recordingOff);
        return;
    }
    view_.recorded_ms = recorder_.recorded_ms(now);
    const std::wstring name = nameOf(recorder_.file());
    if (how.failing || how.behind || !how.on) {
        view_.recording = View::Recording::failing;
        view_.recordingText = say(Text::recordingFailing, {name});
    } else if (recorder_.state() == State::rolling) {
        view_.recording = View::Recording::rolling;
        view_.recordingText = say(Text::recordingRolling, {std::to_wstring(settings_.rolling_min)});
    } else {
        view_.recording = View::Recording::recording;
        view_.recordingText = say(Text::recordingOn, {clockText(view_.recorded_ms, false), name});
    }
}

void ViewBuilder::buildDrive() {
    if (!state_.built || state_.frameBytes == 0 || state_.frameDuration_100ns == 0) {
        return;
    }
    std::optional<std::uint64_t> frames =
        state_.recording.on ? state_.recording.driveSpace_frames : std::nullopt;
    if (!frames && freeBytes) {
        frames = *freeBytes / (state_.frameBytes + frameOverhead_bytes);
    }
    if (!frames) {
        return;
    }
    view_.driveLeft_ms = length_ms(std::min<std::uint64_t>(*frames, 1ull << 40), state_.frameDuration_100ns);
    view_.driveLow = *view_.driveLeft_ms < lowDrive_ms;
    view_.driveText = say(Text::driveLeft, {duration(*view_.driveLeft_ms)});
}

void ViewBuilder::buildLine() {
    const Reel& reel = player_.reel();
    View::Line& line = view_.line;
    line.whole = reel.span();
    line.position = player_.place();
    line.range = player_.range();
    line.markIn = clips_.markIn;
    if (const std::optional<Place> found = line.position ? reel.find(*line.position) : std::nullopt) {
        line.current = reel.segments()[found->segment].places();
    }
    for (const Segment& segment : reel.segments()) {
        if (segment.there()) {
            line.parts.push_back({nameOf(segment.file), segment.places(), segment.rolling, segment.growing});
        }
    }
    for (const Gap& gap : reel.gaps()) {
        if (line.whole && line.whole->holds(gap.before)) {
            line.gaps.push_back({gap.before, say(Text::gapOf, {duration(gap.length_ms)})});
        }
    }
    if (!player_.ofEvening() || evening_.segments().empty() || !evening_.last().there()) {
        return;
    }
    const Segment& last = evening_.last();
    if (!last.growing) {
        return;
    }
    const FrameSpan places = last.places();
    line.liveEdge = places.last;
    const std::uint64_t held = std::min<std::uint64_t>(state_.ringFrames, last.frames);
    if (held > 0) {
        line.ring = FrameSpan{places.last - held + 1, places.last};
    }
    const std::uint64_t written = std::min(state_.recording.written, last.frames);
    if (!last.file.empty() && written > 0) {
        line.onDisk = FrameSpan{places.first, places.first + written - 1};
    }
}

void ViewBuilder::buildClips() {
    const Clip* const chosen = clips_.list.chosen();
    for (const Clip& clip : clips_.list.clips()) {
        View::ClipRow row;
        row.clip = clip;
        row.places = placesOf(player_.reel(), clip);
        row.timeOfDay = clip.timeOfDay_ms == 0 ? L"" : timeOfDayText(clip.timeOfDay_ms, false);
        row.length = duration(clip.length_ms());
        row.chosen = chosen && chosen->id == clip.id;
        row.playing = row.places && player_.range() == row.places && !player_.held();
        row.gone = !row.places;
        view_.clips.push_back(std::move(row));
    }
}

void ViewBuilder::alarm(View::Alarm::Weight weight, std::wstring text) {
    view_.alarms.push_back({weight, std::move(text)});
}

void ViewBuilder::buildAlarms() {
    using Weight = View::Alarm::Weight;
    const EngineState::Recording& how = state_.recording;
    const std::wstring name = nameOf(recorder_.file());
    const std::wstring why = how.error.empty() ? say(Text::unknownReason) : how.error;
    const bool on = recorder_.state() != Recorder::State::off;
    if (!ended.empty()) {
        alarm(Weight::recording, ended);
    }
    if (!on && state_.built) {
        const std::wstring& reason = recorder_.explanation();
        alarm(Weight::recording,
              say(Text::alarmNotRecording, {reason.empty() ? say(Text::unknownReason) : reason}));
    }
    if (on && how.failing) {
        const std::wstring safe = duration(length_ms(how.written, state_.frameDuration_100ns));
        alarm(Weight::recording, say(Text::alarmFailing, {name, why, safe}));
    } else if (on && how.failed > 0) {
        alarm(Weight::recording, say(Text::alarmFramesFailed, {name, std::to_wstring(how.failed), why}));
    }
    if (on && (how.behind || how.lost > 0)) {
        alarm(Weight::recording, say(Text::alarmBehind, {name, std::to_wstring(how.lost)}));
    }
    if (view_.driveLow) {
        alarm(Weight::drive, say(Text::alarmDrive, {duration(*view_.driveLeft_ms)}));
    }
    if (lossSince_ms) {
        alarm(Weight::signal, view_.noSignalText);
    }
    if (player_.show() == Player::Show::replay && state_.unreadable > 0) {
        alarm(Weight::picture,
              say(Text::alarmUnreadable, {nameOf(view_.file), std::to_wstring(state_.unreadableFrom),
                                          std::to_wstring(state_.unreadable), state_.unreadableError}));
    }
    if (state_.pictureDisturbed) {
        alarm(Weight::picture, say(Text::alarmPicture));
    }
    if (unsaved && !unsaved->unsavedFile().empty()) {
        alarm(Weight::settings, say(Text::alarmClips, {unsaved->unsavedFile(), unsaved->whyUnsaved()}));
    }
}

} // namespace app
