/// @file
/// A method of somebody else's COM class, replaced.
#pragma once

#include "tests/support/import_patch.h"

/// Replaces one method of an object, and of all others that share its table of methods, as long as it lives.
class VtableHook {
public:
    /// `slot` counts the methods of the interface from `QueryInterface`, 0.
    VtableHook(void* object, size_t slot, void* replacement)
        : entry_(*static_cast<void***>(object) + slot), original_(*entry_) {
        overwrite(entry_, replacement);
    }
    ~VtableHook() { overwrite(entry_, original_); }
    VtableHook(const VtableHook&) = delete;
    VtableHook& operator=(const VtableHook&) = delete;

    /// The method itself, as a pointer to a function.
    template <class Function>
    Function original() const {
        return reinterpret_cast<Function>(original_);
    }

private:
    void** const entry_;
    void* const original_;
};
