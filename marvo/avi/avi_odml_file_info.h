/// @file
/// The OpenDML facts of an AVI file.
#pragma once

#include "marvo/core/platform.h"

#include <vector>

/// The facts of an AVI file with OpenDML extensions that `FileIOAVI` keeps beside the headers: what its
/// indexes say, and what was found. Filled by the reader at `open` and `refresh`, kept current by the writer.
struct AVI_ODMLFileInfo {
    /// Frames that can be read.
    unsigned long totalFrames = 0;
    /// "dmlh": frames in the whole file as its header has it; 0 without that header.
    unsigned long headerTotalFrames = 0;
    /// "avih": frames of the first piece as its header has it.
    unsigned long firstPieceFrames = 0;
    /// RIFF pieces in the file.
    unsigned long pieces = 0;
    /// Offsets in bytes of the pieces' "RIFF".
    std::vector<unsigned long long> piecePositions;
    /// Offsets in bytes of the standard index chunks that the super index names.
    std::vector<unsigned long long> indexPositions;
    /// Entries of the "idx1" chunk; 0 without one.
    unsigned long legacyEntries = 0;
    /// Number of the video stream, which is the number in its chunk ids.
    unsigned long videoStream = 0;
    /// Streams in the file, whatever they hold.
    unsigned long streams = 0;
    /// How many of them are sound.
    unsigned long audioStreams = 0;
    /// Frames that stand in no index and were found by walking the chunks: those of a recording that still
    /// runs, was cut off or is damaged.
    unsigned long walkedFrames = 0;
};
