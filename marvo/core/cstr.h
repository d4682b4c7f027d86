/// @file
/// A plain wide string on the heap.
#pragma once

#include "marvo/core/platform.h"

namespace vcore {

class str;
class strtoken;

/// Wide text on the heap without capacity, flags or narrow copy: one pointer, null when empty.
class MARVO_API cstr {
public:
    cstr() = default;
    /// A copy of `s`.
    cstr(const wchar_t* s);
    /// A copy of the string's text up to its first zero.
    cstr(const str& s);
    /// A copy of the token's characters.
    cstr(const strtoken& token);
    /// A copy.
    cstr(const cstr& source);
    ~cstr();

    /// @{
    /// Takes over a copy of the text, as the constructors do.
    cstr& operator=(const wchar_t* s);
    cstr& operator=(const str& s);
    cstr& operator=(const strtoken& token);
    cstr& operator=(const cstr& source);
    /// @}

    /// Takes over at most `n` characters of `s`, which may point into the string itself; null or an `n` of 0
    /// and below empties it.
    void set(const wchar_t* s, int n);

    /// Length in characters.
    unsigned long len() const;
    /// Bytes held, terminator included; 0 when empty.
    unsigned long size() const;
    /// The text; never null.
    const wchar_t* oleStr() const { return text_ ? text_ : L""; }

    /// As `vcore::str::compare`; an empty string compares as empty text.
    int compare(const wchar_t* s) const;
    /// `compare` without regard to letter case.
    int compareI(const wchar_t* s) const;
    /// Turns every letter into its small form.
    void lower();
    /// Position of the first `s` at or after `from`; -1 when there is none.
    int findStr(const wchar_t* s, unsigned long from = 0) const;

private:
    wchar_t* text_ = nullptr;
};

} // namespace vcore
