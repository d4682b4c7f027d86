/// @file
/// How a recording goes.
#pragma once

#include <cstdint>

/// What the signal "recError" tells of.
enum class record_event : std::uint32_t {
    failing = 1, ///< a frame could not be written; those behind it are tried
    recovered,   ///< a frame is in the file again
    overrun,     ///< the ring went over a frame before the writer came to it
    caughtUp,    ///< the writer has less than half a ring before it again
    incomplete ///< the file could not be completed at its end: it lacks its last index, or has a rest behind
               ///< it
};

/// How the recording that was started last goes, or how it went: it is told until the next start.
///
/// Every frame that was taken is in the end counted as one of written, lost, failed and beyond the limit;
/// until then it is waiting. A frame that failed leaves no gap in the file: the next one stands in its place.
/// In the place of one that the ring went over stands what its slot held by then.
struct record_status {
    /// A drive space that is not known.
    static constexpr std::uint64_t unknown = ~0ull;

    bool recording = false;        ///< it is on: its file is open
    bool failing = false;          ///< the newest write failed
    bool behind = false;           ///< the writer is so far behind that frames are lost
    bool complete = false;         ///< it has ended, and its file is whole, with its index and without a rest
    std::uint64_t taken = 0;       ///< frames captured while it was on
    std::uint64_t written = 0;     ///< frames in the file
    std::uint64_t lost = 0;        ///< frames overwritten or given up before the writer came to them
    std::uint64_t failed = 0;      ///< frames that could not be written
    std::uint64_t beyondLimit = 0; ///< frames that were not to be written: see `dvFrameStore::setMaxFilesize`
    /// Frames that the drive has room for, at most about a second ago; `unknown` when it does not tell.
    std::uint64_t driveSpace_frames = unknown;
    /// The system's number of what failed first, 0 for nothing; 82 (`ERROR_CANNOT_MAKE`) when the start was
    /// refused, and there is no recording.
    std::uint32_t firstError = 0;
    /// The same in words, without a full stop.
    wchar_t firstErrorText[128] = L"";

    /// Frames that the writer has still to come to.
    std::uint64_t waiting() const { return taken - written - lost - failed - beyondLimit; }
};
