/// @file
/// The ring of the newest captured frames, and their way into a recording.
#pragma once

#include "marvo/core/event.h"
#include "marvo/core/semaphore.h"
#include "marvo/core/str.h"
#include "marvo/core/thread_annotations.h"
#include "marvo/core/vobject.h"
#include "marvo/core/winthread.h"
#include "marvo/recording/record_buffer.h"
#include "marvo/replay/record_status.h"
#include "marvo/replay/record_tally.h"
#include "marvo/replay/stop_flag.h"
#include "marvo/video/frame_pool.h"

#include <atomic>
#include <memory>
#include <string>

struct IMediaSample;

namespace recording {
class Writer;
} // namespace recording

/// Keeps the newest captured DV frames in memory, gives each its number (from 0 per recording, the only place
/// that does), and drains them on a thread of its own into a recording file, whose kind its name chooses.
///
/// Frame n lives in slot n modulo the ring's size and is found by its number until frame n + size takes the
/// slot. Capture never waits for the disk: when the writer falls a whole ring behind, the frames in between
/// are missing from the file, and what their slots hold by then stands in their places. A frame that cannot
/// be written is left out, and the next one is tried. Both are counted (`recordStatus`) and told of
/// ("recError"); the recording goes on until it is stopped. Capture and recording are independent: frames can
/// be added and replayed without a file.
///
/// Threads: `add` on the capture thread; `get`, `findFrame` and the positions on the play thread; recording
/// commands on the host's thread; `run` on the writer thread, which is the only one to use the recording file
/// while it runs. The store lock (this object's semaphore) is held while a frame is added, copied out or
/// staged; the ring has a lock of its own for single reads and updates. The store lock is always taken first.
/// A timed wait that runs out is not an error: the call goes on as if it held the lock (live video outranks
/// exactness).
///
/// Emits, on the writer thread:
/// - "poolInfo" before it takes a frame, with (64-bit newest position, 64-bit written position, 32-bit ring
/// size);
/// - "recError" when frames begin to be missing from the file and when that is over, with (64-bit frame
/// number,
///   64-bit count of the frames that it has cost so far, 32-bit system error, 0 for all is well again, 32-bit
///   `record_event`);
/// - "recEnd", without arguments, when a recording has ended and its totals stand. When the writer had to be
/// killed,
///   this and what went wrong at the end are emitted by `startRecord`.
///
/// A receiver that runs out of memory is not called again; the recording goes on.
class MARVO_API dvFrameStore : public vcore::vObject, public vwin::winthread, private vcore::semaphore {
public:
    dvFrameStore();

    /// As `done`. A writer that the disk holds up even then is killed.
    ~dvFrameStore() override;

    dvFrameStore(const dvFrameStore&) = delete;
    dvFrameStore& operator=(const dvFrameStore&) = delete;

    /// Makes a ring of `frames` slots of `frameSize` bytes; `frameDuration` is in 100 ns. Ends whatever ran
    /// before. False when the ring cannot be had or would be larger than `dvFramePool::mostBytes`, for a
    /// ring of no slots, and when the frame size is beyond any DV frame.
    bool init(unsigned long frameSize, unsigned long long frameDuration, unsigned long frames);

    /// Whether there is a ring with at least one slot.
    bool initialized() const;

    /// Stores a captured frame under the next number, which nobody sees before the frame is there. False for
    /// null or without a ring; without a ring the number is used up all the same.
    bool add(IMediaSample* sample);

    /// The same for a frame of `bytes` bytes in memory, for sources that have no media samples. False as
    /// well, and nothing happens, when that is not the ring's frame size.
    bool add(const void* frame, unsigned long bytes);

    /// Copies a frame into a media sample and marks it for immediate display: no time stamps, sync point,
    /// discontinuity. False for null or when the ring does not hold the frame (any more).
    bool get(IMediaSample* sample, unsigned long long frame);

    /// Copies frame `number` into `frame` (its bytes only, not its number). False as above.
    bool get(vvideo::dvFrame* frame, unsigned long long number);

    /// The same for a frame of the recording with the full path `recording`: false as well when the ring's
    /// numbers are not those of that file. They are those of the recording started last; before the first,
    /// and after `init` and `flush`, they belong to no file.
    bool get(vvideo::dvFrame* frame, unsigned long long number, const wchar_t* recording);

    /// The ring's own frame of that number, or null. No copy and no store lock: it turns into another frame
    /// when the ring wraps.
    vvideo::dvFrame* findFrame(unsigned long long number);

    /// The number the next captured frame will get: one past the newest. 0 before the first `init`; all ones
    /// after `done`, as long as there is no ring.
    unsigned long long lastFrame() const;

    /// The number of the next frame that the writer will take; 0 and all ones as for `lastFrame`. What became
    /// of the frames before it is in `recordStatus`.
    unsigned long long writtenFrame() const;

    /// How the recording goes that was started last, or how it went; empty before the first. Any thread;
    /// never waits for the disk.
    record_status recordStatus() const;

    /// Bytes of one DV frame; 0 without a ring.
    unsigned long frameSize() const;

