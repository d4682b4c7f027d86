/// @file
/// An object with a name.
#pragma once

#include "core/str.h"

namespace vcore {

/// A named object. Not thread-safe: guarded by its owner.
class MARVO_API nameable {
public:
    /// An object of that name; null means the empty name.
    explicit nameable(const wchar_t* name = nullptr) { _name = name; }
    virtual ~nameable() = default;

    /// Gives the object another name.
    void rename(const wchar_t* name) { _name = name; }
    /// The name.
    const str& name() const { return _name; }
    /// Bytes that the object takes up, with its name's buffers.
    virtual unsigned long memSize() const;

private:
    str _name;
};

} // namespace vcore
