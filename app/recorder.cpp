#include "app/recorder.h"

#include "app/recording_name.h"
#include "app/rolling_file.h"

namespace app {

void Recorder::set(const std::wstring& folder, bool raw) {
    folder_ = folder;
    raw_ = raw;
}

std::uint64_t Recorder::framesOf(const EngineState& state) const {
    const std::uint64_t first = evening_.segments().empty() ? 0 : evening_.last().firstFrame;
    return !state.built || state.captured < first || evening_.segments().empty() ? 0 : state.captured - first;
}

/// The last frame of a file is never replayed, so it counts as not there.
void Recorder::closeLast() {
    if (evening_.segments().empty() || !evening_.last().growing) {
        return;
    }
    const std::wstring file = evening_.last().file;
    std::wstring why;
    const std::optional<RecordingFacts> facts = file.empty() ? std::nullopt : recordings_.look(file, why);
    evening_.close(facts && facts->frames > 0 ? facts->frames - 1 : 0);
}

void Recorder::addSegment(const std::wstring& file, bool rolling, Moment now) {
    const EngineState engine = engine_.state();
    Segment segment;
    segment.file = file;
    segment.firstFrame = file.empty() ? engine.captured : 0;
    segment.startedAt_ms = now.timeOfDay_ms;
    segment.frameDuration_100ns = engine.frameDuration_100ns > 0 ? engine.frameDuration_100ns : 400000;
    segment.rolling = rolling;
    segment.growing = true;
    evening_.add(segment);
}

bool Recorder::begin(const std::wstring& name, State state, Moment now) {
    if (name.empty()) {
        return false;
    }
    if (disk_.exists(name)) {
        explanation_ = L"it is there already";
        return false;
    }
    const bool started = engine_.startRecord(name);
    explanation_ = started ? L"" : engine_.explanation();
    // The engine has ended what it recorded before in either case.
    closeLast();
    addSegment(started ? name : L"", state == State::rolling, now);
    state_ = started ? state : State::off;
    file_ = started ? name : L"";
    startedAt_ = now;
    return started;
}

bool Recorder::startRolling(Moment now) {
    RollingFile rolling(disk_, folder_, extension());
    explanation_.clear();
    const std::wstring name = rolling.next(now.timeOfDay_ms, explanation_);
    if (!begin(name, State::rolling, now)) {
        if (evening_.segments().empty() || !evening_.last().growing) {
            addSegment(L"", true, now);
        }
        return false;
    }
    for (const std::wstring& gone : rolling.recycle()) {
        evening_.recycle(gone);
    }
    return true;
}

bool Recorder::startRecording(Moment now) {
    explanation_.clear();
    if (!disk_.makeFolder(folder_, explanation_)) {
        return false;
    }
    if (begin(recordingName(disk_, folder_, now.timeOfDay_ms, extension()), State::recording, now)) {
        return true;
    }
    const std::wstring why = explanation_;
    if (state_ == State::off) {
        startRolling(now);
    }
    explanation_ = why;
    return false;
}

void Recorder::stopRecording() {
    engine_.stopRecord();
    closeLast();
    state_ = State::off;
    file_.clear();
}

void Recorder::endedByItself(Moment now) {
    engineReset(true, now);
}

void Recorder::engineReset(bool built, Moment now) {
    closeLast();
    state_ = State::off;
    file_.clear();
    if (built) {
        addSegment(L"", true, now);
    }
}

} // namespace app