    /// 25 when a frame has exactly 144000 bytes, else 30, also without a ring.
    unsigned long framesPerSecond() const;

    /// Name of the recording that was started last; empty before the first. Owned by the store and valid
    /// until the next start.
    const wchar_t* fileName() const;

    /// Full path of the recording whose numbers the ring's frames have; empty while they are no recording's:
    /// before the first, and after `init`, `flush` and `done`.
    std::wstring numberedFile() const;

    /// Frames that the ring has room for; 0 without a ring.
    unsigned long ringFrames() const;

    /// The limit of `setMaxFilesize`; negative for none.
    long long maxFilesize() const { return maxFileSize_; }

    /// Limits what is written: frames numbered `limit` and above are captured and can be replayed from
    /// memory, but do not reach the file; they count as neither lost nor failed. Despite the name it is
    /// compared with frame numbers, not bytes. Negative: no limit.
    void setMaxFilesize(long long limit);

    /// Kept for hosts that set it; the engine does not use it.
    void setRemoteFile(const wchar_t* name);

    /// Starts recording into a new file, ending a recording that runs. Frame numbers start again at 0 and the
    /// ring is emptied. False, with the reason in `recordStatus`, without a ring, for a device or a file that
    /// is write-protected, when the file cannot be created and when there is no memory: no recording runs
    /// then, the ring keeps its frames, and no new file is left. A writer that has been held up by the disk
    /// for five seconds is killed; what it wrote by then is kept.
    bool startRecord(const wchar_t* name);

    /// Ends the recording: the writer takes the frames that were captured by now (for at most a second) and
    /// closes the file. The ring keeps its frames. Waits at most five seconds; a writer that the disk holds
    /// up for longer completes its file when the disk answers, or at the next start.
    void stopRecord();

    /// Has the writer take what was captured by now, complete the file and end, without waiting for it;
    /// frames captured later belong to no recording. From any thread, beside any command. `stopRecord` may
    /// follow.
    void endRecord() { endAsked_ = true; }

    /// Empties the ring and starts again at number 0. Prints "flush record" on standard output.
    void flush();

    /// Has the system write what it holds of the recording. Waits for that at most half a second.
    void fileFlush();

    /// Ends the recording as `stopRecord` does and frees the ring.
    void done();

    /// The writer thread.
    void run() override;

protected:
    /// Empties the ring and numbers the next frame `number`, as if a recording had come so far; for tests of
    /// what takes years to get to.
    void continueAt(unsigned long long number);

private:
    const vcore::semaphore& storeLock() const MARVO_RETURN_CAPABILITY(this) { return *this; }

    template <class Fill>
    bool addFilled(Fill fill);
    template <class Copy>
    bool copyOut(unsigned long long number, const wchar_t* recording, Copy copy);

    /// A frame that the writer has taken.
    struct Taken {
        unsigned long long number = 0;
        bool present = false; ///< there is a ring that holds something in its place
        bool lost = false;    ///< which is another frame
    };

    bool openRecording(const wchar_t* name, unsigned long frameSize, std::wstring& reason);
    void closeFile();
    void stopWriter();
    void endWriter();
    void resetRing() MARVO_REQUIRES(storeLock());
    unsigned long long endOfRecording();
    bool ending() const { return stop_.asked() || endAsked_; }
    bool writerShallEnd(unsigned long long backlog) const;
    void writeBacklog(unsigned long ringFrames);
    Taken stageFrame();
    void writeStaged(const Taken& frame, unsigned long ringFrames);
    void flushFile();
    void flushIfAsked();
    void askDriveSpace();
    void completeFile();
    std::uint32_t writerError() const;
    void tellIncomplete();
    template <class... Arguments>
    void report(const wchar_t* signal, const Arguments&... arguments);
    void tell(const std::optional<RecordNews>& news);

    vvideo::dvFramePool ring_;
    unsigned long long frameDuration_100ns_ MARVO_GUARDED_BY(storeLock()) = 400000;
    StopFlag stop_;
    /// Set when the writer has used up the time for its last frames.
    std::atomic<bool> abandonBacklog_ = false;
    /// Asks the writer to complete the recording; without a recording it means nothing.
    std::atomic<bool> endAsked_ = false;
    /// Asks the writer to flush the file; `flushed_` is the answer.
    std::atomic<bool> flushAsked_ = false;
    vcore::event flushed_;
    /// Used by the writer thread while it runs, else by the host's thread, which starts that one.
    std::unique_ptr<recording::Writer> writer_;
    /// The frame on its way to the file; as `writer_`.
    recording::RecordBuffer staging_;
    RecordTally tally_;
    /// When the room on the drive was asked for last; the writer thread's.
    DWORD driveSpaceAsked_ms_ = 0;
    std::wstring fileName_ MARVO_GUARDED_BY(storeLock());
    /// Full path of the recording whose numbers the ring holds; empty for none.
    std::wstring ringFile_ MARVO_GUARDED_BY(storeLock());
    vcore::str remoteFile_ MARVO_GUARDED_BY(storeLock());
    std::atomic<long long> maxFileSize_ = -1;
};
