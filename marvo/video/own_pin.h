/// @file
/// How the library's own pins know each other.
#pragma once

#include "marvo/core/directshow.h"
#include "marvo/core/platform.h"

namespace vvideo {

/// Answered by `dvInputPin` and `dvOutputPin` only (with their `IPin` part). Among own pins the reference of
/// a sample passes from the sender to the receiver; foreign pins follow plain COM rules.
extern const IID IID_dvOwnPin;

/// Whether a pin is one of ours; false for null.
bool isOwnPin(IPin* pin);

/// Fills `info` with the filter (a reference added), the direction and the name.
HRESULT fillPinInfo(PIN_INFO* info, IBaseFilter* filter, PIN_DIRECTION direction, const wchar_t* name);

/// A pin's name, as long as a `PIN_INFO` takes.
using pinName = wchar_t[MAX_PIN_NAME];

/// Copies a name of any length (null means empty), cut to fit.
void copyPinName(pinName& to, const wchar_t* name);

} // namespace vvideo
