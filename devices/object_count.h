/// @file
/// How many objects of this server are alive.
#pragma once

#include <windows.h>

namespace devices {

/// Base of every COM object: counts the objects alive in the process, which decides whether the DLL may be
/// unloaded.
class object_count {
public:
    /// The objects alive now.
    static long alive() { return InterlockedCompareExchange(&alive_, 0, 0); }

    object_count(const object_count&) = delete;
    object_count& operator=(const object_count&) = delete;

protected:
    object_count() { InterlockedIncrement(&alive_); }
    ~object_count() { InterlockedDecrement(&alive_); }

private:
    inline static volatile long alive_ = 0;
};

} // namespace devices
