/// @file
/// Which file the camera's frames go into.
#pragma once

#include "app/disk.h"
#include "app/engine.h"
#include "app/moment.h"
#include "app/recordings.h"
#include "app/reel.h"

#include <cstdint>
#include <string>
#include <vector>

namespace app {

/// Sees to it that the camera's frames always go into a file: a rolling one, or a recording of the
/// operator's. Keeps the evening's reel, a file of which is added with every start. A file that is there is
/// never recorded over.
class Recorder {
public:
    /// What is recorded into.
    enum class State { off, rolling, recording };

    /// All of them outlive this object.
    Recorder(Engine& engine, Disk& disk, Recordings& recordings, Reel& evening)
        : engine_(engine), disk_(disk), recordings_(recordings), evening_(evening) {}
    Recorder(const Recorder&) = delete;
    Recorder& operator=(const Recorder&) = delete;

    /// Where and as what files are made from the next one on.
    void set(const std::wstring& folder, bool raw);

    /// Ends what is recorded and begins a new rolling file. False, with the reason in `explanation`, when
    /// there is none; the frames are then in memory alone.
    bool startRolling(Moment now);
    /// Ends the rolling file and begins a recording of the operator's. When that cannot be made, rolling goes
    /// on in a new file, and the result is false.
    bool startRecording(Moment now);
    /// Completes the operator's recording; the frames that follow are in memory alone until the next start.
    void stopRecording();
    /// The recording has ended without being asked to: the frames that follow are in memory alone.
    void endedByItself(Moment now);
    /// The engine was built anew, or is not built any more: nothing is recorded, and numbers begin at 0.
    void engineReset(bool built, Moment now);
    /// Follows the engine: the reel grows.
    void follow(const EngineState& state) { evening_.grow(framesOf(state)); }

    /// What is recorded into now.
    State state() const { return state_; }
    /// Its path; empty when it is off.
    const std::wstring& file() const { return file_; }
    /// When it began.
    Moment startedAt() const { return startedAt_; }
    /// For how long it has been recorded.
    std::int64_t recorded_ms(Moment now) const { return now.steady_ms - startedAt_.steady_ms; }
    /// Why the last start failed; empty when it did not.
    const std::wstring& explanation() const { return explanation_; }

private:
    bool begin(const std::wstring& name, State state, Moment now);
    void closeLast();
    void addSegment(const std::wstring& file, bool rolling, Moment now);
    std::uint64_t framesOf(const EngineState& state) const;
    std::wstring extension() const { return raw_ ? L".raw" : L".avi"; }

    Engine& engine_;
    Disk& disk_;
    Recordings& recordings_;
    Reel& evening_;
    std::wstring folder_;
    bool raw_ = false;
    State state_ = State::off;
    std::wstring file_;
    Moment startedAt_;
    std::wstring explanation_;
};

} // namespace app
