/// @file
/// One setting.
#pragma once

#include "marvo/core/alist.h"
#include "marvo/core/str.h"
#include "marvo/core/var.h"

namespace vcore {

/// A name, with the section it belongs to in front and a dot between them ("dv.logging"), and a value.
class MARVO_API iniEntry {
public:
    /// An entry with an empty value.
    explicit iniEntry(const wchar_t* name) { name_ = name; }
    /// An entry with a copy of the text as its value.
    iniEntry(const wchar_t* name, const wchar_t* value) : value_(value) { name_ = name; }
    /// A copy, with its own value.
    iniEntry(const iniEntry&) = default;
    /// Takes over a copy of name and value.
    iniEntry& operator=(const iniEntry&) = default;
    ~iniEntry() = default;

    /// The whole name.
    const str& name() const { return name_; }
    /// The value, which may be changed.
    var& val() { return value_; }

private:
    str name_;
    var value_;
};

/// The entries of a settings file, owned, in order.
using iniEntries = alist<iniEntry>;
/// The names of sections, owned, in the order in which they were met.
using secEntries = alist<str>;

} // namespace vcore
