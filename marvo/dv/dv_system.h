/// @file
/// The two systems of DV video: what a frame of each is made of.
#pragma once

#include <iterator>

namespace vdv {

/// Bytes of one 25 Mbit/s frame of 625/50: 12 DIF sequences of 150 blocks of 80 bytes (IEC 61834-2).
constexpr unsigned long palFrameBytes = 144000;
/// Bytes of one 25 Mbit/s frame of 525/60: 10 DIF sequences.
constexpr unsigned long ntscFrameBytes = 120000;

/// Frames above this size are refused everywhere: it is far beyond any DV frame, and such a size in a file or
/// a media type is damage.
constexpr unsigned long maxFrameBytes = 0x1000000;

} // namespace vdv
