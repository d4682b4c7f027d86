/// @file
/// This server's entries in the registry.
#pragma once

#include <windows.h>

namespace devices {

/// Registers the camera always; the splitter and the decoder only where the system has none of its own, whose
/// entries are left alone.
class registration {
public:
    /// Writes the entries for this module. The first failure's HRESULT; what was written before it stays.
    static HRESULT add();
    /// Removes what `add` wrote; S_OK also when there was nothing.
    static HRESULT remove();
};

} // namespace devices
