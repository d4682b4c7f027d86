/// @file
/// The memory through which frames go to and from recordings.
#pragma once

#include "marvo/core/sector_memory.h"

#include <cstdint>

namespace recording {

/// What stands in front of each frame in a raw recording, little-endian. In an AVI file the chunk header
/// takes its place, which has the same size.
struct RecordHeader {
    std::uint32_t frameSize;          ///< bytes of the DV frame
    std::uint32_t timePerFrame_100ns; ///< the low half of the time per frame
};

/// Bytes in front of each frame.
constexpr unsigned long headerBytes = sizeof(RecordHeader);

/// One frame with `headerBytes` in front of it and room for padding behind it, in memory that unbuffered
/// transfers accept. A frame is read and written where it stands, without another copy. Not locked: one
/// thread at a time.
class RecordBuffer {
public:
    /// Makes room for `bytes` bytes, header and padding included; what was there before is lost. False
    /// without memory; the buffer is empty then.
    bool allocate(unsigned long bytes);

    /// Bytes of the whole buffer; 0 before `allocate`.
    unsigned long bytes() const { return bytes_; }
    /// The whole buffer, from the header on; null before `allocate`.
    unsigned char* data() const { return memory_.get(); }

    /// The frame's own bytes.
    unsigned char* frame() const { return memory_.get() + headerBytes; }
    /// How many they are; set by whoever fills the buffer.
    unsigned long frameBytes() const { return frameBytes_; }
    /// Sets how many bytes of the frame are valid. False when the buffer cannot hold that many.
    bool setFrameBytes(unsigned long bytes);

private:
    SectorBuffer memory_;
    unsigned long bytes_ = 0;
    unsigned long frameBytes_ = 0;
};

} // namespace recording
