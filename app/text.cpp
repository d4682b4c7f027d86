#include "app/text.h"

#include "app/moment.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>

namespace app {

namespace {

struct Row {
    const wchar_t* english;
    const wchar_t* german;
};

constexpr Row table[] = {
#define MARVO_TEXT(id, english, german) {english, german},
#include "app/text_table.h"
#undef MARVO_TEXT
};

static_assert(std::size(table) == static_cast<std::size_t>(Text::count));

constexpr char32_t replacement = 0xfffd;
constexpr bool wideIsUtf16 = sizeof(wchar_t) == 2;

bool isSurrogate(char32_t code) {
    return code >= 0xd800 && code < 0xe000;
}

void appendUtf8(std::string& text, char32_t code) {
    if (code < 0x80) {
        text += static_cast<char>(code);
        return;
    }
    const int more = code < 0x800 ? 1 : code < 0x10000 ? 2 : 3;
    constexpr unsigned leads[] = {0, 0xc0, 0xe0, 0xf0};
    text += static_cast<char>(leads[more] | code >> (6 * more));
    for (int shift = 6 * (more - 1); shift >= 0; shift -= 6) {
        text += static_cast<char>(0x80 | (code >> shift & 0x3f));
    }
}

void appendWide(std::wstring& text, char32_t code) {
    if (wideIsUtf16 && code >= 0x10000) {
        text += static_cast<wchar_t>(0xd800 + ((code - 0x10000) >> 10));
        text += static_cast<wchar_t>(0xdc00 + ((code - 0x10000) & 0x3ff));
    } else {
        text += static_cast<wchar_t>(code);
    }
}

/// The character at `at`, which is moved behind it.
char32_t nextUtf8(const std::string& text, std::size_t& at) {
    const auto lead = static_cast<unsigned char>(text[at++]);
    const int more = lead < 0x80 ? 0 : lead >= 0xf0 ? 3 : lead >= 0xe0 ? 2 : lead >= 0xc0 ? 1 : -1;
    if (more < 0 || lead > 0xf4) {
        return replacement;
    }
    char32_t code = more == 0 ? lead : lead & (0x3fu >> more);
    for (int i = 0; i < more; ++i) {
        const auto byte = at < text.size() ? static_cast<unsigned char>(text[at]) : 0u;
        if ((byte & 0xc0) != 0x80) {
            return replacement;
        }
        code = code << 6 | (byte & 0x3f);
        ++at;
    }
    constexpr char32_t least[] = {0, 0x80, 0x800, 0x10000};
    return code < least[more] || code > 0x10ffff || isSurrogate(code) ? replacement : code;
}

std::wstring numbered(const wchar_t* pattern, long long a, long long b, long long c) {
    wchar_t buffer[64];
    std::swprintf(buffer, std::size(buffer), pattern, a, b, c);
    return buffer;
}

void localise(std::wstring& number, Language language) {
    if (const std::size_t point = number.find(L'.'); language == Language::german && point != number.npos) {
        number[point] = L',';
    }
}

} // namespace

const wchar_t* text(Text id, Language language) {
    const Row& row = table[static_cast<std::size_t>(id)];
    return language == Language::german ? row.german : row.english;
}

std::wstring text(Text id, Language language, const std::vector<std::wstring>& values) {
    std::wstring result;
    for (const wchar_t* at = text(id, language); *at; ++at) {
        const std::size_t place = at[0] == L'{' && at[1] && at[2] == L'}' ? at[1] - L'0' : values.size();
        if (place < values.size()) {
            result += values[place];
            at += 2;
        } else {
            result += *at;
        }
    }
    return result;
}

std::string utf8(const std::wstring& text) {
    std::string result;
    for (std::size_t i = 0; i < text.size(); ++i) {
        auto code = static_cast<char32_t>(text[i]);
        if (wideIsUtf16 && code >= 0xd800 && code < 0xdc00 && i + 1 < text.size() &&
            (static_cast<char32_t>(text[i + 1]) & 0xfc00) == 0xdc00) {
            code = 0x10000 + ((code - 0xd800) << 10) + (static_cast<char32_t>(text[++i]) - 0xdc00);
        }
        appendUtf8(result, isSurrogate(code) || code > 0x10ffff ? replacement : code);
    }
    return result;
}

std::wstring wide(const std::string& text) {
    std::wstring result;
    for (std::size_t at = 0; at < text.size();) {
        appendWide(result, nextUtf8(text, at));
    }
    return result;
}

std::wstring durationText(std::int64_t length_ms, Language language) {
    const long long tenths = (length_ms + 50) / 100;
    const long long seconds = (length_ms + 500) / 1000;
    if (tenths < 600) {
        std::wstring number = numbered(L"%lld.%lld s", tenths / 10, tenths % 10, 0);
        localise(number, language);
        return number;
    }
    return seconds < 3600
               ? numbered(L"%lld:%02lld min", seconds / 60, seconds % 60, 0)
               : numbered(L"%lld:%02lld:%02lld h", seconds / 3600, seconds / 60 % 60, seconds % 60);
}

std::wstring timeOfDayText(std::int64_t timeOfDay_ms, bool withFraction) {
    const Calendar day = calendarOf(timeOfDay_ms);
    std::wstring result = numbered(L"%02lld:%02lld:%02lld", day.hour, day.minute, day.second);
    if (withFraction) {
        result += numbered(L".%03lld", day.millisecond, 0, 0);
    }
    return result;
}

std::wstring numberText(double value, Language language) {
    std::wstring result = numbered(L"%lld.%02lld", std::llabs(std::llround(value * 100)) / 100,
                                   std::llabs(std::llround(value * 100)) % 100, 0);
    while (result.back() == L'0') {
        result.pop_back();
    }
    if (result.back() == L'.') {
        result.pop_back();
    }
    localise(result, language);
    return (value < 0 && result != L"0" ? L"-" : L"") + result;
}

std::wstring firstOf(const std::vector<std::wstring>& findings, Language language) {
    const std::wstring first = findings.empty() ? L"" : findings.front();
    return findings.size() < 2 ? first
                               : text(Text::andMore, language, {first, std::to_wstring(findings.size() - 1)});
}

std::optional<double> numberOf(const std::wstring& text) {
    std::wstring plain = text;
    std::replace(plain.begin(), plain.end(), L',', L'.');
    wchar_t* end = nullptr;
    const double value = std::wcstod(plain.c_str(), &end);
    const bool whole = !plain.empty() && end == plain.c_str() + plain.size() && std::isfinite(value);
    return whole ? std::optional(value) : std::nullopt;
}

} // namespace app
