/// @file
/// A recording that a host reads.
#pragma once

#include "marvo/core/platform.h"
#include "marvo/dv/frame_notes.h"

#include <memory>

/// Reads a recording by frame number: one of this engine (raw or AVI), a DV AVI file of another program, or a
/// plain DV stream. What it is, is seen from its content. It may still be growing: its writer may have it
/// open, and `refresh` finds the frames written since. Frame `n` of a recording that the engine is making is
/// frame `n` here.
///
/// Threads: one at a time, any. Nothing is kept between calls that belongs to a thread. An object is best
/// made for each reader (thumbnails, scrubbing): each has the file open for itself.
class MARVO_API dvRecording {
public:
    /// What a recording is.
    enum class Kind {
        none,   ///< nothing is open
        raw,    ///< the engine's own records, one per frame
        avi,    ///< AVI with a DV video stream
        stream, ///< DV frames one behind the other and nothing else
    };

    dvRecording();
    ~dvRecording();
    dvRecording(const dvRecording&) = delete;
    dvRecording& operator=(const dvRecording&) = delete;

    /// Opens the file `name`, in place of the one that is open. A file that is still empty is a recording
    /// without frames, of the kind that its name means. False, with nothing open and the reason in
    /// `explanation`, when the file cannot be opened or is no recording.
    bool open(const wchar_t* name);
    /// Closes the file.
    void close();
    /// Whether a recording is open.
    bool opened() const;
    /// The name it was opened under; empty when nothing is open. Valid until the next `open` or `close`.
    const wchar_t* name() const;
    /// Why the last `open`, `refresh` or `read` failed, as one sentence that names the file; empty when it
    /// did not. Valid until the next of these calls.
    const wchar_t* explanation() const;

    /// What it is.
    Kind kind() const;
    /// Whole frames in it, as of `open` or the last `refresh`; 0 when nothing is open.
    unsigned long long frames() const;
    /// Looks for frames written since; what is known is not read again. Also notices a file that was cut:
    /// then there are fewer frames. False, with everything as it was, when that fails.
    bool refresh();
    /// Whether some program has the file open for writing at this moment; asks the system.
    bool beingWritten() const;

    /// Bytes of one frame, as of the first; 0 while there is none. A buffer of `mostFrameBytes` is enough for
    /// any.
    unsigned long frameBytes() const;
    /// Frames above this size do not exist.
    static constexpr unsigned long mostFrameBytes = 576000;
    /// Time per frame in 100 ns: 400000 or 333333, or what a raw recording says of itself.
    long long frameDuration_100ns() const;

    /// Reads frame `frame`, counted from 0, into `buffer`, which has room for `capacity` bytes; `*bytes`
    /// (when given) tells how many the frame has. False, with the reason in `explanation` and 0 in `*bytes`,
    /// when there is no such frame (one beyond the end is never another one), it cannot be read as a whole,
    /// or the buffer is too small.
    bool read(unsigned long long frame, void* buffer, unsigned long capacity, unsigned long* bytes);

    /// The camera's time code of a frame; not known when there is no such frame. Reads the frame's start
    /// alone as long as it is there.
    dvTimeCode timeCode(unsigned long long frame) const;
    /// When a frame was recorded, by the camera's clock; nothing is known when there is no such frame.
    dvClockTime recordedAt(unsigned long long frame) const;
    /// The sides of the picture of a frame, 4:3 or 16:9.
    dvAspect aspect(unsigned long long frame = 0) const;
    /// The order of a frame's fields.
    dvFields fields(unsigned long long frame = 0) const;

private:
    struct Work;
    std::unique_ptr<Work> work_;
};
