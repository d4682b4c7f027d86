/// @file
/// Whether the simulated device is plugged in.
#pragma once

#include <cstdint>
#include <optional>

namespace devices {

/// The one device of this process: there at first, lost once at most, and back after a while or never. Any
/// thread.
class device_presence {
public:
    /// What opening or starting a device that is not there gives.
    static const long lost_error;

    /// Whether the device can be used now.
    static bool present();
    /// Takes the device away for so many ms (none: for good). False, and nothing happens, when it was lost
    /// before.
    static bool lose(std::optional<uint32_t> return_ms);
    /// How many ms from now until a lost device is back; 0 when it is there, none when it does not come back.
    static std::optional<uint32_t> returns_in();
};

} // namespace devices
