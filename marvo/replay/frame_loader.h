/// @file
/// The frames of a replay, read ahead from its recording.
#pragma once

#include "marvo/core/event.h"
#include "marvo/core/semaphore.h"
#include "marvo/core/str.h"
#include "marvo/core/thread_annotations.h"
#include "marvo/core/winthread.h"
#include "marvo/replay/play_error.h"
#include "marvo/replay/stop_flag.h"
#include "marvo/video/frame_pool.h"
#include "marvo/video/media_type.h"

#include <atomic>
#include <memory>
#include <optional>

namespace recording {
class Reader;
class RecordBuffer;
} // namespace recording

/// Serves a replay from disk: a thread of its own keeps a small ring of frames of a recording loaded, ahead
/// of the frame being played, in the direction of play, looping within the range. `get` never waits for the
/// disk; a frame that is not loaded yet is simply not there.
///
/// The recording may still be growing: frames that were not there when the file was opened are found once
/// they are written. Behind its end stands its last frame, under any number, so that a replay that leads
/// there goes on; but the frame that a growing recording will get next is waited for.
///
/// A frame that was there and cannot be read any more is neither: it is not loaded, tried again five times a
/// second, and told by `unreadable`. As soon as it can be read, loading goes on.
///
/// Threads: `get` on the play thread, everything else on the host's thread, `run` on the loader's own;
/// `setBreaker` on the frame store's writer thread, which waits for no lock there. The lock guards the range,
/// the positions and the ring's content; the file lock is held while the file is read or closed and is always
/// taken before the lock. A timed wait for the lock that runs out is not an error: the call goes on as if it
/// held the lock. The file lock is different, since a reader may not be used twice at once: whoever does not
/// get it leaves the reader alone.
class MARVO_API dvFrameLoad : public vwin::winthread {
public:
    dvFrameLoad();

    /// As `done`.
    ~dvFrameLoad();

    dvFrameLoad(const dvFrameLoad&) = delete;
    dvFrameLoad& operator=(const dvFrameLoad&) = delete;

    /// Prepares the range `inPoint` to `outPoint` (inclusive) of the recording `name` and starts loading into
    /// a ring of at most `maxFrames` frames, `ringBytes` bytes, and what the memory allows.
    ///
    /// The file and range that are loaded already: true, nothing changes. Another range of the recording that
    /// is open: the running loader goes on with it. Otherwise, and when frames cannot be read or the disk has
    /// held the loader up for a second, the file is opened and a loader started anew.
    /// Both points are clamped to the last frame but one: the final frame may still be in writing and is
    /// never part of a range. A file without a whole frame is accepted and clamps nothing; its frames are
    /// loaded once they are written.
    ///
    /// False, and nothing changes, when the file cannot be opened and when it holds exactly one frame, which
    /// leaves no range. False without memory for a single frame; nothing is loaded then.
    bool init(const wchar_t* name, unsigned long long inPoint, unsigned long long outPoint,
              unsigned long maxFrames);

    /// Whether the recording `name` can be opened and leaves a range to play, as far as `init` needs it.
    static bool playable(const wchar_t* name);

    /// Copies frame `number` into `frame` when it is loaded and returns whether it was; all ones is no
    /// number. The number also tells the loader where play is and, by its distance from the number asked
    /// before, in which direction it goes; asking for the same number twice means that play stands still.
    bool get(vvideo::dvFrame* frame, unsigned long long number);

    /// Play has jumped to frame `number` and will ask for it at its next tick: loading goes on there at once.
    void expect(unsigned long long number);

    /// Describes the open recording's video in `type`. False when no file is open.
    bool getType(vvideo::dvMediaType& type) const;

    /// What could not be read when it was tried last, until it can be read or another range is prepared.
    /// Counts, for a file that was cut, all frames of the range that are gone.
    play_error unreadable() const;

    /// What a ring may hold at most.
    static constexpr unsigned long long ringBytes = sizeof(void*) == 4 ? 800'000'000ull : 8'000'000'000ull;

