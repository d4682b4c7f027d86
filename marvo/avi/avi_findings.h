/// @file
/// What an inspection of an AVI file has found.
#pragma once

#include "marvo/avi/avi_index.h"
#include "marvo/avi/avi_inspector.h"
#include "marvo/avi/riff_walker.h"

/// What an inspection has found in a file so far.
struct AviFindings {
    std::vector<AviInspector::Fault> faults;
    unsigned long long faultCount = 0;
    unsigned long maxFaults = 0;

    std::vector<AviInspector::Piece> pieces;
    AviIndex chunks;          ///< all chunks of the video stream, also those without a frame
    unsigned long frames = 0; ///< of these, the ones with a frame
    unsigned long firstPieceChunks = 0;
    std::vector<RiffChunk> indexes; ///< standard indexes of the video stream
    RiffChunk legacyIndex;          ///< "idx1"; `id` 0 without one

    /// Notes a fault at `offset`, in words that are formatted as `swprintf` does it.
    void fault(unsigned long long offset, const wchar_t* format, ...);
};
