/// @file
/// The memory through which frames go from file to file.
#pragma once

#include "tools/dv_frame.h"

#include "marvo.h"

#include <span>

namespace dvrec {

/// A frame with 8 bytes in front of it and room behind it, on a page of its own. In front, an AVI file has a
/// chunk header and a raw recording a record header; behind, both have padding up to a whole number of
/// sectors. So a frame is read and written where it stands, also by transfers that pass the system's cache
/// by.
class Slot {
public:
    static constexpr size_t headerBytes = dvFile::headerSize;

    /// Makes room for a frame of `size` bytes, whose contents are then undefined. Throws the `Failure` when
    /// there is no memory.
    void prepare(unsigned long size);

    /// Everything: header, frame, and room behind it for the padding to any sector size in use.
    std::span<unsigned char> all() { return {memory_.data(), memory_.size()}; }
    /// The frame.
    std::span<unsigned char> frame() { return {memory_.data() + headerBytes, size_}; }

private:
    vvideo::dvFrame memory_;
    unsigned long size_ = 0;
};

} // namespace dvrec
