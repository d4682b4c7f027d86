/// @file
/// The system's list of video capture devices.
#pragma once

#include "marvo/com/com_ptr.h"
#include "marvo/core/directshow.h"

#include <string>
#include <vector>

namespace vwin {

/// Initialises COM on the calling thread in the multithreaded mode; it is never uninitialised. A thread that
/// is already in another mode stays in it.
void initialiseCom();

/// The capture devices in the system's order. Lives on the thread that made it.
class CaptureDevices {
public:
    /// Lists the devices; an empty list without any or without COM on this thread.
    CaptureDevices();

    /// The number of devices.
    size_t count() const { return devices_.size(); }
    /// Device `number`, counted from 0, or nothing.
    com_<IMoniker> byNumber(unsigned long number) const;
    /// The device whose friendly name equals `name` in any case, else the first one whose name contains it,
    /// or nothing.
    com_<IMoniker> byName(const std::wstring& name) const;
    /// A device's "FriendlyName" property; empty when it has none.
    static std::wstring friendlyName(IMoniker* device);

private:
    std::vector<com_<IMoniker>> devices_;
};

} // namespace vwin
