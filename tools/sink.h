/// @file
/// Where frames go.
#pragma once

#include "tools/output_file.h"
#include "tools/recording.h"

#include <memory>

namespace dvrec {

/// A recording that is written. One thread.
class Sink {
public:
    virtual ~Sink() = default;
    /// Appends the slot's frame, which has the size of all others; what is around it in the slot is
    /// overwritten. Throws the `Failure` when it cannot be written.
    virtual void write(Slot& slot) = 0;
    /// Completes and closes the file. Throws as `write`.
    virtual void finish() = 0;
};

/// Creates the output's temporary file as a recording of the kind, for frames of `frameSize` bytes. Throws
/// the `Failure` when it cannot be created or the kind does not take such frames.
std::unique_ptr<Sink> createSink(Kind kind, const OutputFile& output, unsigned long frameSize);

} // namespace dvrec
