/// @file
/// An object with a name.
#pragma once

#include "marvo/core/str.h"

namespace vcore {

/// A named object. Not thread-safe: guarded by its owner.
class MARVO_API nameable {
public:
    /// An object of that name; null means the empty name.
    explicit nameable(const wchar_t* name = nullptr) { name_ = name; }
    virtual ~nameable() = default;

    /// Gives the object another name.
    void rename(const wchar_t* name) { name_ = name; }
    /// The name.
    const str& name() const { return name_; }
    /// Bytes that the object takes up, with its name's buffers.
    virtual unsigned long memSize() const;

private:
    str name_;
};

} // namespace vcore
