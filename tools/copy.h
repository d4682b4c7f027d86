/// @file
/// From recording to recording.
#pragma once

#include "tools/arguments.h"
#include "tools/recording.h"

namespace dvrec {

/// What a command made.
struct Written {
    Kind kind = Kind::stream;
    unsigned long frames = 0;
    unsigned long long bytes = 0;
};

/// Writes the frames `first` to `last`, both included, to the second file of the arguments, as a recording of
/// `kind`. Throws the `Failure` when there is no such range, a frame cannot be read, or the file cannot be
/// written; then there is no file.
Written copyFrames(Recording& from, unsigned long first, unsigned long last, Kind kind,
                   const Arguments& arguments);

/// Writes all frames. Throws as `copyFrames`, also for a recording without frames.
Written copyAll(Recording& from, Kind kind, const Arguments& arguments);

/// What the result says of the file that was made, as text.
std::string describe(const Written& written, const Arguments& arguments);

} // namespace dvrec
