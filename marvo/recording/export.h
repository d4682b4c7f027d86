/// @file
/// A part of a recording as a file for other programs.
#pragma once

#include "marvo/core/platform.h"

#include <functional>
#include <memory>

/// Writes a range of frames of a recording (raw, AVI or a DV stream, also one that is being written at that
/// moment) as a file that other programs open: a plain DV stream when its name ends with ".dv", an AVI file
/// with a sound stream when it ends with ".avi". The file is written as "NAME.part" and gets its name when it
/// is whole; when anything fails, nothing is left behind.
///
/// One thread at a time; each object, and each of its runs, stands for itself.
class MARVO_API dvExport {
public:
    /// Told after each frame how many frames of how many are done, on the thread that called `run`; false
    /// cancels the work.
    using Progress = std::function<bool(unsigned long long done, unsigned long long all)>;

    /// As the last frame: up to the end of the recording as it is when `run` is called.
    static constexpr unsigned long long toTheEnd = ~0ull;

    dvExport();
    ~dvExport();
    dvExport(const dvExport&) = delete;
    dvExport& operator=(const dvExport&) = delete;

    /// Whether an existing file is replaced; at first it is not, and `run` refuses.
    void replaceExisting(bool replace);
    /// Whether an AVI file gets a sound stream; at first it does. It is a copy of the recording's own sound
    /// stream where there is one that is not compressed, and otherwise made of the sound in the frames:
    /// 16-bit PCM of the rate and the channels that the first frame with sound has.
    void withSound(bool sound);

    /// Exports the frames `first` to `last`, both included, of the recording `from` as `to`. False when that
    /// fails or is cancelled; `explanation` says why then. Blocks until the work is done; `progress` may be
    /// empty, and an exception out of it cancels the work as well.
    bool run(const wchar_t* from, unsigned long long first, unsigned long long last, const wchar_t* to,
             const Progress& progress);

    /// Whether the last `run` was cancelled by its progress call.
    bool cancelled() const;
    /// Why the last `run` failed, as a sentence with the file's name and the reason; empty when it did not.
    /// Owned by the object.
    const wchar_t* explanation() const;
    /// What somebody might miss in the exported file, as a sentence; mostly empty. Owned by the object.
    const wchar_t* note() const;
    /// Frames that the last `run` has written.
    unsigned long long frames() const;

private:
    struct State;

    bool work(const wchar_t* from, unsigned long long first, unsigned long long last, const wchar_t* to,
              const Progress& progress);

    const std::unique_ptr<State> state_;
};
