/// @file
/// The packs in a DV frame: what the camera notes beside picture and sound.
#pragma once

#include "marvo/dv/layout.h"

#include <functional>
#include <optional>

namespace vdv {

/// Bytes of a pack: its type, and four of content.
constexpr unsigned long packBytes = 5;

/// What a pack holds, by its first byte (IEC 61834-4).
constexpr unsigned char timeCodePack = 0x13;
constexpr unsigned char vauxSourceControlPack = 0x61;
constexpr unsigned char recordingDatePack = 0x62;
constexpr unsigned char recordingTimePack = 0x63;

/// Calls `visit` with every pack of the frame's subcode and VAUX blocks, as far as `frame` reaches, until it
/// returns false.
void visitPacks(FrameBytes frame, const std::function<bool(FrameBytes pack)>& visit);

/// The two binary-coded digits of a pack's byte, of which the bits outside of `mask` mean something else;
/// nothing for other digits and for numbers outside of `least` to `most`.
std::optional<unsigned> packDigits(unsigned char value, unsigned char mask, unsigned least, unsigned most);

} // namespace vdv
