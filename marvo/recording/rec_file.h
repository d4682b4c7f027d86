/// @file
/// The writer of raw DV recordings.
#pragma once

#include "marvo/recording/dv_file.h"

/// Writes a raw DV recording (layout: see `dvFile`): `write` appends whole records.
class MARVO_API dvRecFile : public dvFile {
public:
    /// Creates `name` anew (an existing file is truncated) for writing; others may read it meanwhile, so that
    /// a replay can follow a recording. False when it cannot be created, for a device, and for a file that is
    /// write-protected.
    ///
    /// The alignment becomes that of the new file's volume, while a frame size set before keeps the record
    /// size of the old one: whoever writes sizes his own buffer with `alignSize` after opening.
    bool open(const wchar_t* name) override;
};
