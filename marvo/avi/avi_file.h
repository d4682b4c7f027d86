/// @file
/// DV frames in an AVI file.
#pragma once

#include "marvo/core/platform.h"

#include <memory>

class FileIOAVI;

/// DV frames in an AVI file that other video software opens, also beyond 1 GiB. A thin wrapper around
/// `FileIOAVI`, which has the details and the reasons of failure.
///
/// Not locked: one thread at a time, or the owner's lock.
class MARVO_API dvAVIFile {
public:
    dvAVIFile();

    /// As `close`.
    ~dvAVIFile();

    dvAVIFile(const dvAVIFile&) = delete;
    dvAVIFile& operator=(const dvAVIFile&) = delete;

    /// Creates a new file for DV frames, replacing a file of that name: 720x576 at 25 frames per second when
    /// `frameSize` is exactly 144000 bytes, else 720x480 at 29.97 with frames of 120000 bytes. False for a
    /// null name, when the system refuses, and when a file is open or created already, which then stays
    /// untouched.
    bool create(const wchar_t* name, unsigned long frameSize);

    /// Opens an existing file for reading; it may still be growing. False when it holds no DV video that can
    /// be read.
    bool open(const wchar_t* name);

    /// Finishes a created file (sizes and indexes) and closes; harmless when none is open.
    void close();

    /// Whether a file is open for reading or created for writing.
    bool opened() const;

    /// Appends the DV frame of `frameSize` bytes that stands in `buffer` behind an 8-byte record header. The
    /// record header is replaced by the chunk header and the bytes behind the frame by padding, so `buffer`
    /// holds the slot as it goes to disk. `bufferSize` is the buffer's size, at least `getAVIFrameSize`; the
    /// buffer is 4096-aligned. False when no file is created, for another frame size than the file's, and
    /// when the disk refuses.
    bool writeFrame(char* buffer, unsigned long frameSize, unsigned long bufferSize);

    /// Reads `frame` (as set by `seekFrame` before) into `buffer` of `bufferSize` bytes: 8 bytes of chunk
    /// header, then the DV frame. False when no file is open for reading, when the buffer is too small and
    /// when the frame is not there.
    bool readFrame(char* buffer, unsigned long bufferSize, unsigned long frame);

    /// Makes `frame`, modulo the number of frames, the current one. On a file without frames nothing happens.
    void seekFrame(unsigned long frame);

    /// Looks for frames that were written since the file was opened; for a recording that grows.
    void refresh();

    /// Frames in the file; 0 when none is open.
    unsigned long frames() const;

    /// The current frame: set by `seekFrame`, one further after each successful `readFrame` and `writeFrame`.
    unsigned long frame() const;

    /// Bytes per sector of the volume of the open file; 1 when none is open or it is unknown.
    unsigned long getSectorSize() const;

    /// Average bytes of video per second; 0 when none is open.
    unsigned long getDataRate() const;

    /// Bytes of one DV frame; 0 when none is open.
    unsigned long getDataFrameSize() const;

    /// Bytes that a buffer for `writeFrame` and `readFrame` needs; 0 when none is open.
    unsigned long getAVIFrameSize() const;

    /// Exchanges the files of two objects.
    void swap(dvAVIFile& other);

    /// The file's structures and the last error's text. Owned by this object; another object's after `swap`.
    const FileIOAVI& io() const { return *io_; }

private:
    std::unique_ptr<FileIOAVI> io_;
};
