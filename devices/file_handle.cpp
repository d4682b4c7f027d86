#include "devices/file_handle.h"

#include <algorithm>

namespace devices {

file_handle file_handle::open_existing(const std::wstring& path) {
    return file_handle(CreateFileW(path.c_str(), GENERIC_READ,
                                   FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                   OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
}

file_handle file_handle::open_to_append(const std::wstring& path, bool empty) {
    return file_handle(CreateFileW(path.c_str(), FILE_APPEND_DATA,
                                   FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                   empty ? CREATE_ALWAYS : OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
}

uint64_t file_handle::size() const {
    LARGE_INTEGER size;
    return GetFileSizeEx(handle_, &size) ? static_cast<uint64_t>(size.QuadPart) : 0;
}

bool file_handle::read_at(uint64_t position, void* out, size_t count) const {
    auto* bytes = static_cast<uint8_t*>(out);
    while (count > 0) {
        OVERLAPPED place{};
        place.Offset = static_cast<DWORD>(position);
        place.OffsetHigh = static_cast<DWORD>(position >> 32);
        const DWORD piece = static_cast<DWORD>(std::min<size_t>(count, 1 << 24));
        DWORD done = 0;
        if (!ReadFile(handle_, bytes, piece, &done, &place) || done == 0) {
            return false;
        }
        bytes += done;
        position += done;
        count -= done;
    }
    return true;
}

bool file_handle::append(const std::string& text) const {
    DWORD done = 0;
    return WriteFile(handle_, text.data(), static_cast<DWORD>(text.size()), &done, nullptr) &&
           done == text.size();
}

} // namespace devices
