/// @file
/// What a frame is, for callers.
#pragma once

#include "marvo/dv/layout.h"
#include "marvo_c.h"

namespace flat {

/// The system of frames of `bytes` bytes.
marvo_system systemOfBytes(unsigned long bytes);
/// Fills `info` from the bytes of a frame, of which `whole` are there in all; its number and source are the
/// caller's.
void describeFrame(vdv::FrameBytes frame, unsigned long whole, marvo_frame_info& info);
/// Copies a frame out: into a buffer of `capacity` bytes, or nowhere when that is null and 0. Throws
/// MARVO_E_BUFFER when it does not fit.
void copyFrame(vdv::FrameBytes frame, void* buffer, marvo_u32 capacity);
/// Throws MARVO_E_ARGUMENT for null, and MARVO_E_FORMAT when no whole frame of a DV system stands there.
vdv::FrameBytes needFrame(const void* frame, marvo_u32 bytes);

} // namespace flat
