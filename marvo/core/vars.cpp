#include "marvo/core/vars.h"

#include <algorithm>
#include <new>

namespace vcore {

namespace {

constexpr unsigned long mostValues = 0x7FFFFFFF / sizeof(var);

} // namespace

vars::vars(unsigned long count) {
    if (count && reallocate(count)) {
        count_ = count;
    }
}

vars::vars(const vars& source) : vars(source.count_) {
    std::copy_n(source.begin(), count_, begin());
}

vars& vars::operator=(const vars& source) {
    if (&source == this) {
        return *this;
    }
    clearAll();
    if (checkSize(source.count_)) {
        std::copy(source.begin(), source.end(), begin());
    }
    return *this;
}

bool vars::checkSize(unsigned int size) {
    if (size > mostValues) {
        return false;
    }
    unsigned long capacity = capacity_ ? capacity_ : 16;
    while (capacity < size) {
        capacity *= 2;
    }
    if (size > capacity_ && !reallocate(std::min(capacity, mostValues))) {
        return false;
    }
    count_ = std::max<unsigned long>(count_, size);
    return true;
}

bool vars::reallocate(unsigned long capacity) {
    if (capacity > mostValues) {
        return false;
    }
    std::unique_ptr<var[]> values(new (std::nothrow) var[capacity]);
    if (!values) {
        return false;
    }
    std::move(begin(), end(), values.get());
    values_ = std::move(values);
    capacity_ = capacity;
    return true;
}

void vars::clearAll() {
    for (var& value : *this) {
        value.setEmpty();
    }
    count_ = 0;
}

var& vars::operator[](unsigned long i) const {
    static var nothing;
    return i < count_ ? values_[i] : nothing;
}

} // namespace vcore
