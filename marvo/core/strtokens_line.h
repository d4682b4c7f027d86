/// @file
/// Splitting a line into its words.
#pragma once

#include "marvo/core/strtokens.h"

namespace vcore {

/// The words of a line: pieces between blanks, tabs and line ends, none of them empty.
class MARVO_API strtokens_line : public strtokens {
public:
    strtokens_line() = default;
    /// The tokens of `text`.
    strtokens_line(const str& text) { splitStr(text); }
    /// A copy of the views.
    strtokens_line(const strtokens_line&) = default;
    /// Takes over a copy of the views.
    strtokens_line& operator=(const strtokens_line&) = default;

    int splitStr(const str& text) override;
    int splitStr(str& text) override;
};

} // namespace vcore
