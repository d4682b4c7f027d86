/// @file
/// The string of the library: wide text with a narrow copy made on demand.
#pragma once

#include "marvo/core/platform.h"
#include "marvo/core/strtoken.h"

#include <climits>
#include <cstddef>
#include <ctime>

// Windows' and DirectShow's headers may have made a macro of this name, which the class publishes: it is put
// back behind the class.
#pragma push_macro("sprintf")
#undef sprintf

namespace vcore {

/// Zero-terminated text of 16-bit characters that keeps a narrow copy (8 bits, current ANSI code page) of
/// itself, refreshed when it is asked for, so that one object serves wide interfaces and narrow ones.
///
/// A growable string doubles its capacity as needed; one that is not truncates silently. Arguments may point
/// into the string itself. Null pointers count as empty text. Positions are character indices; -1 means not
/// found. A zero can stand inside the text (through `fill`, `updateWStr` or a decoder): assignment, `Append`,
/// the codecs and every member that changes the text in place (`trimStr`, `tok`, `remove`...) keep it and
/// what follows, while members that take a pointer, comparisons, numbers and views (`left`, `right`, `mid`)
/// see the text up to the first zero.
///
/// A first capacity of 65536 characters and more is a programming error and stops the process: text of any
/// length, as it comes from outside, is assigned and not given to a constructor. A text has at most 2^31 - 1
/// characters; growing beyond that, and beyond the memory there is, throws `std::bad_alloc` like any `new`
/// (only `allocBuffer` asks first). Not thread-safe, not even for reading: `getStr` may allocate and convert.
class MARVO_API str {
public:
    /// The bits of the `flags` of a constructor.
    enum flagBits : int {
        narrowStale = 1,                      ///< the wide text changed since the narrow copy was made
        growable = 2,                         ///< the buffer may be reallocated; else the capacity is fixed
        keepNarrow = 4,                       ///< the narrow copy is allocated at construction
        defaultFlags = growable | narrowStale ///< what a text begins with
    };

    /// Stands for "up to the end of the text" where a count is asked for.
    static constexpr unsigned long toEnd = ULONG_MAX;

    /// An empty growable string of capacity 64.
    str() : str(0ul) {}

    /// A copy with the source's capacity and flags; only the wide text is copied. A source at an address
    /// below 1024 is no string at all (a null object, or a member of one): the result is empty, growable,
    /// with capacity 64 and a narrow copy.
    str(const str& source);

    /// A copy of `s`. The capacity is the larger of its length + 1 and `size`, or 8 when `s` is null.
    str(const wchar_t* s, unsigned long size = 0, int flags = defaultFlags);

    /// Each byte of `s` widened on its own, and the bytes themselves as the narrow copy. Capacity as above.
    str(const char* s, unsigned long size = 0, int flags = defaultFlags);

    /// An empty string with room for `size` characters, terminator included (64 when `size` is 0).
    explicit str(unsigned long size, int flags = defaultFlags);

    /// The registry form of a GUID, braces included, in a string of fixed capacity 256.
    explicit str(const GUID& guid);

    /// A growable copy of the token's characters.
    str(const strtoken& token);

    virtual ~str();

    /// Bytes held by the buffers: twice the capacity, three times with a narrow copy.
    virtual unsigned long memSize() const;

    /// Length in characters, without the terminator; 0 on a null object.
    unsigned long len() const;
    /// Same as `len`.
    unsigned long GetLength() const;
    /// Capacity in characters, terminator included; 0 on a null object.
    unsigned long bufferSize() const;

