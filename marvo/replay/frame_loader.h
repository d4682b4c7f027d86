#pragma once

#include "marvo/core/semaphore.h"
#include "marvo/core/winthread.h"
#include "marvo/avi/avi_file.h"
#include "marvo/recording/play_file.h"
#include "marvo/replay/stop_flag.h"
#include "marvo/video/frame_pool.h"

/// Serves a replay from disk: a thread of its own keeps a small ring of frames of a recording loaded, ahead
/// of the frame being played, in the direction of play, looping within the range. `get` never waits for the
/// disk; a frame that is not loaded yet is simply not there.
///
/// The recording may still be growing: frames that were not there when the file was opened are found once
/// they are written, and a frame that the file does not hold is not delivered.
///
/// Threads: `get` on the play thread, everything else on the host's thread, `run` on the loader's own;
/// `setBreaker` also on the frame store's writer thread. The lock guards the range, the positions and the
/// ring's content; the file lock is held while a file is read or closed and is always taken before the lock.
/// A timed wait that runs out is not an error: the call goes on as if it held the lock.
class MARVO_API dvFrameLoad : public vwin::winthread {
public:
    dvFrameLoad();

    /// As `done`.
    ~dvFrameLoad();

    dvFrameLoad(const dvFrameLoad&) = delete;
    dvFrameLoad& operator=(const dvFrameLoad&) = delete;

    /// Prepares the range `inPoint` to `outPoint` (inclusive) of the recording `name` and starts loading into
    /// a ring of at most `maxFrames` frames.
    ///
    /// The file and range that are loaded already: true, nothing changes. Another range of the raw recording
    /// that is open: the running loader goes on with it, unclamped. Otherwise the file is opened anew and
    /// both points are clamped to the last frame but one: the final frame may still be in writing and is
    /// never part of a range. False when the file cannot be opened, when it holds exactly one frame (which
    /// leaves no range), or without memory. A file without a whole frame is accepted; nothing is ever loaded
    /// from it.
    bool init(const wchar_t* name, unsigned long long inPoint, unsigned long long outPoint,
              unsigned long maxFrames);

    /// Whether the recording `name` can be opened and leaves a range to play. To be asked before `init`,
    /// which gives up what is loaded before it opens another file.
    static bool playable(const wchar_t* name);

    /// Copies frame `number` into `frame` when it is loaded and returns whether it was. The number also tells
    /// the loader where play is and, by its distance from the number asked before, in which direction it
    /// goes; asking for the same number twice means that play stands still.
    bool get(vvideo::dvFrame* frame, unsigned long long number);

    /// Describes the open recording's video in `type`. False when no file is open.
    bool getType(vvideo::dvMediaType& type) const;

    /// Whether the recording `name` (ignoring case) is open and the range is exactly this one.
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

private:
    struct Decision {
        bool load = false;
        unsigned long long frame = 0;
    };

    bool sameFile(const wchar_t* name) const;
    bool openFile(const wchar_t* name, unsigned long& lastFrame, unsigned long& frameSize);
    bool startRange(unsigned long long inPoint, unsigned long long outPoint, unsigned long lastFrame,
                    unsigned long frameSize, unsigned long maxFrames);
    void closeFiles();
    Decision decide(unsigned long ringFrames);
    const unsigned char* readFrame(unsigned long long frame, vvideo::dvFrame& staging);
    bool seekRaw(unsigned long long frame);
    bool readAvi(unsigned long long frame, vvideo::dvFrame& staging);
    void store(const unsigned char* frameData, unsigned long long frame);
    void pauseAfter(bool loaded) const;
    void _dynamicLoad();
    void _completeLoad();

    vcore::semaphore lock_;
    vcore::semaphore fileLock_;
    vvideo::dvFramePool ring_;
    unsigned long long inPoint_ = 0;
    unsigned long long loadPosition_ = 0;
    unsigned long long requestPosition_ = 0;
    unsigned long long outPoint_ = 0;
    double direction_ = 1.0;
    bool endless_ = false;
    StopFlag stop_;
    dvPlayFile rawFile_;
    dvAVIFile aviFile_;
    vcore::str aviName_;
    std::atomic<unsigned long> breaker_ms_ = 0;
};
