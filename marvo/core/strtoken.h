/// @file
/// A view of a piece of somebody else's wide text.
#pragma once

#include "marvo/core/platform.h"

namespace vcore {

/// A pointer and a length into wide text that another object owns. Valid only while that text is neither
/// changed nor freed. The text is not terminated at the token's end.
class MARVO_API strtoken {
public:
    /// No text: null start, length 0.
    strtoken() = default;

    /// A view of the first `length` characters of `start`, fewer when the text ends before.
    strtoken(const wchar_t* start, unsigned long length) { set(start, length); }

    /// A view of the same text.
    strtoken(const strtoken&) = default;
    /// Points the view at the same text.
    strtoken& operator=(const strtoken&) = default;

    /// Points the view at other text, with the length capped as in the constructor; a null start gives length
    /// 0.
    void set(const wchar_t* start, unsigned long length);

    /// 0 when the token is exactly `s`; otherwise the sign of the comparison, and 1 when the token is only
    /// the beginning of `s`. With a null `s`, 0 for a token without text and 1 for any other.
    int compare(const wchar_t* s) const;

    /// Start of the view, or null. Not terminated at `len()`.
    const wchar_t* start() const { return start_; }

    /// Length in characters.
    unsigned long len() const { return length_; }

private:
    const wchar_t* start_ = nullptr;
    unsigned long length_ = 0;
};

} // namespace vcore
