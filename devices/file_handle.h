/// @file
/// An open file.
#pragma once

#include <windows.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>

namespace devices {

/// Owns a Windows file handle; may be empty. Reading names its position, so several threads may read.
class file_handle {
public:
    file_handle() = default;
    file_handle(file_handle&& other) noexcept : handle_(std::exchange(other.handle_, INVALID_HANDLE_VALUE)) {}
    file_handle& operator=(file_handle&& other) noexcept {
        std::swap(handle_, other.handle_);
        return *this;
    }
    ~file_handle() {
        if (*this) {
            CloseHandle(handle_);
        }
    }

    /// Opens for reading; empty on failure, the reason is then GetLastError().
    static file_handle open_existing(const std::wstring& path);
    /// Opens for appending, emptied first when `empty`; others may read meanwhile. Empty on failure.
    static file_handle open_to_append(const std::wstring& path, bool empty);

    explicit operator bool() const { return handle_ != INVALID_HANDLE_VALUE; }
    /// Bytes; 0 on failure.
    uint64_t size() const;
    /// Reads exactly `count` bytes; false when the file is shorter or cannot be read.
    bool read_at(uint64_t position, void* out, size_t count) const;
    /// Appends in one piece, so that a line is whole even if the process ends next.
    bool append(const std::string& text) const;

private:
    explicit file_handle(HANDLE handle) : handle_(handle) {}

    HANDLE handle_ = INVALID_HANDLE_VALUE;
};

} // namespace devices
