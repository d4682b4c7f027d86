// Numbers and arithmetic: the members of str that turn text into values and back.
#include "marvo/core/str.h"

#include "marvo/core/number_text.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <cwchar>
#include <cwctype>
#include <iterator>
#include <string>

namespace vcore {

namespace {

bool isDigit(wchar_t c) {
    return c >= L'0' && c <= L'9';
}

int hexDigit(wchar_t c) {
    if (isDigit(c)) {
        return c - L'0';
    }
    const wchar_t small = c | 0x20;
    return small >= L'a' && small <= L'f' ? small - L'a' + 10 : -1;
}

/// Reads the hexadecimal digits at `text`; `end` receives the place behind them.
double readHexadecimal(const wchar_t* text, const wchar_t*& end) {
    double value = 0;
    for (end = text; hexDigit(*end) >= 0; ++end) {
        value = value * 16 + hexDigit(*end);
    }
    return value;
}

/// The place behind the unsigned decimal number at `text`.
const wchar_t* skipDecimal(const wchar_t* text) {
    while (isDigit(*text)) {
        ++text;
    }
    if (*text == L'.') {
        ++text;
    }
    while (isDigit(*text)) {
        ++text;
    }
    if ((*text | 0x20) != L'e') {
        return text;
    }
    const wchar_t* exponent = text + 1;
    if (*exponent == L'+' || *exponent == L'-') {
        ++exponent;
    }
    if (!isDigit(*exponent)) {
        return text;
    }
    while (isDigit(*exponent)) {
        ++exponent;
    }
    return exponent;
}

/// Reads the unsigned decimal number at `text`; `end` receives the place behind it. Does not depend on the
/// host's locale, as the C library's functions do.
double readDecimal(const wchar_t* text, const wchar_t*& end) {
    end = skipDecimal(text);
    std::string digits;
    std::transform(text, end, std::back_inserter(digits), [](wchar_t c) { return static_cast<char>(c); });
    double value = 0;
    const auto result = std::from_chars(digits.data(), digits.data() + digits.size(), value);
    return result.ec == std::errc::result_out_of_range ? std::strtod(digits.c_str(), nullptr) : value;
}

/// Reads the number at the beginning of `text`; `end` receives the place behind it, `text` when there is
/// none.
double readNumber(const wchar_t* text, const wchar_t*& end) {
    const wchar_t* p = text;
    while (std::iswspace(*p)) {
        ++p;
    }
    const bool negative = *p == L'-';
    if (*p == L'-' || *p == L'+') {
        ++p;
    }
    double value = 0;
    if (p[0] == L'0' && (p[1] | 0x20) == L'x' && hexDigit(p[2]) >= 0) {
        value = readHexadecimal(p + 2, end);
    } else if (isDigit(*p) || (*p == L'.' && isDigit(p[1]))) {
        value = readDecimal(p, end);
    } else {
        end = text;
        return 0;
    }
    return negative ? -value : value;
}

bool hasDigit(const wchar_t* text) {
    while (*text && !isDigit(*text)) {
        ++text;
    }
    return *text != 0;
}

/// The accumulator after one step of an expression. `second` tells whether "=" follows the operator.
double applyOperator(wchar_t sign, bool second, double a, double b) {
    switch (sign) {
    case L'+':
        return a + b;
    case L'-':
        return a - b;
    case L'*':
        return a * b;
    case L'/':
        return b != 0 ? a / b : a;
    case L'<':
        return (second ? a <= b : a < b) ? 1.0 : 0.0;
    case L'>':
        return (second ? a >= b : a > b) ? 1.0 : 0.0;
    case L'=':
        return second ? (a == b ? 1.0 : 0.0) : b;
    case L'!':
        return second ? (a != b ? 1.0 : 0.0) : b;
    default:
        return a;
    }
}

} // namespace

long str::toLong(wchar_t** end) const {
    if (end) {
        *end = oleStr();
    }
    return isNullObject(this) ? 0 : std::wcstol(wide_, end, 10);
}

long long str::toInt64(wchar_t** end) const {
    if (end) {
        *end = oleStr();
    }
    return isNullObject(this) ? 0 : std::wcstoll(wide_, end, 10);
}

double str::toDouble(wchar_t** end) const {
    const wchar_t* stop = oleStr();
    const double value = isNullObject(this) ? 0 : readNumber(wide_, stop);
    if (end) {
        *end = const_cast<wchar_t*>(stop);
    }
    return value;
}

str str::toStr(int value) {
    str text;
    text.sprintf(L"%d", value);
    return text;
}

str str::toStr(double value, int decimals) {
    constexpr int digits = 12;
    const std::string fixed = fixedText(value, digits);
    str text;
    text.setStr(fixed.data(), static_cast<unsigned long>(fixed.size()));
    if (!std::isfinite(value)) {
        return text;
    }
    int left = digits;
    while (left > decimals && left > 0 && text.wide_[text.length_ - 1] == L'0') {
        text.wideChanged(text.length_ - 1);
        --left;
    }
    if (left == 0) {
        text.wideChanged(text.length_ - 1);
    }
    return text;
}

double str::calculate() const {
    str copy;
    copy.Append(*this);
    for (unsigned long i = 0; i < copy.length_; ++i) {
        if (copy.wide_[i] == L',') {
            copy.wide_[i] = L'.';
        }
    }
    copy.lower().trimStr(L" \t\r\n()[]{}");

    const wchar_t* rest = copy.wide_;
    double value = readNumber(copy.wide_, rest);
    while (*rest && hasDigit(rest + 1)) {
        const wchar_t* operand = rest + 1;
        while (!std::wcschr(L"0123456789abcdefx.", *operand)) {
            ++operand;
        }
        const wchar_t* end = operand;
        const double number = readNumber(operand, end);
        if (end == operand) {
            break;
        }
        value = applyOperator(rest[0], rest[1] == L'=', value, number);
        rest = end;
    }
    return value;
}

} // namespace vcore
