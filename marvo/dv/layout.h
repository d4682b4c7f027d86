/// @file
/// How a DV frame is laid out, and by what it is told from other data. From IEC 61834-2 and SMPTE 314M, which
/// agree in what is here: a frame is a row of sequences of 150 DIF blocks of 80 bytes, in each the header
/// block, two blocks of subcode, three of VAUX, and then picture and sound.
#pragma once

#include "marvo/dv/dv_system.h"

#include <cstddef>
#include <span>

namespace vdv {

/// Bytes of a frame, from its start.
using FrameBytes = std::span<const unsigned char>;

/// Bytes of a DIF block.
constexpr unsigned long blockBytes = 80;
/// Blocks of a DIF sequence.
constexpr unsigned long blocksPerSequence = 150;
/// Bytes of a DIF sequence.
constexpr unsigned long sequenceBytes = blocksPerSequence * blockBytes;
static_assert(system625.frameBytes == system625.sequences * sequenceBytes);
static_assert(system525.frameBytes == system525.sequences * sequenceBytes);

/// Blocks within a sequence.
constexpr unsigned long firstSubcodeBlock = 1;
constexpr unsigned long firstVauxBlock = 3;
constexpr unsigned long firstSoundBlock = 6;
/// Bytes at the start of a frame that hold its first header, subcode and VAUX blocks.
constexpr unsigned long frameHeadBytes = firstSoundBlock * blockBytes;

/// The section that a block belongs to: the upper three bits of the first byte of its id.
enum class Section : unsigned { header = 0, subcode = 1, vaux = 2, sound = 3, picture = 4 };

/// Bytes at the start of a frame or a sequence that tell it.
constexpr unsigned long startBytes = 3;

/// Whether DIF sequence `sequence` of a channel starts with these bytes: with the id of a header block
/// (section type 0, number 0). False when there are fewer than `startBytes`.
constexpr bool isSequenceStart(FrameBytes id, unsigned long sequence) {
    return id.size() >= startBytes && id[0] == 0x1F && id[1] == (sequence << 4 | 0x07) && id[2] == 0;
}

/// Whether a frame starts with these bytes.
constexpr bool isFrameStart(FrameBytes id) {
    return isSequenceStart(id, 0);
}

/// Whether the second channel of a frame of 50 Mbit/s starts with these bytes: its blocks have the bit for it
/// set.
constexpr bool isSecondChannelStart(FrameBytes id) {
    return id.size() >= startBytes && id[0] == 0x1F && id[1] == 0x0F && id[2] == 0;
}

/// The system that a frame's header block says, in its fourth byte; 525/60 when there is none.
constexpr const System& systemSaid(FrameBytes frame) {
    return frame.size() > 3 && (frame[3] & 0x80) != 0 ? system625 : system525;
}

/// Whether a chunk of `size` bytes can be a frame at all, of whatever system: at least one DIF block, and not
/// beyond what the engine takes for damage.
constexpr bool mayBeFrameSize(unsigned long size) {
    return size >= blockBytes && size <= maxFrameBytes;
}

/// DIF sequences in a 25 Mbit/s frame of `size` bytes; in the frames of other systems they are numbered
/// otherwise, and 1 stands for the first.
constexpr unsigned long sequences(unsigned long size) {
    return size == palFrameBytes || size == ntscFrameBytes ? size / sequenceBytes : 1;
}

} // namespace vdv
