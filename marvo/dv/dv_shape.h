#pragma once

#include "marvo/dv/dv_system.h"

#include <algorithm>
#include <iterator>

/// By what DV video is told from other data.
namespace vdv {

/// Bytes at the begin of a frame or a sequence that tell it.
constexpr unsigned long startBytes = 3;

/// Whether `size` is that of a whole DV frame: 25, 50 or 100 Mbit/s in 525/60 or 625/50.
constexpr bool isFrameSize(unsigned long size) {
    constexpr unsigned long sizes[] = {120000, 144000, 240000, 288000, 480000, 576000};
    return std::find(std::begin(sizes), std::end(sizes), size) != std::end(sizes);
}

/// Whether a chunk of `size` bytes can be a frame at all, of whatever system: at least one DIF block (80
/// bytes), and not beyond what the engine takes for damage.
constexpr bool mayBeFrameSize(unsigned long size) {
    return size >= 80 && size <= maxFrameBytes;
}

/// Bytes of one DIF sequence: 150 blocks.
constexpr unsigned long sequenceBytes = 12000;

/// DIF sequences in a 25 Mbit/s frame of `size` bytes; in the frames of other systems they are numbered
/// otherwise.
constexpr unsigned long sequences(unsigned long size) {
    return size == 120000 || size == 144000 ? size / sequenceBytes : 1;
}

/// Whether DIF sequence `sequence` of a frame begins with these bytes: with the id of a header block (section
/// type 0, number 0); from IEC 61834-2 and SMPTE 314M.
constexpr bool isSequenceStart(const unsigned char (&id)[startBytes], unsigned long sequence) {
    return id[0] == 0x1F && id[1] == (sequence << 4 | 0x07) && id[2] == 0;
}

/// Whether a frame begins with these bytes.
constexpr bool isFrameStart(const unsigned char (&id)[startBytes]) {
    return isSequenceStart(id, 0);
}

} // namespace vdv
