/// @file
/// Arrays of values.
#pragma once

#include "marvo/core/var.h"

#include <memory>

namespace vcore {

/// A growable array of values that lie one behind the other, as calls want them that take an array of
/// `VARIANT`s. Not thread-safe: guarded by its owner.
class MARVO_API vars {
public:
    /// An array of `count` empty values; none when there is no memory for them.
    explicit vars(unsigned long count = 0);
    /// A copy of every value.
    vars(const vars& source);
    /// Takes over a copy of every value.
    vars& operator=(const vars& source);
    ~vars() = default;

    /// Makes sure that there are at least `size` values; new ones are empty. Room for them grows from 0 to 16
    /// and doubles from there, and values move when it does. False when there is no memory; nothing has
    /// changed then.
    bool checkSize(unsigned int size);
    /// Frees every value. The room stays.
    void clearAll();
    /// Number of values.
    unsigned long count() const { return count_; }

    /// The value at position `i`; a shared empty value, not to be written to, beyond the end.
    var& operator[](unsigned long i) const;
    /// The values as a range and as the array that COM takes, valid until the array grows; may be null when
    /// there is none.
    var* begin() const { return values_.get(); }
    /// The end of the range.
    var* end() const { return values_.get() + count_; }

private:
    bool reallocate(unsigned long capacity);

    unsigned long capacity_ = 0;
    unsigned long count_ = 0;
    std::unique_ptr<var[]> values_;
};

} // namespace vcore