    /// Whether the recording `name` (ignoring case) is open, every frame that was tried can be read, and the
    /// range is exactly this one.
    bool loaded(const wchar_t* name, unsigned long long inPoint, unsigned long long outPoint) const;

    /// The direction of play: positive forward, negative backward, 0 still.
    void setSpeed(double speed);

    /// Milliseconds the loader sleeps after each frame, to leave the disk to the writer; `done` ends such a
    /// sleep.
    void setBreaker(unsigned long ms);
    /// The milliseconds set last; 0 after a full `init`.
    unsigned long breaker() const;

    /// First frame of the range.
    unsigned long long inPoint() const;
    /// Last frame of the range, inclusive.
    unsigned long long outPoint() const;

    /// Stops the loader, closes the file and frees the ring.
    void done();

protected:
    /// The loader thread.
    void run() override;

    /// Whether the loader loops within the range, as after every full `init`, or loads it once and ends. To
    /// be set before `run` looks at it.
    void setEndless(bool endless);

private:
    struct Decision {
        bool load = false;
        unsigned long long frame = 0;
    };

    enum class Attempt { read, notYet, failed };

    bool isOpen(const wchar_t* name) const MARVO_REQUIRES(lock_);
    std::optional<bool> changeRange(unsigned long long inPoint, unsigned long long outPoint);
    bool makeRing(unsigned long long frames) MARVO_REQUIRES(fileLock_, lock_);
    bool startReader(std::unique_ptr<recording::Reader> reader, const wchar_t* name, unsigned long maxFrames,
                     unsigned long long inPoint, unsigned long long outPoint);
    void setRange(unsigned long long inPoint, unsigned long long outPoint) MARVO_REQUIRES(lock_);
    void closeFile() MARVO_REQUIRES(fileLock_, lock_);
    bool makeStaging(recording::RecordBuffer& staging);
    Decision decide(unsigned long ringFrames);
    Attempt readFrame(unsigned long long number, recording::RecordBuffer& staging);
    Attempt tryFrame(unsigned long long number, recording::RecordBuffer& staging, unsigned long& error)
        MARVO_REQUIRES(fileLock_);
    void noteUnreadable(unsigned long long number, unsigned long error) MARVO_REQUIRES(fileLock_);
    bool isGone(unsigned long long frame, unsigned long long bytes) const MARVO_REQUIRES(fileLock_);
    void refresh() MARVO_REQUIRES(fileLock_);
    void store(const recording::RecordBuffer& staging, unsigned long long number) MARVO_REQUIRES(lock_);
    void pauseAfter(Attempt attempt) const;
    void _dynamicLoad();
    void _completeLoad();

    vcore::semaphore fileLock_;
    vcore::semaphore lock_ MARVO_ACQUIRED_AFTER(fileLock_);
    vvideo::dvFramePool ring_;
    unsigned long long inPoint_ MARVO_GUARDED_BY(lock_) = 0;
    unsigned long long loadPosition_ MARVO_GUARDED_BY(lock_) = 0;
    unsigned long long requestPosition_ MARVO_GUARDED_BY(lock_) = 0;
    unsigned long long outPoint_ MARVO_GUARDED_BY(lock_) = 0;
    double direction_ MARVO_GUARDED_BY(lock_) = 1.0;
    bool endless_ MARVO_GUARDED_BY(lock_) = false;
    StopFlag stop_;
    /// Ends the rest of a loader that has nothing to load.
    vcore::event expected_;
    std::unique_ptr<recording::Reader> reader_ MARVO_GUARDED_BY(fileLock_);
    /// Frames that the recording had when it had most: those between its end and here are gone.
    unsigned long long frames_ MARVO_GUARDED_BY(fileLock_) = 0;
    play_error unreadable_ MARVO_GUARDED_BY(lock_);
    /// Name that the recording was opened under, empty when none is open, and its video.
    vcore::str fileName_ MARVO_GUARDED_BY(lock_);
    vvideo::dvMediaType type_ MARVO_GUARDED_BY(lock_);
    std::atomic<unsigned long> breaker_ms_ = 0;
};
