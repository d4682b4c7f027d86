/// @file
/// The check of a whole AVI file.
#pragma once

#include "marvo/core/str.h"

#include <functional>
#include <vector>

/// Walks a whole AVI file chunk by chunk and compares what stands there with what its headers and indexes
/// say; for tools. It trusts nothing in the file, changes nothing, and takes as long as reading the chunk
/// headers takes (with `Options::frames`, the whole file).
class MARVO_API AviInspector {
public:
    /// One thing that is wrong with a file.
    struct Fault {
        unsigned long long offset = 0; ///< bytes from the start of the file
        vcore::str text;               ///< in words, for people
    };

    /// What is found of one RIFF piece.
    struct Piece {
        unsigned long long offset = 0;   ///< of its "RIFF"
        unsigned long long size = 0;     ///< bytes with the header, as far as they are there
        unsigned long frames = 0;        ///< whole frames in its "movi" list
        unsigned long indexes = 0;       ///< standard index chunks
        unsigned long legacyEntries = 0; ///< entries of its "idx1" chunk
    };

    /// What is looked at, and how.
    struct Options {
        /// Reads every frame's data as well, and looks whether it begins as a DV frame does.
        bool frames = true;
        /// Faults beyond this number are counted and not kept.
        unsigned long maxFaults = 1000;
        /// Called now and then with the bytes done and in all; false ends the walk early.
        std::function<bool(unsigned long long done, unsigned long long all)> progress;
    };

    /// Walks the file. False when it cannot be opened; `faults` then says why.
    bool run(const wchar_t* name, const Options& options);

    /// Faults in the order of the file; empty for a sound file.
    const std::vector<Fault>& faults() const { return faults_; }
    /// Number of faults, also of those that were not kept.
    unsigned long long faultCount() const { return faultCount_; }
    /// The pieces found.
    const std::vector<Piece>& pieces() const { return pieces_; }
    /// Whole frames of the video stream found in the file.
    unsigned long frames() const { return frames_; }

private:
    std::vector<Fault> faults_;
    unsigned long long faultCount_ = 0;
    std::vector<Piece> pieces_;
    unsigned long frames_ = 0;
};
