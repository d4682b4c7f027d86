/// @file
/// OLE arrays as values.
#pragma once

#include "marvo/core/var.h"

namespace vcore {

/// A value that is a one-dimensional OLE array, made of variants; ready to be handed to COM as it stands.
/// Elements are counted from 0, whatever the array's own lower bound is. Not thread-safe: guarded by its
/// owner.
class MARVO_API var_array : public var {
public:
    /// An array of `count` empty variants; no array when `create` fails.
    explicit var_array(int count) { create(count); }
    /// A copy of an array, which may have elements of any type; null makes no array.
    explicit var_array(SAFEARRAY* array) : var(array) {}

    /// Replaces the value by an array of `count` empty variants. False for a negative count and when there is
    /// no memory; there is no array then.
    bool create(int count);
    /// Number of elements; 0 when there is no array or it has several dimensions.
    int count() const;
    /// A copy of the element at position `i`, of the array's element type. Empty beyond either end, and for
    /// elements too large for a variant's payload (records, decimal numbers).
    var get(int i) const;
    /// Stores a copy of `value` at position `i`. False beyond either end, for an array of anything but
    /// variants, and for a value that belongs in no variant (a raw pointer, narrow text).
    bool set(int i, const var& value);

private:
    bool findElement(int i, VARTYPE& element, LONG& index) const;
};

} // namespace vcore
