/// @file
/// A recording that is read, of whatever kind.
#pragma once

#include "marvo/recording/input_file.h"
#include "marvo/recording/kind.h"
#include "marvo/recording/record_buffer.h"
#include "marvo/video/media_type.h"

#include <functional>
#include <string>
#include <vector>

namespace recording {

/// The frames of a recording, by number from 0. The file may be growing: its writer may have it open.
///
/// Not locked: one thread at a time, or the owner's lock; only `abandon` may be called beside a `read` on
/// another thread. Each implementation marks its own waits for the disk as `killable`, and takes no memory in
/// `read`, so that the reading thread may be killed there.
class Reader {
public:
    /// Where a frame's own bytes stand in the file.
    struct Place {
        unsigned long long offset = 0; ///< bytes from the start of the file
        unsigned long size = 0;        ///< bytes of the frame
    };

    /// How the recording ends.
    struct End {
        /// In which way.
        enum class State {
            finished,     ///< with a whole frame, and everything announced is there
            beingWritten, ///< its writer has it open at this moment
            cutOff,       ///< something is missing; `text` says what
        };
        State state = State::finished; ///< see there
        std::string text;              ///< in words, for people; empty when finished
    };

    /// One number about the file's structure, for people and programs that look at files.
    struct Fact {
        const char* identifier;   ///< one word, for programs
        const char* title;        ///< in words, for people
        unsigned long long value; ///< the number
    };

    /// Told of one thing that is wrong with a file: where, in bytes from its start, and what.
    using FaultCall = std::function<void(unsigned long long offset, const std::string& text)>;
    /// Told now and then how many bytes of how many are done; false ends the work early.
    using ProgressCall = std::function<bool(unsigned long long done, unsigned long long all)>;

    virtual ~Reader() = default;
    Reader(const Reader&) = delete;
    Reader& operator=(const Reader&) = delete;

    /// The kind of the file.
    virtual Kind kind() const = 0;
    /// The name that the recording was opened under.
    const std::wstring& name() const { return name_; }
    /// Bytes of the file at this moment.
    unsigned long long fileBytes() const;

    /// Whole frames in the file when it was opened or refreshed last.
    virtual unsigned long long frames() const = 0;
    /// Looks for frames that were written since; what is known is not read again. Also notices a file that
    /// was cut.
    virtual void refresh() = 0;
    /// Bytes of one DV frame of the recording: of the first, or as the file announces while there is none.
    virtual unsigned long frameSize() const = 0;
    /// Bytes that the buffer given to `read` needs.
    virtual unsigned long bufferBytes() const = 0;
    /// Describes the video in `type`, whose former content is freed.
    virtual void describe(vvideo::dvMediaType& type) const;

    /// Where `frame` stands; false when there is no such frame.
    virtual bool place(unsigned long long frame, Place& place) const = 0;
    /// Reads `frame` into `buffer`, whose `frameBytes` then tell its size. False, with the reason in `error`,
    /// when it is not there as a whole or the buffer is too small.
    ///
    /// The number `frames` is the end of the recording and fails. What lies beyond fails as well, but in a
    /// raw recording: there it means the last frame (deliberate, as in `dvPlayFile`, so that a replay whose
    /// out point lies beyond the end goes on). Whoever follows a growing recording refreshes before.
    virtual bool read(unsigned long long frame, RecordBuffer& buffer) = 0;
    /// Reads up to `bytes` bytes from the start of `frame`, for those who look at frames and do not need them
    /// whole; returns how many there were.
    std::size_t readHead(unsigned long long frame, void* to, std::size_t bytes) const;
    /// Why the last operation failed, in words and without a line end or a full stop; empty when none has
    /// failed.
    virtual std::wstring error() const = 0;
    /// The same as the system's code: ERROR_HANDLE_EOF for a frame that is not there as a whole,
    /// ERROR_FILE_INVALID or ERROR_INVALID_DATA when something else stands in its place, else what the disk
    /// says.
    virtual unsigned long systemError() const { return error().empty() ? ERROR_SUCCESS : ERROR_HANDLE_EOF; }

    /// How the recording ends.
    End end() const;
    /// What is known of the structure.
    virtual std::vector<Fact> facts() const { return {}; }
    /// Looks for faults in the structure, of which at most `mostFaults` are told; not at the frames
    /// themselves. Returns how many more there are.
    virtual unsigned long long check(const FaultCall& fault, const ProgressCall& progress,
                                     unsigned long mostFaults) const = 0;

    /// Lets a read that another thread is stuck in fail as soon as the system allows, and every later one.
    /// The object stays valid.
    virtual void abandon() = 0;

protected:
    explicit Reader(std::wstring name) : name_(std::move(name)) {}

    /// What is missing at the end of the file, in words; empty when nothing is.
    virtual std::string whatIsMissing() const = 0;
    /// The file for other reads than those of whole frames; opened at first use.
    const InputFile& file() const;

private:
    const std::wstring name_;
    mutable InputFile file_;
};

} // namespace recording
