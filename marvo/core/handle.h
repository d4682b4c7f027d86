/// @file
/// Ownership of a system handle.
#pragma once

#include "marvo/core/platform.h"

#include <utility>

namespace vcore {

/// Owns one system handle and closes it at the end. Null and `INVALID_HANDLE_VALUE` both mean that there is
/// none.
class handle {
public:
    /// Takes over `h`.
    explicit handle(HANDLE h = nullptr) : handle_(h == INVALID_HANDLE_VALUE ? nullptr : h) {}
    /// Takes the handle over; `source` has none then.
    handle(handle&& source) noexcept : handle_(source.release()) {}
    /// Closes the handle held before and takes over that of `source`, which has none then.
    handle& operator=(handle&& source) noexcept {
        reset(source.release());
        return *this;
    }
    ~handle() { reset(); }

    /// The handle, null when there is none.
    HANDLE get() const { return handle_; }
    /// Whether there is a handle.
    explicit operator bool() const { return handle_ != nullptr; }
    /// Gives the handle up without closing it.
    HANDLE release() { return std::exchange(handle_, nullptr); }
    /// Closes the handle and takes over `h`.
    void reset(HANDLE h = nullptr) {
        if (h == INVALID_HANDLE_VALUE) {
            h = nullptr;
        }
        if (HANDLE old = std::exchange(handle_, h); old && old != h) {
            CloseHandle(old);
        }
    }

private:
    HANDLE handle_;
};

} // namespace vcore
