/// @file
/// Splitting a command line into its words.
#pragma once

#include "marvo/core/strtokens.h"

namespace vcore {

/// The words of a command line: pieces between separators (blanks, tabs and line ends unless others are
/// given), none of them empty, in which a separator between double quotes is an ordinary character.
///
/// A quote opens a quoted string wherever it stands, and the next one closes it; neither begins or ends a
/// word by itself, so ab"c d"e is the one word "abc de". A quote that is not closed reaches to the end of the
/// text. Pairs with nothing between them make no word. A backslash is an ordinary character, in front of a
/// quote, too: a path in quotes may end with one, and a word cannot hold a quote.
class MARVO_API strtokens_cpp : public strtokens {
public:
    strtokens_cpp() = default;
    /// The tokens of `text`, as `splitStr(const str&)` makes them.
    strtokens_cpp(const str& text) { splitStr(text); }
    /// The tokens of `text`, which loses its quotes.
    strtokens_cpp(str& text) { splitStr(text); }
    /// No tokens yet; `separators` are kept for `splitStr`. Null means none at all, and a quote is never a
    /// separator.
    strtokens_cpp(const wchar_t* separators) { separators_ = separators; }
    /// A copy of the views.
    strtokens_cpp(const strtokens_cpp&) = default;
    /// Takes over a copy of the views.
    strtokens_cpp& operator=(const strtokens_cpp&) = default;

    /// The words of a text that must stay as it is: a token then keeps its quotes, but for a pair that
    /// encloses it.
    int splitStr(const str& text) override;
    /// Takes the quotes out of the text, so that the tokens view the bare words.
    int splitStr(str& text) override;

private:
    bool separates(wchar_t c) const;

    str separators_{L" \t\n\r"};
};

} // namespace vcore
