#include "app/session.h"

#include "app/view_builder.h"

namespace app {

namespace {

constexpr std::int64_t questionTime_ms = 3000;

} // namespace

Session::Session(Engine& engine, Disk& disk, Recordings& recordings, const Settings& settings)
    : stage_(engine, disk, recordings, settings) {
    refresh();
}

// Every public call ends with a fresh view.

/// A command: a key takes the message of the one before away.
template <class Act>
Outcome Session::acted(Act act) {
    const std::uint64_t serial = stage_.message.serial;
    stage_.look();
    const Outcome outcome = act();
    if (stage_.message.serial == serial && outcome != Outcome::told) {
        stage_.message.text.clear();
    }
    refresh();
    return outcome;
}

bool Session::start(Moment now) {
    stage_.now = now;
    const bool started = capture_.start();
    refresh();
    return started;
}

void Session::tick(Moment now) {
    stage_.now = now;
    stage_.look();
    if (question_ && stage_.now.steady_ms > question_->until_ms) {
        question_.reset();
    }
    capture_.watch();
    take(stage_.player.follow(stage_.state, stage_.state.shown, stage_.now.steady_ms));
    if (stage_.now.steady_ms - clipsTried_ms_ >= Stage::retryPeriod_ms) {
        clipsTried_ms_ = stage_.now.steady_ms;
        stage_.eveningClips.save();
        stage_.oldClips.save();
    }
    refresh();
}

void Session::shown(std::uint64_t frame) {
    stage_.look();
    take(stage_.player.follow(stage_.state, frame, stage_.now.steady_ms));
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
    return acted([&] { return transport_.showNearest(place); });
}

Outcome Session::jog(int frames) {
    return acted([&] { return frames == 0 ? Outcome::done : transport_.step(frames); });
}

Outcome Session::shuttle(int steps) {
    return acted([&] { return transport_.shuttle(steps); });
}

Outcome Session::open(const std::wstring& file) {
    return acted([&] {
        question_.reset();
        for (const Segment& segment : stage_.evening.segments()) {
            if (segment.there() && samePath(segment.file, file)) {
                stage_.closeOld();
                const Outcome outcome = transport_.showNearest(segment.start);
                if (stage_.player.show() == Player::Show::nothing) {
                    stage_.player.goLive();
                }
                return outcome == Outcome::done ? stage_.done(Text::toldOfThisEvening, {nameOf(file)})
                                                : outcome;
            }
        }
        std::wstring why;
        const std::optional<RecordingFacts> facts = stage_.recordings.look(file, why);
        if (!facts) {
            return stage_.told(Text::toldOpenFailed, {why});
        }
        if (facts->frames < 2) {
            return stage_.told(Text::toldTooShort, {file});
        }
        if (stage_.state.built && facts->frameBytes != 0 && stage_.state.frameBytes != 0 &&
            facts->frameBytes != stage_.state.frameBytes) {
            return stage_.told(Text::toldOtherSystem, {nameOf(file), std::to_wstring(facts->frameBytes),
                                                       std::to_wstring(stage_.state.frameBytes)});
        }
        const std::optional<FrameSpan> range = stage_.engine.replay(file, {0, facts->frames - 1}, 0);
        if (!range) {
            return stage_.told(Text::toldOpenFailed, {stage_.engine.explanation()});
        }
        Segment segment;
        segment.file = file;
        segment.frames = range->last + 1;
        segment.startedAt_ms = facts->recordedAt_ms.value_or(0);
        segment.frameDuration_100ns =
            facts->frameDuration_100ns > 0 ? facts->frameDuration_100ns : segment.frameDuration_100ns;
        stage_.oldClips.save();
        stage_.playlist.reset();
        stage_.old.emplace();
        stage_.old->add(segment);
        stage_.player.showOld(&*stage_.old, *range);
        stage_.settings.addRecent(file);
        const std::vector<std::wstring> findings = stage_.oldClips.load(segment, stage_.settings.language);
        if (!findings.empty()) {
            stage_.tell(firstOf(findings, stage_.settings.language), true);
            return Outcome::done;
        }
        return stage_.done(Text::toldOpened, {nameOf(file), stage_.lengthText(segment.places())});
    });
}

Outcome Session::call(const std::string& text) {
    return acted([&] {
        return stage_.engine.call(text) ? stage_.done(Text::toldCall, {wide(text)})
                                        : stage_.told(Text::toldCallFailed, {stage_.engine.explanation()});
    });
}

Outcome Session::chooseClip(std::uint64_t id) {
    return acted(
        [&] { return stage_.clips().list.choose(id) ? Outcome::done : stage_.told(Text::toldNoClips); });
}

void Session::apply(const Settings& settings) {
    stage_.settings = settings;
    stage_.recorder.set(stage_.settings.folder, stage_.settings.raw);
    refresh();
}

void Session::tell(const std::wstring& text, bool refused) {
    stage_.tell(text, refused);
    view_.message = stage_.message;
}

void Session::shutDown() {
    if (stage_.recorder.state() == Recorder::State::recording) {
        stage_.engine.stopRecord();
    }
    stage_.eveningClips.save();
    stage_.oldClips.save();
    stage_.engine.stop();
    stage_.player.reset(false);
    stage_.recorder.engineReset(false, stage_.now);
    refresh();
}

std::optional<PictureAt> Session::pictureAt(std::uint64_t place) const {
    const std::optional<Place> found = stage_.reel().find(place);
    if (!found) {
        return std::nullopt;
    }
    return PictureAt{stage_.reel().segments()[found->segment].file, found->frame,
                     stage_.player.inRing(stage_.state, place, 1)};
}

std::wstring Session::describe(std::uint64_t place) {
    const std::optional<Place> found = stage_.reel().find(place);
    if (!found) {
        return L"";
    }
    const std::wstring& file = stage_.reel().segments()[found->segment].file;
    const std::wstring code = file.empty() ? L"" : stage_.recordings.timeCode(file, found->frame);
    return stage_.placeText(place) + (code.empty() ? L"" : L"  " + code);
}

Outcome Session::dispatch(Command command, const std::wstring& argument) {
    switch (command) {
    case Command::record:
        return capture_.record();
    case Command::stop:
        return stop();
    case Command::open:
        return argument.empty() ? Outcome::window : open(argument);
    case Command::lookForCamera:
        return capture_.lookForCamera();
    case Command::field:
        return nextField();
    case Command::mute:
        return toggle(stage_.settings.mute, Text::toldMuted, Text::toldSound);
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
        return command < Command::markIn ? transport_.perform(command, argument)
                                         : clipCommands_.perform(command, argument);
    }
}

Outcome Session::nextField() {
    if (!stage_.player.held()) {
        return stage_.told(Text::toldFieldHeld);
    }
    field_ = static_cast<Field>((static_cast<int>(field_) + 1) % 3);
    return stage_.done(field_ == Field::both    ? Text::toldFieldBoth
                       : field_ == Field::first ? Text::toldFieldFirst
                                                : Text::toldFieldSecond);
}

Outcome Session::toggle(bool& value, Text on, Text off) {
    value = !value;
    return stage_.done(value ? on : off);
}

Outcome Session::stop() {
    if (stage_.recorder.state() != Recorder::State::recording) {
        return stage_.told(Text::toldNotRecording);
    }
    if (question_ && question_->command == Command::stop) {
        return confirm();
    }
    return ask(Command::stop, Text::askStop, {nameOf(stage_.recorder.file())});
}

Outcome Session::quit() {
    if (question_ && question_->command == Command::quit) {
        return confirm();
    }
    if (stage_.recorder.state() == Recorder::State::recording) {
        return ask(Command::quit, Text::askQuitRecording, {nameOf(stage_.recorder.file())});
    }
    if (busy_) {
        return ask(Command::quit, Text::askQuitBusy);
    }
    if (stage_.state.built) {
        return ask(Command::quit, Text::askQuit);
    }
    quit_ = true;
    return stage_.done(Text::toldQuit);
}

Outcome Session::ask(Command command, Text id, const std::vector<std::wstring>& values) {
    question_ = {command, stage_.now.steady_ms + questionTime_ms};
    questionText_ = text(id, stage_.settings.language, values);
    stage_.tell(questionText_, true);
    return Outcome::told;
}

Outcome Session::confirm() {
    if (!question_) {
        return stage_.told(Text::toldNoQuestion);
    }
    const Command command = question_->command;
    question_.reset();
    if (command == Command::stop) {
        capture_.stop();
        return Outcome::done;
    }
    quit_ = true;
    return stage_.done(Text::toldQuit);
}

Outcome Session::dismiss() {
    if (question_) {
        question_.reset();
        return stage_.done(Text::toldQuestionOff);
    }
    if (stage_.message.text.empty()) {
        return Outcome::window;
    }
    stage_.message.text.clear();
    return Outcome::done;
}

void Session::take(Player::Event event) {
    if (event == Player::Event::toLive) {
        stage_.closeOld();
        stage_.done(Text::toldLive);
        return;
    }
    if (event != Player::Event::ended) {
        return;
    }
    if (clipCommands_.playNext()) {
        return;
    }
    const bool back = stage_.settings.backToLive && stage_.player.range() && stage_.player.ofEvening() &&
                      stage_.state.built;
    if (back && stage_.player.goLive() == Player::Result::done) {
        stage_.done(Text::toldEndToLive);
    } else {
        stage_.done(Text::toldEndOfRange, {stage_.placeText(*stage_.player.place())});
    }
}

void Session::refresh() {
    stage_.state = stage_.engine.state();
    if (!stage_.player.held()) {
        field_ = Field::both;
    }
    ViewBuilder builder(stage_.settings, stage_.state, stage_.player, stage_.recorder, stage_.clips(),
                        stage_.evening);
    builder.now = stage_.now;
    builder.lossSince_ms = capture_.lossSince_ms();
    builder.freeBytes = capture_.freeBytes();
    builder.ended = capture_.ended();
    builder.unsaved = !stage_.eveningClips.unsavedFile().empty() ? &stage_.eveningClips : &stage_.oldClips;
    builder.playlistAt = stage_.playlist ? std::optional(stage_.playlist->at) : std::nullopt;
    builder.playlistClips = stage_.playlist ? stage_.playlist->clips.size() : 0;
    view_ = builder.build();
    view_.message = stage_.message;
    view_.question = question_ ? std::optional(questionText_) : std::nullopt;
    view_.field = field_;
    view_.showTime = showTime_;
    view_.quit = quit_;
}

} // namespace app
