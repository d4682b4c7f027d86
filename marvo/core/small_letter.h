/// @file
/// The one notion of letter case that comparing, searching and looking up share.
#pragma once

#include "marvo/core/platform.h"

namespace vcore {

/// The small form of a letter, whatever the host's locale is; any other character as it is.
inline wchar_t smallLetter(wchar_t c) {
    if (c < 0x80) {
        return c >= L'A' && c <= L'Z' ? static_cast<wchar_t>(c + (L'a' - L'A')) : c;
    }
    CharLowerBuffW(&c, 1);
    return c;
}

} // namespace vcore