    /// The narrow text: converted to the ANSI code page if the wide text changed since the last call, with
    /// "?" for a character that the code page lacks, and cut at `len()` bytes. Owned by the string; the
    /// buffer holds `bufferSize()` bytes and may be written to, followed by `updateStr`. Empty text on a null
    /// object.
    char* getStr() const;
    /// Same as `getStr`.
    const char* getS() const;
    /// The wide buffer, `bufferSize()` characters; writing to it is to be followed by `updateWStr`.
    /// Null on a null object.
    wchar_t* oleStr() const;
    /// Copies the text with its terminator to `out`, which must have room for `len()` + 1 characters.
    void copyTo(wchar_t* out) const;
    /// Copies the narrow text with its terminator to `out`.
    void copyTo(char* out) const;
    /// Writes a count byte (the length, at most 255) and that many bytes of narrow text to `out`, and a
    /// terminating zero if the count is below 255. `out` must have room for 256 bytes.
    void toPascal(char* out) const;

    /// @{
    /// Takes over a copy of the text; a narrow one byte by byte, as `setStr` does.
    str& operator=(const str& source);
    str& operator=(const char* s);
    str& operator=(const wchar_t* s);
    str& operator=(const strtoken& token);
    /// @}
    /// @{
    /// Adds text, a character or a token at the end; a zero character adds nothing.
    str& operator+=(const wchar_t* s) { return append(s); }
    str& operator+=(wchar_t c) { return appendChar(c); }
    str& operator+=(char c) { return appendChar(static_cast<unsigned char>(c)); }
    str& operator+=(const strtoken& token) { return append(token.start(), token.len()); }
    /// @}
    /// A new growable string: this text followed by `s`.
    str operator+(const wchar_t* s) const;

    /// Takes over at most `n` bytes of `s`, each widened on its own; an existing narrow copy is filled with
    /// them.
    str& setStr(const char* s, unsigned long n = toEnd);
    /// Takes over at most `n` characters of `s`.
    str& setWStr(const wchar_t* s, unsigned long n = toEnd);
    /// Takes over at most `n` characters of text in network (big-endian) byte order, up to the first zero.
    str& setWStrNet(const wchar_t* s, unsigned long n);
    /// Adds at most `n` characters of `s` at the end.
    str& append(const wchar_t* s, unsigned long n = toEnd);
    /// Adds the text of another string (or of this one) at the end.
    str& Append(const str& s) { return appendWide(s.oleStr(), s.len()); }
    /// Adds one character; a zero adds nothing.
    str& appendChar(wchar_t c) {
        if (c == 0 || capacity_ - length_ <= 2) {
            return append(&c, 1);
        }
        wide_[length_] = c;
        wideChanged(length_ + 1);
        return *this;
    }
    /// Adds the text of a Pascal string (a count byte, then that many bytes), each byte widened on its own.
    str& appendPascal(const char* counted);
    /// Inserts at most `n` characters of `s` in front of position `pos`, or at the end when `pos` is beyond
    /// it.
    str& insert(unsigned long pos, const wchar_t* s, unsigned long n = toEnd);
    /// Removes `n` characters from `pos` on. The part of the range that lies before the text removes nothing.
    str& remove(int pos, unsigned long n);
    /// Removes everything up to the end of the first occurrence of `s`. False, and nothing removed, when
    /// there is none.
    bool removeTo(const wchar_t* s);
    /// Replaces the text by `n` times the character `c`.
    str& fill(wchar_t c, unsigned long n);
    /// Empties the string; the buffers stay.
    void Clear();
    /// Makes a growable string's capacity at least `size` characters, terminator included; with `discard` the
    /// text is given up. False when a fixed capacity is too small or there is no memory for so much.
    bool allocBuffer(unsigned long size, bool discard = false);
    /// Frees the narrow copy and every character of the wide buffer beyond the terminator.
    void compact();
    /// To be called after writing into the narrow buffer: takes over `n` bytes, or up to its zero when `n` is
    /// 0. A length that does not fit the capacity stops the process.
    void updateStr(unsigned long n);
    /// To be called after writing into the wide buffer: the length becomes that of the text up to its zero,
    /// or `n` if that is larger. A length that does not fit the capacity stops the process.
    void updateWStr(unsigned long n = 0);
    /// `updateStr` up to the narrow text's zero.
    void updateT() { updateStr(0); }

