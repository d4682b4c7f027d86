#include "core/buf.h"

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
    std::swap(_size, fresh._size);
    std::swap(_capacity, fresh._capacity);
    std::swap(_bytes, fresh._bytes);
    return good;
}

bool buf::append(const void* data, unsigned long size) {
    if (!data || size == 0)
        return true;
    const unsigned long before = _size;
    const bool own = _bytes && data >= _bytes.get() && data < _bytes.get() + _capacity;
    const auto offset = own ? static_cast<const unsigned char*>(data) - _bytes.get() : 0;
    if (size > mostBytes - before || !resize(before + size))
        return false;
    std::memmove(_bytes.get() + before, own ? _bytes.get() + offset : data, size);
    return true;
}

bool buf::resize(unsigned long size) {
    if (size > mostBytes)
        return false;
    if (size > _capacity) {
        const unsigned long capacity = std::max(size, std::min(_capacity * 2, mostBytes));
        std::unique_ptr<unsigned char[]> bytes(new (std::nothrow) unsigned char[capacity]);
        if (!bytes)
            return false;
        std::copy_n(_bytes.get(), _size, bytes.get());
        _bytes = std::move(bytes);
        _capacity = capacity;
    }
    if (size > _size)
        std::fill(_bytes.get() + _size, _bytes.get() + size, static_cast<unsigned char>(0));
    _size = size;
    return true;
}

void buf::clear() {
    _bytes.reset();
    _size = _capacity = 0;
}

} // namespace vcore
