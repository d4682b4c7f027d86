/// @file
/// Questions about the pins of a filter. Every function answers on null objects with nothing or false.
#pragma once

#include "marvo/com/com_ptr.h"
#include "marvo/core/directshow.h"

#include <vector>

namespace vwin {

/// Whether two interfaces belong to the same object.
bool sameObject(IUnknown* one, IUnknown* other);

/// The filter that owns the pin.
com_<IBaseFilter> ownerOf(IPin* pin);

/// The pin at the other end of a connected pin, else nothing.
com_<IPin> peerOf(IPin* pin);

/// The filter's pins called `name` (null: any) with the direction (negative: either), in the filter's order.
std::vector<com_<IPin>> findPins(IBaseFilter* filter, const wchar_t* name, int direction);

/// The first of these pins, else nothing.
com_<IPin> findPin(IBaseFilter* filter, const wchar_t* name, int direction);

/// The filter's unconnected pins with the direction.
std::vector<com_<IPin>> freePins(IBaseFilter* filter, PIN_DIRECTION direction);

/// Whether the pin can say which media types it offers.
bool offersTypes(IPin* pin);

/// Whether the pin offers standard DV video, alone or interleaved with its sound.
bool offersDv(IPin* pin);

/// Disconnects the pin and its peer, through the graph where that works (`graph` may be null). True when the
/// pin is not connected afterwards.
bool disconnectBothEnds(IFilterGraph* graph, IPin* pin);

/// Disconnects all of the filter's pins at both ends. False when one stays connected.
bool disconnectAllPins(IFilterGraph* graph, IBaseFilter* filter);

} // namespace vwin
