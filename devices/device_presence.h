/// @file
/// Whether the simulated device is plugged in.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

namespace devices {

/// The one device of this process: there at first, lost now and then, and back after a while or never. Any
/// thread.
class device_presence {
public:
    /// What opening or starting a device that is not there gives.
    static const long lost_error;

    /// With another scenario than the one before, the device is there and was never lost.
    static void enter(const std::string& scenario);
    /// Whether the device can be used now.
    static bool present();
    /// How often it was lost in this scenario.
    static size_t losses();
    /// Takes the device away for so many ms (none: for good).
    static void lose(std::optional<uint32_t> return_ms);
    /// How many ms from now until a lost device is back; 0 when it is there, none when it does not come back.
    static std::optional<uint32_t> returns_in();
};

} // namespace devices
