/// @file
/// Splitting a text at separators of the caller's choice.
#pragma once

#include "marvo/core/strtokens.h"

namespace vcore {

/// The pieces of a text between the members of a set of separators. Every piece is a token, also an empty one
/// at the end, so that n separators make n + 1 tokens.
class MARVO_API strtokens_var : public strtokens {
public:
    /// No separators yet: a text is one token.
    strtokens_var() = default;
    /// The text as one token, as long as no separators are set.
    strtokens_var(const str& text) { splitStr(text); }
    /// No tokens yet; `separators` are kept for `splitStr`.
    strtokens_var(const wchar_t* separators) { separators_ = separators; }
    /// A copy of the views.
    strtokens_var(const strtokens_var&) = default;
    /// Takes over a copy of the views.
    strtokens_var& operator=(const strtokens_var&) = default;

    /// Replaces the set of separators; tokens already made stay.
    void setSep(const wchar_t* separators) { separators_ = separators; }

    int splitStr(const str& text) override;
    int splitStr(str& text) override;

private:
    str separators_;
};

} // namespace vcore
