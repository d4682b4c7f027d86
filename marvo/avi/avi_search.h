/// @file
/// The search for frames in damaged AVI files.
#pragma once

#include "marvo/avi/avi_header.h"
#include "marvo/avi/avi_index.h"

/// Finds the frames of a damaged AVI file without relying on anything else in it: every place is looked at
/// where the chunk header of a frame stands, with the size of a DV frame and the start of a DV frame behind
/// it. What lies between is read through, frames are stepped over.
class AviSearch {
public:
    /// Works on `source` and fills `index`. When `header` has no video stream, the first frame found tells
    /// its number and its frames' size. All three outlive the object.
    AviSearch(AviSource& source, AviHeader& header, AviIndex& index)
        : source_(source), header_(header), index_(index) {}

    /// Finds all frames.
    void find();

    /// The first place from `begin` on where a frame stands that begins before `end`; `end` when there is
    /// none.
    unsigned long long next(unsigned long long begin, unsigned long long end);

private:
    bool isFrameAt(unsigned long long offset, std::uint32_t& size);
    bool chunkFollows(unsigned long long offset);
    bool endsWell(unsigned long long offset, std::uint32_t size);

    AviSource& source_;
    AviHeader& header_;
    AviIndex& index_;
    std::vector<unsigned char> block_;
};