    /// First occurrence of `s` at or after `from`; -1 for a null `s` or a `from` beyond the text.
    int findStr(const wchar_t* s, unsigned long from = 0) const;
    /// First `c` at or after `from`.
    int findChar(wchar_t c, unsigned long from = 0) const;
    /// First character at or after `from` that is a member of `set`.
    int findChar(const wchar_t* set, unsigned long from = 0) const;
    /// Last `c` at or before `from`.
    int findRChar(wchar_t c, unsigned long from = toEnd) const;
    /// Last character at or before `from` that is a member of `set`.
    int findRChar(const wchar_t* set, unsigned long from = toEnd) const;
    /// Number of `c` at or after `from`.
    unsigned long countChar(wchar_t c, unsigned long from = 0) const;
    /// Whether the last character is a member of `set`.
    bool checkCharAtEnd(const wchar_t* set) const;
    /// Whether the text begins with `s`, case-sensitively; false for a null `s`.
    bool startsWith(const wchar_t* s) const;
    /// Whether the text ends with `s`, case-sensitively; false for a null `s`.
    bool endsWith(const wchar_t* s) const;

    /// Below, at or above 0 as this text sorts before, with or after `s`. A null `s` sorts before any text.
    int compare(const wchar_t* s) const;
    /// `compare` without regard to letter case.
    int compareI(const wchar_t* s) const;
    /// `compare` of the first `n` characters.
    int compare(const wchar_t* s, unsigned long n) const;
    /// `compareI` of the first `n` characters.
    int compareI(const wchar_t* s, unsigned long n) const;
    /// As the members; when either side is null the result is the difference of the pointers, so that null
    /// sorts before any text and equals null.
    static int compare(const wchar_t* a, const wchar_t* b);
    /// `compare` without regard to letter case.
    static int compareI(const wchar_t* a, const wchar_t* b);
    /// Whether two texts are the same, with or without regard to letter case.
    static bool equal(const wchar_t* a, const wchar_t* b, bool caseSensitive);
    /// Whether the text is `s`; never on a null object.
    bool equal(const wchar_t* s, bool caseSensitive) const;
    /// Same as `compare`.
    int CompareTo(const str& s) const { return compare(s.oleStr()); }

    /// @{
    /// Compares as `compare` does, case-sensitively.
    bool operator==(const str& s) const { return compare(s.oleStr()) == 0; }
    bool operator==(const wchar_t* s) const { return compare(s) == 0; }
    bool operator==(const strtoken& token) const { return token.compare(oleStr()) == 0; }
    bool operator!=(const str& s) const { return !(*this == s); }
    bool operator!=(const wchar_t* s) const { return !(*this == s); }
    bool operator!=(const strtoken& token) const { return !(*this == token); }
    bool operator>(const wchar_t* s) const { return compare(s) > 0; }
    bool operator>=(const wchar_t* s) const { return compare(s) >= 0; }
    bool operator<(const wchar_t* s) const { return compare(s) < 0; }
    bool operator<=(const wchar_t* s) const { return compare(s) <= 0; }
    /// @}

    /// How similar two texts are, without regard to letter case: from 0 for texts that share nothing to 1 for
    /// equal ones, and only for those. It is the part of the pairs of neighbouring characters that both texts
    /// share: twice the number of shared pairs (a pair that occurs several times counts as often as in the
    /// text with fewer of it) divided by the number of pairs of both; the beginning and the end of a text
    /// count as neighbours, too. Symmetric. A null `s` is an empty text.
    float match(const wchar_t* s) const;
    /// Whether the whole text fits the pattern, without regard to letter case, as file names do: "*" stands
    /// for any characters or none, "?" for exactly one, everything else for itself; nothing takes the meaning
    /// from "*" and "?". The time is proportional to the length of text and pattern, however many stars there
    /// are; only a piece between two stars that holds a "?" may cost its own length for every character of
    /// the text.
    bool matchWildcard(const str& pattern) const;

