/// @file
/// Splitting a text into its lines.
#pragma once

#include "marvo/core/strtokens.h"

namespace vcore {

/// The lines of a text, without the line feed and without a carriage return in front of it. Empty lines are
/// kept; nothing follows a line feed at the end.
class MARVO_API strtokens_lines : public strtokens {
public:
    strtokens_lines() = default;
    /// The tokens of `text`.
    strtokens_lines(const str& text) { splitStr(text); }
    /// A copy of the views.
    strtokens_lines(const strtokens_lines&) = default;
    /// Takes over a copy of the views.
    strtokens_lines& operator=(const strtokens_lines&) = default;

    int splitStr(const str& text) override;
    int splitStr(str& text) override;
};

} // namespace vcore
