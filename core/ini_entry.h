/// @file
/// One setting.
#pragma once

#include "core/alist.h"
#include "core/str.h"
#include "core/var.h"

namespace vcore {

/// A name, with the section it belongs to in front and a dot between them ("dv.logging"), and a value.
class MARVO_API iniEntry {
public:
    /// An entry with an empty value.
    explicit iniEntry(const wchar_t* name) { _name = name; }
    /// An entry with a copy of the text as its value.
    iniEntry(const wchar_t* name, const wchar_t* value) : _value(value) { _name = name; }
    /// A copy, with its own value.
    iniEntry(const iniEntry&) = default;
    /// Takes over a copy of name and value.
    iniEntry& operator=(const iniEntry&) = default;
    ~iniEntry() = default;

    /// The whole name.
    const str& name() const { return _name; }
    /// The value, which may be changed.
    var& val() { return _value; }

private:
    str _name;
    var _value;
};

/// The entries of a settings file, owned, in order.
using iniEntries = alist<iniEntry>;
/// The names of sections, owned, in the order in which they were met.
using secEntries = alist<str>;

} // namespace vcore
