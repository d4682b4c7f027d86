/// @file
/// Whether a DV frame is whole.
#pragma once

#include "marvo/dv/layout.h"

#include <string>

namespace vdv {

/// What is wrong with a frame that should be whole, as a predicate ("does not begin as a DV frame does"): its
/// size, its start, or a block that is not where it belongs. Empty when nothing is.
std::string faultOf(FrameBytes frame);

} // namespace vdv
