/// @file
/// The account of a recording.
#pragma once

#include "marvo/core/mutex2.h"
#include "marvo/core/platform.h"
#include "marvo/core/thread_annotations.h"
#include "marvo/replay/record_status.h"

#include <optional>

/// What is to be told of a recording, with the arguments of "recError".
struct RecordNews {
    record_event event;   ///< what happened
    std::uint64_t frame;  ///< number of the frame at which it happened
    std::uint64_t frames; ///< frames that it has cost so far
    std::uint32_t error;  ///< the system's number; 0 when all is well again
};

/// Counts what becomes of the frames of a recording, and knows the spells of failing and of being behind,
/// whose beginnings and ends are told once.
///
/// Any thread: a spin lock makes each step, and `status`, whole. Nothing is called while it is held.
class RecordTally {
public:
    /// A recording begins.
    void begin();
    /// A recording could not begin, for that reason.
    void refuse(const wchar_t* reason);
    /// A frame was captured; counts only between `begin` and `close`.
    void take();
    /// `frames` frames that were taken are gone, and the writer does not come to them.
    void drop(std::uint64_t frames);
    /// Frames captured from now on belong to no recording.
    void close();
    /// The recording has ended. What waits by now is lost.
    void end(bool complete);

    /// The writer came to a frame beyond the limit.
    void leaveOut();
    /// The writer came to frame `number`, which the ring went over (`lost`) or not, `backlog` frames behind
    /// the newest in a ring of `ring`.
    std::optional<RecordNews> reach(std::uint64_t number, bool lost, std::uint64_t backlog,
                                    std::uint64_t ring);
    /// What stands for that frame was written.
    std::optional<RecordNews> wrote(std::uint64_t number, bool lost);
    /// It could not be, for that reason.
    std::optional<RecordNews> failed(std::uint64_t number, bool lost, std::uint32_t error,
                                     const wchar_t* reason);
    /// The file could not be completed, or not brought to the disk, for that reason. Told once.
    std::optional<RecordNews> incomplete(std::uint32_t error, const wchar_t* reason);
    /// The drive has room for so many frames.
    void setDriveSpace(std::uint64_t frames);

    /// How it goes.
    record_status status() const;
    /// Whether a recording has begun and not ended.
    bool recording() const { return status().recording; }

private:
    void noteError(std::uint32_t error, const wchar_t* reason) MARVO_REQUIRES(lock_);

    vcore::mutex2 lock_;
    record_status status_ MARVO_GUARDED_BY(lock_);
    bool closed_ MARVO_GUARDED_BY(lock_) = true;
    bool incomplete_ MARVO_GUARDED_BY(lock_) = false;
    /// Of the spell that is on.
    std::uint64_t failedInSpell_ MARVO_GUARDED_BY(lock_) = 0;
    std::uint64_t lostInSpell_ MARVO_GUARDED_BY(lock_) = 0;
};
