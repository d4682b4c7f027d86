/// @file
/// The search for frames in damaged AVI files.
#pragma once

#include "marvo/avi/avi_header.h"
#include "marvo/avi/avi_index.h"

#include <functional>
#include <utility>

/// Finds the frames of a damaged AVI file without relying on anything else in it: every place is looked at
/// where the chunk header of a frame stands, with the size of a DV frame and the start of a DV frame behind
/// it. What lies between is read through, frames are stepped over.
class AviSearch {
public:
    /// Called with the bytes done and in all; may throw, which ends the search.
    using Progress = std::function<void(unsigned long long done, unsigned long long all)>;

    /// Works on `source` and fills `index`. When `header` has no video stream, the first frame found tells
    /// its number and its frames' size. All three outlive the object.
    AviSearch(AviSource& source, AviHeader& header, AviIndex& index, Progress progress = {})
        : source_(source), header_(header), index_(index), progress_(std::move(progress)) {}

    /// Finds all frames.
    void find();

    /// The first place from `begin` on where a frame stands that begins before `end`; `end` when there is
    /// none.
    unsigned long long next(unsigned long long begin, unsigned long long end);

    /// Where frames begin that are not whole, after `find`, in the order of the file.
    const std::vector<unsigned long long>& broken() const { return broken_; }

private:
    void findCutFrame(unsigned long long begin);
    bool isFrameHeader(std::uint32_t id, std::uint32_t size) const;
    bool isFrameAt(unsigned long long offset, std::uint32_t& size);
    bool chunkFollows(unsigned long long offset);
    bool endsWell(unsigned long long offset, std::uint32_t size);
    void readBlock(unsigned long long begin);
    void tell(unsigned long long done) const;

    AviSource& source_;
    AviHeader& header_;
    AviIndex& index_;
    Progress progress_;
    std::vector<unsigned long long> broken_;
    std::vector<unsigned char> block_;
    unsigned long long blockOffset_ = 0;
    unsigned long blockCount_ = 0;
};
