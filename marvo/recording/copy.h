/// @file
/// From recording to recording.
#pragma once

#include "marvo/recording/reader.h"
#include "marvo/recording/writer.h"

#include <string>

namespace recording {

/// What is copied into what.
struct CopyOrder {
    unsigned long long first = 0; ///< frame
    unsigned long long last = 0;  ///< frame, which belongs to the range; it is there
    Kind kind = Kind::stream;     ///< of the new file
    /// Whether an AVI file gets a sound stream: that of a recording that has one which can be read, else the
    /// sound in the frames.
    bool sound = true;
};

/// What came of it.
struct Copied {
    /// How it ended.
    enum class End {
        whole,
        cancelled,
        cannotRead,  ///< `frame` and `reason` say which and why
        cannotWrite, ///< `reason` says why
    };
    End end = End::whole;
    unsigned long long frame = 0; ///< the frame that could not be read
    /// Why: of a frame that cannot be read a predicate ("cannot be read: ..."), else the reason itself;
    /// without a full stop.
    std::wstring reason;
    /// What somebody might miss in the new file, without a full stop; mostly empty.
    std::wstring note;
    unsigned long soundRate = 0;     ///< samples per second of the sound stream; 0 without one
    unsigned long soundChannels = 0; ///< see there
};

/// Writes frames of `from` as a new recording called `to`, in place of a file of that name; reading and
/// writing go on at the same time. `progress` is told the frames done and in all, and may end the work; what
/// it throws passes through. What was written stays, whole or not.
Copied copy(Reader& from, const wchar_t* to, const CopyOrder& order, const Reader::ProgressCall& progress);

/// The same into a recording that has been begun, without a sound stream; it is finished then.
Copied copy(Reader& from, Writer& to, const CopyOrder& order, const Reader::ProgressCall& progress);

} // namespace recording
