#include "marvo/core/buf.h"

#include <algorithm>
#include <cstring>
#include <new>

namespace vcore {

namespace {

constexpr unsigned long mostBytes = 0x7FFFFFFF;

} // namespace

buf& buf::operator=(const buf& source) {
    set(source.data(), source.size());
    return *this;
}

bool buf::set(const void* data, unsigned long size) {
    buf fresh;
    const bool good = fresh.append(data, size);
    std::swap(size_, fresh.size_);
    std::swap(capacity_, fresh.capacity_);
    std::swap(bytes_, fresh.bytes_);
    return good;
}

bool buf::append(const void* data, unsigned long size) {
    if (!data || size == 0) {
        return true;
    }
    const unsigned long before = size_;
    const bool own = bytes_ && data >= bytes_.get() && data < bytes_.get() + capacity_;
    const auto offset = own ? static_cast<const unsigned char*>(data) - bytes_.get() : 0;
    if (size > mostBytes - before || !resize(before + size)) {
        return false;
    }
    std::memmove(bytes_.get() + before, own ? bytes_.get() + offset : data, size);
    return true;
}

bool buf::resize(unsigned long size) {
    if (size > mostBytes) {
        return false;
    }
    if (size > capacity_) {
        const unsigned long capacity = std::max(size, std::min(capacity_ * 2, mostBytes));
        std::unique_ptr<unsigned char[]> bytes(new (std::nothrow) unsigned char[capacity]);
        if (!bytes) {
            return false;
        }
        std::copy_n(bytes_.get(), size_, bytes.get());
        bytes_ = std::move(bytes);
        capacity_ = capacity;
    }
    if (size > size_) {
        std::fill(bytes_.get() + size_, bytes_.get() + size, static_cast<unsigned char>(0));
    }
    size_ = size;
    return true;
}

void buf::clear() {
    bytes_.reset();
    size_ = capacity_ = 0;
}

} // namespace vcore
