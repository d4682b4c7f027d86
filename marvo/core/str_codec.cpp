// Codecs: the members of str that turn text into another form and back.
#include "marvo/core/md5.h"
#include "marvo/core/str.h"

#include <array>
#include <cstring>
#include <string>
#include <string_view>

namespace vcore {

namespace {

constexpr wchar_t replacement = 0xFFFD;

bool isHighSurrogate(wchar_t c) {
    return c >= 0xD800 && c <= 0xDBFF;
}

bool isLowSurrogate(wchar_t c) {
    return c >= 0xDC00 && c <= 0xDFFF;
}

std::wstring_view view(const str* text) {
    return text && text->len() ? std::wstring_view(text->oleStr(), text->len()) : std::wstring_view();
}

/// Takes the next code point off the text.
std::uint32_t takeCodePoint(std::wstring_view& text) {
    const wchar_t c = text[0];
    if (isHighSurrogate(c) && text.size() > 1 && isLowSurrogate(text[1])) {
        const std::uint32_t code = 0x10000 + ((c - 0xD800u) << 10) + (text[1] - 0xDC00u);
        text.remove_prefix(2);
        return code;
    }
    text.remove_prefix(1);
    return isHighSurrogate(c) || isLowSurrogate(c) ? replacement : c;
}

void addUTF8(std::string& out, std::uint32_t code) {
    const auto add = [&out](std::uint32_t byte) { out += static_cast<char>(byte); };
    if (code < 0x80) {
        add(code);
        return;
    }
    if (code < 0x800) {
        add(0xC0 | code >> 6);
    } else {
        if (code < 0x10000) {
            add(0xE0 | code >> 12);
        } else {
            add(0xF0 | code >> 18);
            add(0x80 | (code >> 12 & 0x3F));
        }
        add(0x80 | (code >> 6 & 0x3F));
    }
    add(0x80 | (code & 0x3F));
}

/// Takes the next code point off UTF-8 bytes, or the longest piece that could begin one.
std::uint32_t takeUTF8(std::wstring_view& bytes) {
    const std::uint32_t lead = bytes[0];
    bytes.remove_prefix(1);
    if (lead < 0x80) {
        return lead;
    }
    if (lead < 0xC2 || lead > 0xF4) {
        return replacement;
    }
    const int following = lead < 0xE0 ? 1 : lead < 0xF0 ? 2 : 3;
    std::uint32_t code = lead & (0x3F >> following);
    // The limits of the second byte exclude overlong forms, surrogates and values beyond U+10FFFF.
    wchar_t lowest = lead == 0xE0 ? 0xA0 : lead == 0xF0 ? 0x90 : 0x80;
    wchar_t highest = lead == 0xED ? 0x9F : lead == 0xF4 ? 0x8F : 0xBF;
    for (int i = 0; i < following; ++i) {
        if (bytes.empty() || bytes[0] < lowest || bytes[0] > highest) {
            return replacement;
        }
        code = code << 6 | (bytes[0] & 0x3F);
        bytes.remove_prefix(1);
        lowest = 0x80;
        highest = 0xBF;
    }
    return code;
}

void addUTF16(std::wstring& out, std::uint32_t code) {
    if (code >= 0x10000) {
        out += static_cast<wchar_t>(0xD800 + ((code - 0x10000) >> 10));
        code = 0xDC00 + (code & 0x3FF);
    }
    out += static_cast<wchar_t>(code);
}

/// Converts text of a code page that the system may not have.
std::wstring widenText(const char* s, int n, unsigned int codePage) {
    std::wstring text(MultiByteToWideChar(codePage, 0, s, n, nullptr, 0), 0);
    if (!text.empty()) {
        MultiByteToWideChar(codePage, 0, s, n, text.data(), static_cast<int>(text.size()));
        return text;
    }
    for (int i = 0; i < n; ++i) {
        text += static_cast<unsigned char>(s[i]) < 0x80 ? s[i] : L'?';
    }
    return text;
}

std::string narrowText(const wchar_t* s, int n, unsigned int codePage) {
    std::string bytes(WideCharToMultiByte(codePage, 0, s, n, nullptr, 0, nullptr, nullptr), 0);
    if (!bytes.empty()) {
        WideCharToMultiByte(codePage, 0, s, n, bytes.data(), static_cast<int>(bytes.size()), nullptr,
                            nullptr);
        return bytes;
    }
    for (int i = 0; i < n; ++i) {
        bytes += s[i] < 0x80 ? static_cast<char>(s[i]) : '?';
    }
    return bytes;
}

/// An alphabet whose characters are the digits of numbers.
class Alphabet {
public:
    explicit Alphabet(const char* characters)
        : characters_(characters ? characters
                                 : "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-_") {
        digits_.fill(-1);
        for (std::size_t i = 0; i < characters_.size(); ++i) {
            int& digit = digits_[static_cast<unsigned char>(characters_[i])];
            unique_ = unique_ && digit < 0;
            digit = static_cast<int>(i);
        }
    }

    /// Whether three digits can express every code of 16 bits, in one way.
    bool suffices() const { return unique_ && base() * base() * base() >= 0x10000; }
    unsigned int base() const { return static_cast<unsigned int>(characters_.size()); }
    wchar_t character(unsigned int digit) const { return static_cast<unsigned char>(characters_[digit]); }
    bool contains(wchar_t c) const { return c < digits_.size() && digits_[c] >= 0; }
    unsigned int digit(wchar_t c) const { return static_cast<unsigned int>(digits_[c]); }

private:
    std::string_view characters_;
    std::array<int, 256> digits_;
    bool unique_ = true;
};

/// Reads text with backslash escapes.
class EscapeReader {
public:
    explicit EscapeReader(std::string_view text) : text_(text) {}

