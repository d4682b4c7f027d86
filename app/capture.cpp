#include "app/capture.h"

#include "app/rolling_file.h"
#include "app/stage.h"

#include <algorithm>

namespace app {

namespace {

constexpr std::int64_t drivePeriod_ms = 2000;

} // namespace

bool Capture::start() {
    const bool started = startEngine();
    if (started && startRolling()) {
        stage_.done(Text::toldCameraFound);
    }
    return started;
}

void Capture::watch() {
    watchCamera();
    watchRecording();
    watchDrive();
    roll();
}

std::optional<std::int64_t> Capture::lossSince_ms() const {
    return loss_ ? std::optional(loss_->since_ms) : std::nullopt;
}

bool Capture::startRolling() {
    rollingTried_ms_ = stage_.now.steady_ms;
    return stage_.recorder.startRolling(stage_.now);
}

/// Builds the engine anew: live, and not recording yet.
bool Capture::startEngine() {
    const bool started = stage_.engine.start();
    stage_.closeOld();
    stage_.playlist.reset();
    loss_.reset();
    stage_.player.reset(started);
    stage_.recorder.engineReset(started, stage_.now);
    rollingTried_ms_ = stage_.now.steady_ms;
    stage_.state = stage_.engine.state();
    if (!started) {
        const std::wstring why = stage_.engine.explanation();
        why.empty() ? stage_.told(Text::toldNoCamera) : stage_.told(Text::toldStartFailed, {why});
    }
    return started;
}

Outcome Capture::record() {
    if (!stage_.state.built) {
        return stage_.told(Text::toldNoCamera);
    }
    if (stage_.recorder.state() == Recorder::State::recording) {
        return stage_.told(
            Text::toldRecordingAlready,
            {nameOf(stage_.recorder.file()), timeOfDayText(stage_.recorder.startedAt().timeOfDay_ms, false)});
    }
    const bool started = stage_.recorder.startRecording(stage_.now);
    rollingTried_ms_ = stage_.now.steady_ms;
    stage_.restoreShown();
    if (!started) {
        return stage_.told(Text::toldRecordFailed, {stage_.settings.folder, stage_.recorder.explanation()});
    }
    ended_.clear();
    return stage_.done(Text::toldRecording, {stage_.recorder.file()});
}

void Capture::stop() {
    const std::wstring file = stage_.recorder.file();
    const std::wstring name = nameOf(file);
    stage_.recorder.stopRecording();
    const EngineState::Recording how = stage_.engine.state().recording;
    const std::wstring length = durationText(static_cast<std::int64_t>(how.written) *
                                                 stage_.evening.last().frameDuration_100ns / 10000,
                                             stage_.settings.language);
    const std::uint64_t missing = how.lost + how.failed;
    if (!stage_.disk.exists(file)) {
        stage_.told(Text::toldStoppedGone, {name, folderOf(file)});
    } else if (missing == 0 && how.complete) {
        stage_.done(Text::toldStopped, {name, length});
    } else {
        stage_.told(Text::toldStoppedShort,
                    {name, length, std::to_wstring(missing),
                     how.error.empty() ? text(Text::unknownReason, stage_.settings.language) : how.error});
    }
    startRolling();
    stage_.restoreShown();
}

Outcome Capture::lookForCamera() {
    if (stage_.state.built && stage_.state.camera == EngineState::Camera::live) {
        return stage_.told(Text::toldCameraThere);
    }
    if (stage_.state.built && stage_.recorder.state() == Recorder::State::recording) {
        return stage_.told(Text::toldCameraReturns);
    }
    restartAt_ms_.reset();
    if (!startEngine()) {
        return Outcome::told;
    }
    startRolling();
    return stage_.done(Text::toldCameraFound);
}

void Capture::watchCamera() {
    using Camera = EngineState::Camera;
    if (restartAt_ms_ && stage_.now.steady_ms >= *restartAt_ms_) {
        restartForOtherFormat();
        return;
    }
    if (!stage_.state.built) {
        return;
    }
    if (stage_.state.camera == Camera::changed) {
        restartRecords_ = stage_.recorder.state() == Recorder::State::recording;
        restartForOtherFormat();
        return;
    }
    const bool lost = stage_.state.camera == Camera::gone || stage_.state.camera == Camera::silent;
    if (lost) {
        const bool gone = stage_.state.camera == Camera::gone;
        if (!loss_) {
            const std::uint64_t next = stage_.evening.last().start + stage_.evening.last().frames;
            loss_ = {stage_.now.steady_ms - static_cast<std::int64_t>(stage_.state.cameraSince_ms), next};
            stage_.told(gone ? Text::toldCameraLost : Text::toldCameraSilent);
        }
    } else if (loss_ && stage_.state.camera == Camera::live) {
        // In a file that began meanwhile time counts from its start.
        const std::int64_t since_ms = std::max(loss_->since_ms, stage_.recorder.startedAt().steady_ms);
        const std::int64_t length_ms = std::max<std::int64_t>(stage_.now.steady_ms - since_ms, 0);
        const std::wstring length =
            durationText(stage_.now.steady_ms - loss_->since_ms, stage_.settings.language);
        stage_.evening.addGap({std::max(loss_->nextPlace, stage_.evening.last().start), length_ms});
        loss_.reset();
        stage_.done(Text::toldCameraBack, {length, nameOf(stage_.recorder.file())});
    }
}

void Capture::restartForOtherFormat() {
    const std::wstring before = nameOf(stage_.recorder.file());
    const bool records = restartRecords_;
    restartAt_ms_.reset();
    if (!startEngine()) {
        const std::wstring why = stage_.engine.explanation();
        stage_.told(Text::toldCameraChangedGone,
                    {why.empty() ? text(Text::unknownReason, stage_.settings.language) : why});
        restartAt_ms_ = stage_.now.steady_ms + Stage::retryPeriod_ms;
        return;
    }
    restartRecords_ = false;
    const bool started = records ? stage_.recorder.startRecording(stage_.now) : startRolling();
    stage_.state = stage_.engine.state();
    if (started) {
        stage_.done(Text::toldCameraChanged, {before, nameOf(stage_.recorder.file())});
    } else {
        stage_.told(Text::toldRecordFailed, {stage_.settings.folder, stage_.recorder.explanation()});
    }
}

void Capture::watchRecording() {
    const bool on = stage_.recorder.state() != Recorder::State::off;
    if (on && stage_.state.built && !stage_.state.recording.on) {
        const std::wstring why = stage_.state.recording.error.empty()
                                     ? text(Text::unknownReason, stage_.settings.language)
                                     : stage_.state.recording.error;
        ended_ = text(Text::alarmEnded, stage_.settings.language, {nameOf(stage_.recorder.file()), why});
        stage_.tell(ended_, true);
        stage_.recorder.endedByItself(stage_.now);
        rollingTried_ms_ = stage_.now.steady_ms;
    }
    if (!on && stage_.state.built && stage_.now.steady_ms - rollingTried_ms_ >= Stage::retryPeriod_ms) {
        startRolling();
        stage_.restoreShown();
    }
}

void Capture::watchDrive() {
    if (driveAsked_ms_ == 0 || stage_.now.steady_ms - driveAsked_ms_ >= drivePeriod_ms) {
        driveAsked_ms_ = stage_.now.steady_ms;
        freeBytes_ = stage_.disk.freeBytes(stage_.settings.folder);
    }
}

/// The next rolling file. Its length is that of its frames: a camera that is gone uses nothing up.
void Capture::roll() {
    if (stage_.recorder.state() != Recorder::State::rolling || stage_.evening.segments().empty()) {
        return;
    }
    const Segment& file = stage_.evening.last();
    const auto recorded_ms = static_cast<std::int64_t>(file.frames) * file.frameDuration_100ns / 10000;
    const bool watched = stage_.player.show() != Player::Show::live;
    // A second more than was asked for, since the last frames of a file cannot be replayed.
    if (RollingFile::due(recorded_ms - 1000, stage_.settings.rolling_min * 60000ll, watched)) {
        startRolling();
        stage_.restoreShown();
    }
}

} // namespace app
