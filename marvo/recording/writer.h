/// @file
/// A recording that is written, of whatever kind.
#pragma once

#include "marvo/recording/kind.h"
#include "marvo/recording/record_buffer.h"

#include <string>

namespace recording {

/// A new recording file that takes one frame after the other.
///
/// Not locked: one thread at a time, or the owner's lock. Each implementation marks its own waits for the
/// disk as `killable` and takes no memory in `write`; a writer whose thread was killed there can still be
/// finished, with every frame before that one.
class Writer {
public:
    virtual ~Writer() = default;
    Writer(const Writer&) = delete;
    Writer& operator=(const Writer&) = delete;

    /// The kind of the file.
    virtual Kind kind() const = 0;
    /// Bytes that the buffer given to `write` needs: header, frame and padding up to a whole number of the
    /// volume's sectors.
    virtual unsigned long bufferBytes() const = 0;

    /// Appends the frame that stands in `buffer`, which has the size that the recording was created for. What
    /// is in front of it and behind it is overwritten: `buffer` goes to the disk as it is. False, with the
    /// reason in `error`, when it could not be written whole; the next frame takes its place, and every frame
    /// that is in the file stays where it is.
    virtual bool write(RecordBuffer& buffer) = 0;
    /// Has the system write what it holds of the file. An AVI file passes the system's cache by, and there is
    /// nothing to do.
    virtual bool flush() = 0;
    /// Completes the file and closes it; nothing can be written afterwards. False, with the reason in
    /// `error`, when that failed. The destructor does the same and says nothing.
    virtual bool finish() = 0;
    /// Why the last operation failed, in words and without a line end or a full stop; empty when none has
    /// failed.
    virtual std::wstring error() const = 0;
    /// The system's number for that, also where it was not the system that refused; 0 when none has failed.
    virtual unsigned long systemError() const = 0;
    /// Bytes that are free on the file's volume; all ones when it does not tell, and behind `finish`. As slow
    /// as the disk is.
    virtual unsigned long long freeBytes() const = 0;

protected:
    Writer() = default;
};

} // namespace recording
