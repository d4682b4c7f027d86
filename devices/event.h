/// @file
/// A Windows event with its handle.
#pragma once

#include <windows.h>

namespace devices {

/// An event that resets itself when a wait has seen it.
class event {
public:
    event() : handle_(CreateEventW(nullptr, FALSE, FALSE, nullptr)) {}
    ~event() {
        if (handle_) {
            CloseHandle(handle_);
        }
    }
    event(const event&) = delete;
    event& operator=(const event&) = delete;

    void set() { SetEvent(handle_); }
    void reset() { ResetEvent(handle_); }
    /// Null when Windows had none left.
    HANDLE handle() const { return handle_; }

private:
    HANDLE handle_;
};

} // namespace devices
