/// @file
/// A class id and its text form.
#pragma once

#include "marvo/core/platform.h"

namespace vcore {
class str;
}

namespace vwin {

/// One GUID, made from a GUID or from its text form "{8-4-4-4-12}". A plain value: no threads, no ownership.
class MARVO_API com_clsid {
public:
    /// The null GUID.
    com_clsid() = default;
    /// A copy of `guid`.
    explicit com_clsid(const GUID& guid);
    /// From the text form; the null GUID when the text is null or no GUID.
    explicit com_clsid(const wchar_t* text);

    /// Takes the GUID that `text` stands for. False, with the null GUID kept, when it is null or no GUID.
    bool set(const wchar_t* text);
    /// Puts the text form, with braces and upper-case digits, into `text`.
    bool getText(vcore::str& text) const;
    /// The GUID.
    const GUID& guid() const { return guid_; }
    /// Whether this is the null GUID.
    bool empty() const;

private:
    GUID guid_ = {};
};

} // namespace vwin