    /// Turns every letter into its small form.
    str& lower();
    /// Turns every letter into its capital form.
    str& upper();
    /// Removes every leading and trailing character that is a member of `set`.
    str& trimStr(const wchar_t* set = L" \t\r\n");
    /// Removes every character that is a member of `set`.
    str& cleanStr(const wchar_t* set);
    /// Replaces every character that is a member of `set` (with `others`, every one that is not) by
    /// `replacement`, or removes it when that is zero. Of neighbours so replaced, only the first `longestRun`
    /// are kept; all when that is 0 or below. So `cleanStr(L" \t", L' ', 1, false)` makes single blanks of
    /// all gaps.
    str& cleanStr(const wchar_t* set, wchar_t replacement, int longestRun, bool others);
    /// Takes over narrow text in the given code page (the system's ANSI one by default), unlike `setStr` by
    /// characters and not by bytes. What is not valid there is replaced as the system does; in a code page
    /// that the system does not have, "?" stands for everything that is not ASCII.
    str& locale(const char* s, int codePage = CP_ACP);
    /// Takes over the text as far as the code page can express it: what it cannot becomes "?", or the nearest
    /// letter that the system knows, and in an unknown code page everything that is not ASCII becomes "?".
    str& locale(const wchar_t* s, int codePage = CP_ACP);

    /// View of the first `n` characters.
    strtoken left(unsigned long n) const;
    /// View of the last `n` characters.
    strtoken right(unsigned long n) const;
    /// View of `n` characters from `pos` on; the part of the range that lies outside the text is dropped.
    strtoken mid(int pos, unsigned long n = toEnd) const;
    /// Takes the text before the first `separator` out of the string, together with the separator, and
    /// returns it; the whole text when there is no separator.
    str tok(wchar_t separator);

    /// The decimal number that the text begins with (blanks before it are skipped), limited to the range of
    /// the result; 0 when there is none. `end`, when given, is set to the place in the buffer where the
    /// number stops, which is the beginning of the text when there is none.
    long toLong(wchar_t** end = nullptr) const;
    /// As `toLong`, with 64 bits.
    long long toInt64(wchar_t** end = nullptr) const;
    /// As `toLong`, for a number with a decimal point and an exponent, or a hexadecimal integer after "0x".
    double toDouble(wchar_t** end = nullptr) const;
    /// The number in decimal.
    static str toStr(int value);
    /// The number with up to 12 fraction digits: trailing zeros beyond `decimals` digits are dropped, and the
    /// point with them if no digit is left after it.
    static str toStr(double value, int decimals);
    /// Replaces the text by the formatted one; "%s" and "%c" stand for wide text. The arguments may be taken
    /// from this string. Where a header has made a macro of the name (strsafe.h, which dshow.h includes
    /// unless NO_DSHOW_STRSAFE is defined before it), a call needs an `#undef sprintf` in front.
    str& sprintf(const wchar_t* format, ...);
    /// As `sprintf`, with the arguments as a `va_list`; with `add` the formatted text is added at the end.
    str& sprintfArgs(const str& format, void* args, bool add);
    /// Replaces the text by the number as `format` writes it, which must hold exactly one printf conversion,
    /// fit for an int ("%d", "%05i", "<%x>"), and no width or precision of more than three digits. With any
    /// other format, and with a null one, the number is written in decimal.
    str& Format(int value, const wchar_t* format = nullptr);
    /// Replaces the text by the time as `format` writes it, with the conversions of `wcsftime` in the host's
    /// C locale (those of C89, and %D %F %R %T %h %n %t); unknown ones stay as they are. Fields outside of
    /// their range are limited to it, so a leap second is written as 59. A null `format` or `when` empties
    /// the string.
    str& time(const wchar_t* format, const std::tm* when);
    /// The value of the text as an arithmetic expression: numbers with point or comma, and the operators
    /// + - * / < <= > >= == !=, applied strictly from left to right without precedence (2+3*4 is 20).
    /// Deliberately forgiving: brackets at the ends are dropped, a sign in front of a right operand is
    /// ignored, division by zero leaves the left value, "=" or "!" alone takes the operand, and an unknown
    /// operator (a blank, too) ignores its operand. 0 for text that begins with no number.
    double calculate() const;

