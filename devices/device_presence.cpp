#include "devices/device_presence.h"

#include "devices/lock.h"

#include <windows.h>

namespace devices {

namespace {

lock presence_lock; // guards the three below
std::string current_scenario;
size_t times_lost = 0;
std::optional<ULONGLONG> returns_at;

} // namespace

const long device_presence::lost_error = HRESULT_FROM_WIN32(ERROR_DEVICE_NOT_CONNECTED);

bool device_presence::present() {
    return returns_in() == 0u;
}

void device_presence::enter(const std::string& scenario) {
    guard held(presence_lock);
    if (scenario != current_scenario) {
        current_scenario = scenario;
        times_lost = 0;
    }
}

size_t device_presence::losses() {
    guard held(presence_lock);
    return times_lost;
}

void device_presence::lose(std::optional<uint32_t> return_ms) {
    guard held(presence_lock);
    ++times_lost;
    returns_at = return_ms ? std::optional(GetTickCount64() + *return_ms) : std::nullopt;
}

std::optional<uint32_t> device_presence::returns_in() {
    guard held(presence_lock);
    if (times_lost == 0) {
        return 0u;
    }
    if (!returns_at) {
        return std::nullopt;
    }
    const ULONGLONG now = GetTickCount64();
    return now >= *returns_at ? 0u : static_cast<uint32_t>(*returns_at - now);
}

} // namespace devices
