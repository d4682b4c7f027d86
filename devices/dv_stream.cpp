#include "devices/dv_stream.h"

#include <cstring>
#include <new>
#include <stdexcept>

#include <dshow.h>

namespace devices {

HRESULT dv_stream::open(const std::wstring& path) {
    *this = dv_stream();
    file_handle file = file_handle::open_existing(path);
    if (!file) {
        const DWORD error = GetLastError();
        return HRESULT_FROM_WIN32(error ? error : ERROR_FILE_NOT_FOUND);
    }
    uint8_t header[4];
    if (!file.read_at(0, header, sizeof header)) {
        return VFW_E_INVALID_FILE_FORMAT;
    }
    const dv_system* system = dv_system::of_frame(header, sizeof header);
    const uint64_t frames = system ? file.size() / system->frame_bytes : 0;
    if (frames == 0) {
        return VFW_E_INVALID_FILE_FORMAT;
    }
    file_ = std::move(file);
    system_ = system;
    frames_ = frames;
    return S_OK;
}

void dv_stream::load(uint64_t limit) {
    if (!system_ || !bytes_.empty() || frames_ > limit / system_->frame_bytes) {
        return;
    }
    try {
        std::vector<uint8_t> bytes(static_cast<size_t>(frames_) * system_->frame_bytes);
        if (file_.read_at(0, bytes.data(), bytes.size())) {
            bytes_ = std::move(bytes);
        }
    } catch (const std::bad_alloc&) {
        // The frames are then read one by one.
    } catch (const std::length_error&) {
        // The same: more than the address space holds.
    }
}

bool dv_stream::read(uint64_t frame, uint8_t* out) const {
    if (!system_) {
        return false;
    }
    const uint64_t position = frame % frames_ * system_->frame_bytes;
    if (bytes_.empty()) {
        return file_.read_at(position, out, system_->frame_bytes);
    }
    std::memcpy(out, bytes_.data() + position, system_->frame_bytes);
    return true;
}

} // namespace devices
