/// @file
/// The pointer list used throughout the library.
#pragma once

#include "core/platform.h"

#include <algorithm>
#include <memory>
#include <new>

namespace vcore {

/// An ordered list of `T*`, which owns its elements when it was made with auto-delete. Not thread-safe:
/// guarded by its owner.
template <class T>
class alist {
public:
    /// A list with room for exactly `capacity` entries; none is allocated for 0. With `autoDelete` the list
    /// deletes its elements on `del`, `clearAll` and destruction.
    explicit alist(unsigned long capacity = 0, bool autoDelete = true) : _autoDelete(autoDelete) {
        if (capacity)
            _reallocate(capacity);
    }
    ~alist() { clearAll(); }
    alist(const alist&) = delete;
    alist& operator=(const alist&) = delete;

    /// Makes room for `needed` entries in all. Capacity goes from 0 to 16 and doubles from there. False when
    /// there is no memory; the list is then unchanged.
    bool allocArray(unsigned long needed) {
        if (needed <= _capacity)
            return true;
        unsigned long capacity = _capacity ? _capacity : 16;
        while (capacity < needed) {
            if (capacity > maxCapacity / 2)
                return false;
            capacity *= 2;
        }
        return _reallocate(capacity);
    }

    /// Appends an element; false when the list could not grow, and the element then stays the caller's.
    bool add(T* element) { return insert(element, _count); }
    /// Inserts an element before position `at` (at the end when `at` is beyond it); false as for `add`.
    bool insert(T* element, unsigned long at) {
        if (!allocArray(_count + 1))
            return false;
        at = std::min(at, _count);
        std::move_backward(begin() + at, end(), end() + 1);
        _items[at] = element;
        ++_count;
        return true;
    }

    /// The last element, null when the list is empty.
    T* top() const { return _count ? _items[_count - 1] : nullptr; }
    /// Takes the last element out without deleting it; null when the list is empty.
    T* pop() { return _count ? _take(_count - 1) : nullptr; }
    /// The element at position `i`, null beyond the end.
    T* operator[](unsigned long i) const { return i < _count ? _items[i] : nullptr; }

    /// Position of the first entry holding `element`, -1 when there is none.
    long pos(const T* element) const {
        const auto found = std::find(begin(), end(), element);
        return found == end() ? -1 : static_cast<long>(found - begin());
    }
    /// Whether the list holds `element`.
    bool member(const T* element) const { return pos(element) >= 0; }

    /// Takes an element out without deleting it; false when the list does not hold it.
    bool remove(const T* element) {
        const long at = pos(element);
        return at >= 0 && (_take(static_cast<unsigned long>(at)), true);
    }
    /// Takes the element at a position out and deletes it when the list owns it; false beyond the end.
    bool del(unsigned long at) {
        if (at >= _count)
            return false;
        T* const element = _take(at);
        if (_autoDelete)
            delete element;
        return true;
    }
    /// The same for an element; false when the list does not hold it.
    bool del(T* element) {
        const long at = pos(element);
        return at >= 0 && del(static_cast<unsigned long>(at));
    }
    /// Takes every element out, the last first, and deletes it when the list owns it. The capacity stays.
    void clearAll() {
        while (_count)
            del(_count - 1);
    }

    /// Exchanges the elements of two positions; nothing happens when one is beyond the end.
    void swap(unsigned long a, unsigned long b) const {
        if (a < _count && b < _count)
            std::swap(_items[a], _items[b]);
    }
    /// Moves every element of `source` to before position `at` here, in order; `source` is empty then. False
    /// when this list could not grow or is `source` itself; nothing has moved then.
    bool takeList(alist& source, unsigned long at) {
        if (&source == this || source._count > maxCapacity - _count || !allocArray(_count + source._count))
            return false;
        at = std::min(at, _count);
        std::move_backward(begin() + at, end(), end() + source._count);
        std::copy(source.begin(), source.end(), begin() + at);
        _count += source._count;
        source._count = 0;
        return true;
    }
    /// Moves every element of `source` to the end of this list.
    alist& operator<<(alist& source) {
        takeList(source, _count);
        return *this;
    }

    /// Whether the list deletes its elements.
    bool autoDelete() const { return _autoDelete; }
    /// Number of elements.
    unsigned long count() const { return _count; }
    /// Number of entries that there is room for.
    unsigned long capacity() const { return _capacity; }

    /// The elements as a range, valid until the list changes.
    T** begin() const { return _items.get(); }
    /// The end of the range.
    T** end() const { return _items.get() + _count; }

private:
    static constexpr unsigned long maxCapacity = 0x7FFFFFFF;

    bool _reallocate(unsigned long capacity) {
        std::unique_ptr<T*[]> items(new (std::nothrow) T*[capacity]());
        if (!items)
            return false;
        std::copy(begin(), end(), items.get());
        _items = std::move(items);
        _capacity = capacity;
        return true;
    }

    T* _take(unsigned long at) {
        T* const element = _items[at];
        std::move(begin() + at + 1, end(), begin() + at);
        _items[--_count] = nullptr;
        return element;
    }

    unsigned long _capacity = 0;
    unsigned long _count = 0;
    std::unique_ptr<T*[]> _items;
    bool _autoDelete;
};

} // namespace vcore
