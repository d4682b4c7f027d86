/// @file
/// The smart pointer for a renderer's video window.
#pragma once

#include "marvo/com/com_ptr.h"
#include "marvo/core/directshow.h"

/// Holds the `IVideoWindow` interface of a renderer.
using dvVideoWindow = vwin::com_<IVideoWindow>;
