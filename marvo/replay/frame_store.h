#pragma once

#include "marvo/core/semaphore.h"
#include "marvo/core/str.h"
#include "marvo/core/vobject.h"
#include "marvo/core/winthread.h"
#include "marvo/avi/avi_file.h"
#include "marvo/recording/rec_file.h"
#include "marvo/replay/stop_flag.h"
#include "marvo/video/frame_pool.h"

struct IMediaSample;

/// Keeps the newest captured DV frames in memory, gives each its number (from 0 per recording, the only place
/// that does), and drains them on a thread of its own into a recording file: raw records (`dvRecFile`), or an
/// AVI file
/// (`dvAVIFile`) when the name holds ".avi".
///
/// Frame n lives in slot n modulo the ring's size and is found by its number until frame n + size takes the
/// slot. Capture never waits for the disk: when the writer falls a whole ring behind, the frames in between
/// are missing from the file. Capture and recording are independent: frames can be added and replayed without
/// a file.
///
/// Threads: `add` on the capture thread; `get`, `findFrame` and the positions on the play thread; recording
/// commands on the host's thread; `run` on the writer thread. The store lock (this object's semaphore) is
/// held while a frame is added, copied out or staged, and while files are opened, closed or flushed; the ring
/// has a lock of its own for single reads and updates. The store lock is always taken first. A timed wait
/// that runs out is not an error: the call goes on as if it held the lock (live video outranks exactness).
///
/// Emits "poolInfo" on the writer thread with (64-bit newest position, 64-bit written position, 32-bit ring
/// size).
class MARVO_API dvFrameStore : public vcore::vObject, public vwin::winthread, private vcore::semaphore {
public:
    dvFrameStore();

    /// As `done`.
    ~dvFrameStore() override;

    dvFrameStore(const dvFrameStore&) = delete;
    dvFrameStore& operator=(const dvFrameStore&) = delete;

    /// Makes a ring of `frames` slots of `frameSize` bytes; `frameDuration` is in 100 ns. Ends whatever ran
    /// before. False when the ring cannot be had or the frame size is beyond any DV frame.
    bool init(unsigned long frameSize, unsigned long long frameDuration, unsigned long frames);

    /// Whether there is a ring with at least one slot.
    bool initialized() const;

    /// Stores a captured frame under the next number. False for null or without a slot. The number is used up
    /// either way.
    bool add(IMediaSample* sample);

    /// Copies a frame into a media sample and marks it for immediate display: no time stamps, sync point,
    /// discontinuity. False for null or when the ring does not hold the frame (any more).
    bool get(IMediaSample* sample, unsigned long long frame);

    /// Copies frame `number` into `frame` (its bytes only, not its number). False as above.
    bool get(vvideo::dvFrame* frame, unsigned long long number);

    /// The ring's own frame of that number, or null. No copy and no store lock: it turns into another frame
    /// when the ring wraps.
    vvideo::dvFrame* findFrame(unsigned long long number);

    /// The number the next captured frame will get: one past the newest.
    unsigned long long lastFrame() const;

    /// The number of the next frame that the writer will take.
    unsigned long long writtenFrame() const;

    /// Bytes of one DV frame; 0 without a ring.
    unsigned long frameSize() const;

    /// 25 when a frame has exactly 144000 bytes, else 30, also without a ring.
    unsigned long framesPerSecond() const;

    /// Name of the recording that was started last, raw or AVI; empty before the first. Owned by the store.
    const wchar_t* fileName() const;

    /// Limits what is written: frames numbered `limit` and above are captured and can be replayed from
    /// memory, but do not reach the file. Despite the name it is compared with frame numbers, not bytes.
    /// Negative: no limit.
    void setMaxFilesize(long long limit);

    /// Kept for hosts that set it; the engine does not use it.
    void setRemoteFile(const wchar_t* name);

    /// Starts recording into a new file, ending a recording that runs. Frame numbers begin again at 0 and the
    /// ring is emptied. False without a ring or when the file cannot be created: no recording runs then, and
    /// the ring keeps its frames.
    bool startRecord(const wchar_t* name);

    /// Ends the recording: the writer takes the frames that were captured by now (for at most a second) and
    /// the file is closed. The ring keeps its frames.
    void stopRecord();

    /// Empties the ring and begins again at number 0. Prints "flush record" on standard output.
    void flush();

    /// Has the system write what it holds of the raw recording.
    void fileFlush();

    /// Ends the recording and frees the ring.
    void done();

    /// The writer thread.
    void run() override;

private:
    void stopWriter();
    void closeFiles();
    void resetRing();
    bool openRecording(const wchar_t* name);
    bool writerShallEnd(unsigned long long backlog) const;
    void writeBacklog(vvideo::dvFrame& staging, unsigned long ringFrames);
    bool stageFrame(vvideo::dvFrame& staging, unsigned long long& number);
    void writeStaged(const vvideo::dvFrame& staging, unsigned long ringFrames);

    vvideo::dvFramePool ring_;
    unsigned long long frameDuration_100ns_ = 400000;
    StopFlag stop_;
    /// Set when the writer has used up the time for its last frames.
    std::atomic<bool> abandonBacklog_ = false;
    dvRecFile rawFile_;
    dvAVIFile aviFile_;
    vcore::str fileName_;
    vcore::str remoteFile_;
    std::atomic<long long> maxFileSize_ = -1;
};
