#include "marvo/avi/avi_source.h"

#include "marvo/core/winthread.h"

#include <algorithm>
#include <cstring>

bool AviSource::open(const wchar_t* name) {
    file_.reset(CreateFileW(name, GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING,
                            FILE_ATTRIBUTE_NORMAL, nullptr));
    updateSize();
    return static_cast<bool>(file_);
}

void AviSource::updateSize() {
    windowBytes_ = 0;
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

bool AviSource::peek(unsigned long long offset, void* dest, unsigned long bytes) {
    const bool inside = offset >= windowOffset_ && offset - windowOffset_ <= windowBytes_ &&
                        windowBytes_ - (offset - windowOffset_) >= bytes;
    if (!inside) {
        window_.resize(std::max(readAhead_, bytes));
        windowOffset_ = offset;
        windowBytes_ = read(offset, window_.data(), static_cast<unsigned long>(window_.size()));
        if (windowBytes_ < bytes) {
            return false;
        }
    }
    std::memcpy(dest, window_.data() + (offset - windowOffset_), bytes);
    return true;
}
