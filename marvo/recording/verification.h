/// @file
/// Whether a recording is sound.
#pragma once

#include "marvo/recording/reader.h"

namespace recording {

/// Looks at the whole of a recording: its structure, how it ends, and every frame. Each fault is told with
/// its place in the file, at most `mostFaults` of the structure's; not in the order of the file, since the
/// frames come behind the structure. Returns how many faults there are, also of those that were not told.
///
/// `progress` is told bytes, and may end the work; what it throws while frames are read passes through, while
/// the structure is checked it throws nothing.
unsigned long long verify(Reader& recording, unsigned long mostFaults, const Reader::FaultCall& fault,
                          const Reader::ProgressCall& progress);

} // namespace recording
