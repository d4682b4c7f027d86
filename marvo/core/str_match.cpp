// Likeness: the members of str that compare texts loosely.
#include "marvo/core/str.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

namespace vcore {

namespace {

std::wstring smallLetters(const wchar_t* text, std::size_t n) {
    std::wstring small(text ? text : L"", text ? n : 0);
    CharLowerBuffW(small.data(), static_cast<DWORD>(small.size()));
    return small;
}

std::wstring smallLetters(const str& text) {
    return smallLetters(text.oleStr(), text.len());
}

/// The pairs of neighbouring characters in order, with a zero for what is outside of the text.
std::vector<std::uint32_t> sortedPairs(const std::wstring& text) {
    std::vector<std::uint32_t> pairs;
    pairs.reserve(text.size() + 1);
    std::uint32_t before = 0;
    for (const wchar_t c : text) {
        pairs.push_back(before << 16 | c);
        before = c;
    }
    pairs.push_back(before << 16);
    std::sort(pairs.begin(), pairs.end());
    return pairs;
}

std::size_t countShared(const std::vector<std::uint32_t>& a, const std::vector<std::uint32_t>& b) {
    std::size_t shared = 0;
    for (auto x = a.begin(), y = b.begin(); x != a.end() && y != b.end();) {
        if (*x == *y) {
            ++shared;
            ++x;
            ++y;
        } else if (*x < *y) {
            ++x;
        } else {
            ++y;
        }
    }
    return shared;
}

/// Whether a piece of a pattern fits at the beginning of a text.
bool fits(std::wstring_view text, std::wstring_view piece) {
    return text.size() >= piece.size() &&
           std::equal(piece.begin(), piece.end(), text.begin(),
                      [](wchar_t wanted, wchar_t c) { return wanted == L'?' || wanted == c; });
}

/// For every beginning of a text, the length of the longest shorter one that it ends with.
std::vector<std::size_t> borders(std::wstring_view text) {
    std::vector<std::size_t> border(text.size());
    for (std::size_t i = 1, n = 0; i < text.size(); ++i) {
        while (n > 0 && text[i] != text[n]) {
            n = border[n - 1];
        }
        border[i] = n += text[i] == text[n];
    }
    return border;
}

/// The first place of a piece without "?", in a time proportional to the lengths whatever they hold: that of
/// Knuth, Morris and Pratt.
std::size_t findLiteral(std::wstring_view text, std::wstring_view piece) {
    const std::vector<std::size_t> border = borders(piece);
    for (std::size_t i = 0, n = 0; i < text.size(); ++i) {
        while (n > 0 && text[i] != piece[n]) {
            n = border[n - 1];
        }
        n += text[i] == piece[n];
        if (n == piece.size()) {
            return i + 1 - n;
        }
    }
    return std::wstring_view::npos;
}

std::size_t findPiece(std::wstring_view text, std::wstring_view piece) {
    if (piece.empty()) {
        return 0;
    }
    if (piece.find(L'?') == std::wstring_view::npos) {
        return findLiteral(text, piece);
    }
    for (std::size_t i = 0; i + piece.size() <= text.size(); ++i) {
        if (fits(text.substr(i), piece)) {
            return i;
        }
    }
    return std::wstring_view::npos;
}

} // namespace

float str::match(const wchar_t* s) const {
    const std::wstring a = smallLetters(*this);
    const std::wstring b = smallLetters(s, s ? std::char_traits<wchar_t>::length(s) : 0);
    if (a == b) {
        return 1;
    }
    const double pairs = static_cast<double>(a.size() + b.size() + 2);
    const double shared = static_cast<double>(countShared(sortedPairs(a), sortedPairs(b)));
    // Different texts may consist of the same pairs.
    return std::min(static_cast<float>(2 * shared / pairs), std::nextafter(1.0f, 0.0f));
}

bool str::matchWildcard(const str& pattern) const {
    const std::wstring smallText = smallLetters(*this), smallPattern = smallLetters(pattern);
    std::wstring_view text = smallText, mask = smallPattern;
    std::size_t star = mask.find(L'*');
    if (star == std::wstring_view::npos) {
        return text.size() == mask.size() && fits(text, mask);
    }
    if (!fits(text, mask.substr(0, star))) {
        return false;
    }
    text.remove_prefix(star);
    mask.remove_prefix(star + 1);
    // The first place of each piece is as good as any: it leaves the most for those that follow.
    while ((star = mask.find(L'*')) != std::wstring_view::npos) {
        const std::size_t place = findPiece(text, mask.substr(0, star));
        if (place == std::wstring_view::npos) {
            return false;
        }
        text.remove_prefix(place + star);
        mask.remove_prefix(star + 1);
    }
    return text.size() >= mask.size() && fits(text.substr(text.size() - mask.size()), mask);
}

} // namespace vcore
