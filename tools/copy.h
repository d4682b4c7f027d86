/// @file
/// From recording to recording.
#pragma once

#include "tools/arguments.h"
#include "tools/recording.h"

namespace dvrec {

/// What a command made.
struct Written {
    recording::Kind kind;
    unsigned long long frames = 0;
    unsigned long long bytes = 0;
    unsigned long soundRate = 0; ///< of the AVI file's sound stream; 0 without one
    unsigned long soundChannels = 0;
};

/// Writes the frames `first` to `last`, both included, to the second file of the arguments, as a recording of
/// `kind`, an AVI file with a sound stream when there is sound and `sound` is set. What somebody might miss
/// then is noted on the error output. Throws the `Failure` when there is no such range, a frame cannot be
/// read, or the file cannot be written; then there is no file.
Written copyFrames(recording::Reader& from, unsigned long long first, unsigned long long last,
                   recording::Kind kind, bool sound, const Arguments& arguments);

/// Writes all frames. Throws as `copyFrames`, also for a recording without frames.
Written copyAll(recording::Reader& from, recording::Kind kind, bool sound, const Arguments& arguments);

/// What the result says of the file that was made, as text.
std::string describe(const Written& written, const Arguments& arguments);

} // namespace dvrec
