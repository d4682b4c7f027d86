/// @file
/// Lists of values.
#pragma once

#include "marvo/core/alist.h"
#include "marvo/core/var.h"

namespace vcore {

/// An owning list of values, each allocated on its own, so that a value stays where it is while the list
/// grows.
class MARVO_API varlist : public alist<var> {
public:
    /// No values.
    varlist() : alist<var>(0, true) {}

    /// Appends a value made with `new` and takes it over, in any case: when the list cannot grow the value is
    /// deleted. Null adds nothing.
    varlist& operator+=(var* value);
    /// Appends a new value with a copy of the text.
    varlist& operator+=(const wchar_t* text);
};

} // namespace vcore
