/// @file
/// The picture in a DV frame.
#pragma once

#include "tools/picture.h"

#include "marvo/dv/layout.h"

#include <string>

namespace dvrec {

/// Has the system's DV video decoder make a picture of the frame, in full size, in a small graph of its own:
/// a source with this one frame, the decoder, and a sink that keeps what comes. False, with the reason in
/// `fault`, when there is no decoder or it does not take the frame. Initialises COM on the calling thread.
bool decodePicture(vdv::FrameBytes frame, Picture& picture, std::string& fault);

} // namespace dvrec
