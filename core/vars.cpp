#include "core/vars.h"

#include <algorithm>
#include <new>

namespace vcore {

namespace {

constexpr unsigned long mostValues = 0x7FFFFFFF / sizeof(var);

} // namespace

vars::vars(unsigned long count) {
    if (count && _reallocate(count))
        _count = count;
}

vars::vars(const vars& source) : vars(source._count) {
    std::copy_n(source.begin(), _count, begin());
}

vars& vars::operator=(const vars& source) {
    if (&source == this)
        return *this;
    clearAll();
    if (checkSize(source._count))
        std::copy(source.begin(), source.end(), begin());
    return *this;
}

bool vars::checkSize(unsigned int size) {
    if (size > mostValues)
        return false;
    unsigned long capacity = _capacity ? _capacity : 16;
    while (capacity < size)
        capacity *= 2;
    if (size > _capacity && !_reallocate(std::min(capacity, mostValues)))
        return false;
    _count = std::max<unsigned long>(_count, size);
    return true;
}

bool vars::_reallocate(unsigned long capacity) {
    if (capacity > mostValues)
        return false;
    std::unique_ptr<var[]> values(new (std::nothrow) var[capacity]);
    if (!values)
        return false;
    std::move(begin(), end(), values.get());
    _values = std::move(values);
    _capacity = capacity;
    return true;
}

void vars::clearAll() {
    for (var& value : *this)
        value.setEmpty();
    _count = 0;
}

var& vars::operator[](unsigned long i) const {
    static var nothing;
    return i < _count ? _values[i] : nothing;
}

} // namespace vcore