    std::wstring read() {
        while (!text_.empty()) {
            const char c = take();
            if (c != '\\') {
                add(c);
            } else if (!text_.empty()) {
                readEscape(take());
            }
        }
        return result_;
    }

private:
    char take() {
        const char c = text_[0];
        text_.remove_prefix(1);
        return c;
    }

    void add(char c) { result_ += static_cast<unsigned char>(c); }

    void readEscape(char c) {
        static constexpr std::string_view letters = "abefnrtv", codes = "\a\b\x1b\f\n\r\t\v";
        const std::size_t letter = letters.find(c);
        if (letter != std::string_view::npos) {
            add(codes[letter]);
        } else if (c == 'c') {
            text_.remove_prefix(text_.empty() ? 0 : 1);
        } else if (c == 'u') {
            readCode(4, digits_);
        } else if (c == 'x') {
            readCode(2, digits_ + 2);
        } else if (c == '0') {
            readCode(3, nullptr);
        } else {
            add(c);
        }
    }

    /// Takes `n` characters, as digits from the given place on if there is one, and adds the digits'
    /// character.
    void readCode(std::size_t n, char* place) {
        if (text_.size() < n) {
            text_ = {};
            return;
        }
        if (place) {
            text_.copy(place, n);
        }
        text_.remove_prefix(n);
        if (const wchar_t code = value()) {
            result_ += code;
        }
    }

    wchar_t value() const {
        unsigned int code = 0;
        for (const char c : digits_) {
            const char small = static_cast<char>(c | 0x20);
            if (c >= '0' && c <= '9') {
                code = code << 4 | (c - '0');
            } else if (small >= 'a' && small <= 'f') {
                code = code << 4 | (small - 'a' + 10);
            } else {
                break;
            }
        }
        return static_cast<wchar_t>(code);
    }

    std::string_view text_;
    char digits_[4] = {'0', '0', '0', '0'};
    std::wstring result_;
};

} // namespace

str& str::encodeUTF8(const str* source) {
    std::string bytes;
    for (std::wstring_view rest = view(source); !rest.empty();) {
        addUTF8(bytes, takeCodePoint(rest));
    }
    Clear();
    getStr();
    return setBytes(bytes.data(), bytes.size());
}

str& str::decodeUTF8(const str* source) {
    std::wstring text;
    for (std::wstring_view rest = view(source); !rest.empty();) {
        addUTF16(text, takeUTF8(rest));
    }
    return setWide(text.data(), text.size());
}

str& str::encodeBase64(const str* source) {
    static constexpr char alphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::wstring text;
    for (std::wstring_view rest = view(source); !rest.empty();) {
        const std::size_t n = rest.size() < 3 ? rest.size() : 3;
        std::uint32_t bits = 0;
        for (std::size_t i = 0; i < 3; ++i) {
            bits = bits << 8 | (i >= n ? 0 : rest[i] < 0x100 ? rest[i] : L'?');
        }
        for (std::size_t i = 0; i < 4; ++i) {
            text += i > n ? L'=' : static_cast<wchar_t>(alphabet[bits >> (18 - 6 * i) & 0x3F]);
        }
        rest.remove_prefix(n);
    }
    return setWide(text.data(), text.size());
}

bool str::u4code(const char* characters) {
    const Alphabet alphabet(characters);
    if (!alphabet.suffices()) {
        return false;
    }
    const unsigned int base = alphabet.base();
    std::wstring text;
    text.reserve(std::size_t{3} * len());
    for (const wchar_t c : view(this)) {
        text += alphabet.character(c / (base * base));
        text += alphabet.character(c / base % base);
        text += alphabet.character(c % base);
    }
    setWide(text.data(), text.size());
    return true;
}

bool str::u4decode(const char* characters) {
    const Alphabet alphabet(characters);
    if (!alphabet.suffices() || !isU4Codec(characters)) {
        return false;
    }
    std::wstring text;
    for (std::wstring_view rest = view(this); !rest.empty(); rest.remove_prefix(3)) {
        const unsigned int code =
            (alphabet.digit(rest[0]) * alphabet.base() + alphabet.digit(rest[1])) * alphabet.base() +
            alphabet.digit(rest[2]);
        text += code > 0xFFFF ? replacement : static_cast<wchar_t>(code);
    }
    setWide(text.data(), text.size());
    return true;
}

bool str::isU4Codec(const char* characters) const {
    const Alphabet alphabet(characters);
    for (const wchar_t c : view(this)) {
        if (!alphabet.contains(c)) {
            return false;
        }
    }
    return len() % 3 == 0;
}

str& str::locale(const char* s, int codePage) {
    const std::wstring text =
        s ? widenText(s, static_cast<int>(std::strlen(s)), static_cast<unsigned int>(codePage))
          : std::wstring();
    return setWStr(text.c_str());
}

str& str::locale(const wchar_t* s, int codePage) {
    const std::string bytes = s ? narrowText(s, static_cast<int>(std::char_traits<wchar_t>::length(s)),
                                             static_cast<unsigned int>(codePage))
                                : std::string();
    return locale(bytes.c_str(), codePage);
}

str& str::setRegExpression(const char* s) {
    const std::wstring text = s ? EscapeReader(s).read() : std::wstring();
    return setWStr(text.c_str());
}

str str::md5(const unsigned char* data, unsigned long n) {
    str text;
    for (const unsigned char byte : md5Digest(data, data ? n : 0)) {
        str digits;
        text.Append(digits.sprintf(L"%02x", byte));
    }
    return text;
}

} // namespace vcore