    // The codecs below take "bytes" from a text whose characters are bytes widened on their own, as `setStr`
    // makes it. The source may be the string itself.

    /// Takes over the UTF-8 form of the source, each byte as one character; the narrow copy holds the same
    /// bytes. Half of a surrogate pair becomes U+FFFD. A null source empties the string, as for the other
    /// codecs.
    str& encodeUTF8(const str* source);
    /// Takes over the text of which the source holds the UTF-8 bytes. Each longest piece that is not valid
    /// (overlong forms, surrogates, values beyond U+10FFFF, cut sequences, characters that are no bytes)
    /// becomes one U+FFFD.
    str& decodeUTF8(const str* source);
    /// Takes over the Base64 form of the source's bytes, in the standard alphabet, padded with "=", without
    /// line ends. A character of the source that is no byte counts as "?".
    str& encodeBase64(const str* source);
    /// Replaces every character of the text by three of the alphabet: its code as a number of three digits,
    /// the most significant first, whose base is the number of characters in the alphabet and whose digits
    /// are these, in order. Null stands for A to Z, a to z, 0 to 9, "-" and "_". False, and the text
    /// unchanged, when the alphabet has fewer than 41 characters (which do not suffice for every code) or one
    /// twice.
    bool u4code(const char* alphabet = nullptr);
    /// The inverse of `u4code`. A number that is no character's code becomes U+FFFD. False, and the text
    /// unchanged, when the alphabet does not suffice or `isU4Codec` is false for it.
    bool u4decode(const char* alphabet = nullptr);
    /// Whether the text can come from `u4code`: its length is a multiple of three and every character is a
    /// member of the alphabet. True for an empty text. Each byte of an alphabet is a character.
    bool isU4Codec(const char* alphabet = nullptr) const;
    /// Takes over narrow text with escapes: `\\ \a \b \e` (27) `\f \n \r \t \v`; `\xHH` and `\uHHHH`, the
    /// character of that hexadecimal code; a backslash in front of any other character is dropped, at the end
    /// of the text, too. Deliberately as callers know it: `\u` sets four digits and `\x` the last two of the
    /// same four, which begin as 0000, so that after `\u` the first two stay for a later `\x`; digits count
    /// up to the first that is not hexadecimal; `\0` skips three characters and stands for the present four
    /// digits; `\c` drops the character behind it. A sequence that the text's end cuts, and a code of zero,
    /// add nothing.
    str& setRegExpression(const char* s);
    /// Always empty: the escapes of `setRegExpression` are not kept.
    str getRegExpression() const { return str(); }
    /// The MD5 digest (RFC 1321) of `n` bytes as 32 small hexadecimal digits; null data counts as no bytes.
    static str md5(const unsigned char* data, unsigned long n);

private:
    void _init(unsigned long size, unsigned long minSize, int flags);
    void allocate(unsigned long capacity, int flags);
    unsigned long _checkLen(unsigned long needed, bool discard);
    unsigned long lengthWith(std::size_t more) const;
    bool reallocate(unsigned long long capacity, bool discard);
    void wideChanged(unsigned long length) {
        length_ = length;
        wide_[length] = 0;
        flags_ |= narrowStale;
    }
    str& setBytes(const char* s, std::size_t n);
    str& setWide(const wchar_t* s, std::size_t n);
    str& appendWide(const wchar_t* s, std::size_t n);
    bool owns(const wchar_t* s) const { return s >= wide_ && s < wide_ + capacity_; }

    wchar_t* wide_ = nullptr;
    mutable char* narrow_ = nullptr;
    unsigned long capacity_ = 0;
    unsigned long length_ = 0;
    mutable int flags_ = 0;
};

} // namespace vcore

#pragma pop_macro("sprintf")
