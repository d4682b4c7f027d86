/// @file
/// Splitting text into tokens.
#pragma once

#include "marvo/core/str.h"
#include "marvo/core/strtoken.h"

#include <memory>

namespace vcore {

/// A growable array of views into one text, filled by the splitting rule of a subclass. The tokens dangle
/// when the text is changed or freed; they are numbered from 0 on.
class MARVO_API strtokens {
public:
    /// No tokens.
    strtokens();
    /// The tokens of `text`, as `splitStr` of this class makes them.
    strtokens(const str& text);
    /// A copy of the views; both lists then view the same text.
    strtokens(const strtokens& source);
    /// Takes over a copy of the views.
    strtokens& operator=(const strtokens& source);
    virtual ~strtokens() = default;

    /// Replaces the tokens by those of `text` and returns their number. The base class has no separators: the
    /// whole of a text that is not empty is one token.
    virtual int splitStr(const str& text);
    /// As above; for rules that have to edit the text.
    virtual int splitStr(str& text);

    /// Appends an empty token and returns it; it stays where it is until the next one is appended.
    strtoken& newToken();
    /// Removes the last token and returns it; an empty token when there is none.
    strtoken takeLast();
    /// Removes every token.
    void clearAll();
    /// Number of tokens.
    int count() const { return count_; }
    /// The token at `index`; an empty one when there is no such token.
    strtoken operator[](int index) const;

protected:
    /// Makes room for a token at `index` by multiplying the capacity by 4; nothing happens for a negative
    /// one. Tokens that move are set anew, so capped at their text's end.
    void _checkIndex(int index);
    /// Appends a token for a piece of text; none for an empty piece.
    void addWord(const wchar_t* start, unsigned long length);
    /// The token at `index`, which must exist.
    strtoken& tokenAt(int index) { return tokens_[index]; }
    /// Replaces the tokens by the pieces of `text` between the members of `separators`. Empty pieces are
    /// tokens only with `keepEmpty`, an empty piece at the end only with `keepLast`. Returns the number of
    /// tokens.
    int splitText(const str& text, const wchar_t* separators, bool keepEmpty, bool keepLast);

private:
    std::unique_ptr<strtoken[]> tokens_;
    int count_ = 0;
    int capacity_;
};

} // namespace vcore
