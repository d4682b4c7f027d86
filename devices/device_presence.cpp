#include "devices/device_presence.h"

#include "devices/lock.h"

#include <windows.h>

namespace devices {

namespace {

lock presence_lock; // guards the two below
bool was_lost = false;
std::optional<ULONGLONG> returns_at;

} // namespace

const long device_presence::lost_error = HRESULT_FROM_WIN32(ERROR_DEVICE_NOT_CONNECTED);

bool device_presence::present() {
    return returns_in() == 0u;
}

bool device_presence::lose(std::optional<uint32_t> return_ms) {
    guard held(presence_lock);
    if (was_lost) {
        return false;
    }
    was_lost = true;
    if (return_ms) {
        returns_at = GetTickCount64() + *return_ms;
    }
    return true;
}

std::optional<uint32_t> device_presence::returns_in() {
    guard held(presence_lock);
    if (!was_lost) {
        return 0u;
    }
    if (!returns_at) {
        return std::nullopt;
    }
    const ULONGLONG now = GetTickCount64();
    return now >= *returns_at ? 0u : static_cast<uint32_t>(*returns_at - now);
}

} // namespace devices
