/// @file
/// The pointer list used throughout the library.
#pragma once

#include "marvo/core/platform.h"

#include <algorithm>
#include <memory>
#include <new>
#include <utility>

namespace vcore {

/// An ordered list of `T*`, which owns its elements when it was made with auto-delete. Not thread-safe:
/// guarded by its owner.
template <class T>
class alist {
public:
    /// A list with room for exactly `capacity` entries; none is allocated for 0, and none when there is no
    /// memory. With `autoDelete` the list deletes its elements on `del`, `clearAll` and destruction.
    explicit alist(unsigned long capacity = 0, bool autoDelete = true) : autoDelete_(autoDelete) {
        if (capacity) {
            reallocate(capacity);
        }
    }
    ~alist() { clearAll(); }
    alist(const alist&) = delete;
    alist& operator=(const alist&) = delete;

    /// Makes room for `needed` entries in all. Capacity goes from 0 to 16 and doubles from there, up to 2 GB.
    /// False when there is no memory; the list is then unchanged.
    bool allocArray(unsigned long needed) {
        if (needed <= capacity_) {
            return true;
        }
        unsigned long capacity = capacity_ ? capacity_ : 16;
        while (capacity < needed) {
            if (capacity > maxCapacity / 2) {
                return false;
            }
            capacity *= 2;
        }
        return reallocate(capacity);
    }

    /// Appends an element; false when the list could not grow, and the element then stays the caller's.
    bool add(T* element) { return insert(element, count_); }
    /// Inserts an element before position `at` (at the end when `at` is beyond it); false as for `add`.
    bool insert(T* element, unsigned long at) {
        if (!allocArray(count_ + 1)) {
            return false;
        }
        at = (std::min)(at, count_);
        std::move_backward(begin() + at, end(), end() + 1);
        items_[at] = element;
        ++count_;
        return true;
    }

    /// The last element, null when the list is empty.
    T* top() const { return count_ ? items_[count_ - 1] : nullptr; }
    /// Takes the last element out without deleting it; null when the list is empty.
    T* pop() { return count_ ? takeAt(count_ - 1) : nullptr; }
    /// The element at position `i`, null beyond the end.
    T* operator[](unsigned long i) const { return i < count_ ? items_[i] : nullptr; }

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
        return at >= 0 && (takeAt(static_cast<unsigned long>(at)), true);
    }
    /// Takes the element at a position out and deletes it when the list owns it; false beyond the end.
    bool del(unsigned long at) {
        if (at >= count_) {
            return false;
        }
        T* const element = takeAt(at);
        if (autoDelete_) {
            delete element;
        }
        return true;
    }
    /// The same for an element; false when the list does not hold it.
    bool del(T* element) {
        const long at = pos(element);
        return at >= 0 && del(static_cast<unsigned long>(at));
    }
    /// Takes every element out, the last first, and deletes it when the list owns it. The capacity stays.
    void clearAll() {
        while (count_) {
            del(count_ - 1);
        }
    }

    /// Exchanges the elements of two positions; nothing happens when one is beyond the end.
    void swap(unsigned long a, unsigned long b) const {
        if (a < count_ && b < count_) {
            std::swap(items_[a], items_[b]);
        }
    }
    /// Moves every element of `source` to before position `at` here, in order; `source` is empty then. False
    /// when this list could not grow or is `source` itself; nothing has moved then.
    bool takeList(alist& source, unsigned long at) {
        if (&source == this || source.count_ > maxCapacity - count_ || !allocArray(count_ + source.count_)) {
            return false;
        }
        at = (std::min)(at, count_);
        std::move_backward(begin() + at, end(), end() + source.count_);
        std::copy(source.begin(), source.end(), begin() + at);
        count_ += source.count_;
        source.count_ = 0;
        return true;
    }
    /// Moves every element of `source` to the end of this list.
    alist& operator<<(alist& source) {
        takeList(source, count_);
        return *this;
    }

    /// Whether the list deletes its elements.
    bool autoDelete() const { return autoDelete_; }
    /// Number of elements.
    unsigned long count() const { return count_; }
    /// Number of entries that there is room for.
    unsigned long capacity() const { return capacity_; }

    /// The elements as a range, valid until the list changes.
    T** begin() const { return items_.get(); }
    /// The end of the range.
    T** end() const { return items_.get() + count_; }

private:
    // An array of more than 2 GB would throw rather than give null.
    static constexpr unsigned long maxCapacity = 0x7FFFFFFF / sizeof(T*);

    bool reallocate(unsigned long capacity) {
        if (capacity > maxCapacity) {
            return false;
        }
        std::unique_ptr<T*[]> items(new (std::nothrow) T*[capacity]());
        if (!items) {
            return false;
        }
        std::copy(begin(), end(), items.get());
        items_ = std::move(items);
        capacity_ = capacity;
        return true;
    }

    T* takeAt(unsigned long at) {
        T* const element = items_[at];
        std::move(begin() + at + 1, end(), begin() + at);
        items_[--count_] = nullptr;
        return element;
    }

    unsigned long capacity_ = 0;
    unsigned long count_ = 0;
    std::unique_ptr<T*[]> items_;
    bool autoDelete_;
};

} // namespace vcore
