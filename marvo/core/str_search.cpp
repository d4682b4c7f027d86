// Searching, comparing and taking apart: the members of str that look at the text.
#include "marvo/core/small_letter.h"
#include "marvo/core/str.h"

#include <algorithm>
#include <cwchar>
#include <string>
#include <string_view>

namespace vcore {

namespace {

bool isMember(const wchar_t* set, wchar_t c) {
    return c != 0 && std::wcschr(set, c) != nullptr;
}

/// Compares up to `n` characters of two texts without regard to letter case.
int compareSmall(const wchar_t* a, const wchar_t* b, unsigned long n) {
    for (; n > 0; --n, ++a, ++b) {
        const int difference = smallLetter(*a) - smallLetter(*b);
        if (difference != 0 || *a == 0) {
            return difference;
        }
    }
    return 0;
}

/// Result of a comparison in which a side is null: the difference of the addresses, as far as an int holds
/// it.
int compareAddresses(const wchar_t* a, const wchar_t* b) {
    const auto size = static_cast<long long>(sizeof(wchar_t));
    const long long difference = static_cast<long long>(reinterpret_cast<std::uintptr_t>(a)) / size -
                                 static_cast<long long>(reinterpret_cast<std::uintptr_t>(b)) / size;
    return static_cast<int>(std::clamp<long long>(difference, INT_MIN, INT_MAX));
}

} // namespace

int str::findStr(const wchar_t* s, unsigned long from) const {
    if (!s || from > len() || isNullObject(this)) {
        return -1;
    }
    const std::size_t pos = std::wstring_view(wide_, length_).find(s, from);
    return pos == std::wstring_view::npos ? -1 : static_cast<int>(pos);
}

int str::findChar(wchar_t c, unsigned long from) const {
    const wchar_t set[] = {c, 0};
    return findChar(set, from);
}

int str::findChar(const wchar_t* set, unsigned long from) const {
    if (set) {
        for (unsigned long i = from, end = len(); i < end; ++i) {
            if (isMember(set, wide_[i])) {
                return static_cast<int>(i);
            }
        }
    }
    return -1;
}

int str::findRChar(wchar_t c, unsigned long from) const {
    const wchar_t set[] = {c, 0};
    return findRChar(set, from);
}

int str::findRChar(const wchar_t* set, unsigned long from) const {
    if (set) {
        for (unsigned long i = from < len() ? from + 1 : len(); i > 0; --i) {
            if (isMember(set, wide_[i - 1])) {
                return static_cast<int>(i - 1);
            }
        }
    }
    return -1;
}

unsigned long str::countChar(wchar_t c, unsigned long from) const {
    return from < len() ? static_cast<unsigned long>(std::count(wide_ + from, wide_ + length_, c)) : 0;
}

bool str::checkCharAtEnd(const wchar_t* set) const {
    return set && len() > 0 && isMember(set, wide_[length_ - 1]);
}

bool str::startsWith(const wchar_t* s) const {
    return s && !isNullObject(this) && std::wcsncmp(wide_, s, std::wcslen(s)) == 0;
}

bool str::endsWith(const wchar_t* s) const {
    if (!s || isNullObject(this)) {
        return false;
    }
    const std::size_t n = std::wcslen(s);
    return n <= length_ && std::wmemcmp(wide_ + length_ - n, s, n) == 0;
}

int str::compare(const wchar_t* s, unsigned long n) const {
    const wchar_t* text = oleStr();
    return text && s ? std::wcsncmp(text, s, n) : compareAddresses(text, s);
}

int str::compareI(const wchar_t* s, unsigned long n) const {
    const wchar_t* text = oleStr();
    return text && s ? compareSmall(text, s, n) : compareAddresses(text, s);
}

int str::compare(const wchar_t* s) const {
    return compare(oleStr(), s);
}

int str::compareI(const wchar_t* s) const {
    return compareI(oleStr(), s);
}

int str::compare(const wchar_t* a, const wchar_t* b) {
    return a && b ? std::wcscmp(a, b) : compareAddresses(a, b);
}

int str::compareI(const wchar_t* a, const wchar_t* b) {
    return a && b ? compareSmall(a, b, toEnd) : compareAddresses(a, b);
}

bool str::equal(const wchar_t* a, const wchar_t* b, bool caseSensitive) {
    return (caseSensitive ? compare(a, b) : compareI(a, b)) == 0;
}

bool str::equal(const wchar_t* s, bool caseSensitive) const {
    return !isNullObject(this) && equal(wide_, s, caseSensitive);
}

str& str::trimStr(const wchar_t* set) {
    if (!set) {
        return *this;
    }
    unsigned long end = length_;
    while (end > 0 && isMember(set, wide_[end - 1])) {
        --end;
    }
    unsigned long begin = 0;
    while (begin < end && isMember(set, wide_[begin])) {
        ++begin;
    }
    return setWide(wide_ + begin, end - begin);
}

str& str::cleanStr(const wchar_t* set) {
    return cleanStr(set, 0, 0, false);
}

str& str::cleanStr(const wchar_t* set, wchar_t replacement, int longestRun, bool others) {
    if (!set) {
        return *this;
    }
    std::wstring clean;
    clean.reserve(length_);
    int run = 0;
    for (const wchar_t c : std::wstring_view(wide_, length_)) {
        if (isMember(set, c) == others) {
            clean += c;
            run = 0;
        } else if (replacement != 0 && (longestRun <= 0 || run < longestRun)) {
            clean += replacement;
            ++run;
        }
    }
    return setWide(clean.data(), clean.size());
}

strtoken str::left(unsigned long n) const {
    return strtoken(oleStr(), std::min(n, len()));
}

strtoken str::right(unsigned long n) const {
    n = std::min(n, len());
    return isNullObject(this) ? strtoken() : strtoken(wide_ + length_ - n, n);
}

strtoken str::mid(int pos, unsigned long n) const {
    if (isNullObject(this)) {
        return strtoken();
    }
    if (pos < 0) {
        const unsigned long overhang = 0ul - static_cast<unsigned long>(pos);
        n = n > overhang ? n - overhang : 0;
        pos = 0;
    }
    const unsigned long from = std::min(static_cast<unsigned long>(pos), length_);
    return strtoken(wide_ + from, std::min(n, length_ - from));
}

str str::tok(wchar_t separator) {
    const int pos = findChar(separator);
    str head;
    if (pos < 0) {
        head = *this;
        Clear();
    } else {
        head.setWide(wide_, static_cast<unsigned long>(pos));
        remove(0, static_cast<unsigned long>(pos) + 1);
    }
    return head;
}

} // namespace vcore
