#include "marvo/avi/avi_source.h"

#include "marvo/core/disk_file.h"
#include "marvo/core/winthread.h"

#include <algorithm>
#include <cstring>

bool AviSource::open(const wchar_t* name) {
    file_ = vcore::openDiskFile(name, GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE);
    const DWORD error = GetLastError();
    updateSize();
    SetLastError(error);
    return static_cast<bool>(file_);
}

void AviSource::updateSize() {
    windows_ = {};
    forget();
    LARGE_INTEGER size{};
    if (file_ && GetFileSizeEx(file_.get(), &size)) {
        size_ = static_cast<unsigned long long>(size.QuadPart);
    }
}

unsigned long AviSource::read(unsigned long long offset, void* dest, unsigned long bytes,
                              unsigned long* error) const {
    // An OVERLAPPED would give the place as well, but then some systems ask a server about every read.
    LARGE_INTEGER position{};
    position.QuadPart = static_cast<long long>(offset);
    DWORD got = 0;
    BOOL done = FALSE;
    {
        const vwin::winthread::killable slowDisk;
        done = SetFilePointerEx(file_.get(), position, nullptr, FILE_BEGIN) &&
               ReadFile(file_.get(), dest, bytes, &got, nullptr);
    }
    if (error) {
        *error = done ? 0 : GetLastError();
        *error = *error == ERROR_HANDLE_EOF ? 0 : *error;
    }
    return done ? std::min<unsigned long>(got, bytes) : 0;
}

/// Where in memory these bytes of the file are; null when they must be read.
const unsigned char* AviSource::held(unsigned long long offset, unsigned long bytes) const {
    const auto inside = [&](unsigned long long start, unsigned long long count) {
        return offset >= start && offset - start <= count && count - (offset - start) >= bytes;
    };
    for (const Window& window : windows_) {
        if (inside(window.offset, window.count)) {
            return window.bytes.data() + (offset - window.offset);
        }
    }
    const auto before = [](unsigned long long place, const Kept& kept) { return place < kept.offset; };
    const auto behind = std::upper_bound(kept_.begin(), kept_.end(), offset, before);
    if (behind == kept_.begin() || !inside((behind - 1)->offset, (behind - 1)->count)) {
        return nullptr;
    }
    return (behind - 1)->bytes + (offset - (behind - 1)->offset);
}

void AviSource::keep(unsigned long long offset, const unsigned char* data, unsigned long bytes) {
    if (!kept_.empty() && offset <= kept_.back().offset) {
        return;
    }
    Kept kept{offset, std::min(bytes, mostKept), {}};
    std::memcpy(kept.bytes, data, kept.count);
    kept_.push_back(kept);
}

bool AviSource::peek(unsigned long long offset, void* dest, unsigned long bytes) {
    if (const unsigned char* known = held(offset, bytes)) {
        std::memcpy(dest, known, bytes);
        return true;
    }
    std::rotate(windows_.begin(), windows_.end() - 1, windows_.end());
    Window& window = windows_.front();
    window.bytes.resize(std::max(readAhead_, bytes));
    window.offset = offset;
    window.count = read(offset, window.bytes.data(), static_cast<unsigned long>(window.bytes.size()));
    if (window.count < bytes) {
        return false;
    }
    std::memcpy(dest, window.bytes.data(), bytes);
    return true;
}
