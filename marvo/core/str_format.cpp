// Formatting: the members of str that write text by a format.
#include "marvo/core/str.h"

#include <algorithm>
#include <cstdarg>
#include <cwchar>
#include <string>
#include <vector>

namespace vcore {

namespace {

/// The formatted text with its terminator; just the terminator when the format cannot be carried out.
std::vector<wchar_t> formatted(const wchar_t* pattern, va_list args) {
    va_list again;
    va_copy(again, args);
    const int length = pattern ? _vscwprintf(pattern, again) : 0;
    va_end(again);
    std::vector<wchar_t> text(length > 0 ? length + 1 : 1);
    if (length > 0) {
        _vsnwprintf(text.data(), text.size(), pattern, args);
    }
    text.back() = 0;
    return text;
}

/// The place behind at most three digits.
const wchar_t* skipDigits(const wchar_t* p) {
    for (int i = 0; i < 3 && *p >= L'0' && *p <= L'9'; ++i) {
        ++p;
    }
    return p;
}

/// Whether a format consumes exactly one int.
bool writesOneInteger(const wchar_t* p) {
    int conversions = 0;
    while ((p = std::wcschr(p, L'%')) != nullptr) {
        ++p;
        if (*p == L'%') {
            ++p;
            continue;
        }
        p = skipDigits(p + std::wcsspn(p, L"-+ #0"));
        if (*p == L'.') {
            p = skipDigits(p + 1);
        }
        if (*p == 0 || !std::wcschr(L"diouxXc", *p)) {
            return false;
        }
        ++conversions;
    }
    return conversions == 1;
}

/// The fields as far as the C library accepts them; it may end the process on others.
std::tm limited(const std::tm& when) {
    std::tm t = when;
    t.tm_sec = std::clamp(t.tm_sec, 0, 59);
    t.tm_min = std::clamp(t.tm_min, 0, 59);
    t.tm_hour = std::clamp(t.tm_hour, 0, 23);
    t.tm_mday = std::clamp(t.tm_mday, 1, 31);
    t.tm_mon = std::clamp(t.tm_mon, 0, 11);
    t.tm_year = std::clamp(t.tm_year, -1900, 8099);
    t.tm_wday = std::clamp(t.tm_wday, 0, 6);
    t.tm_yday = std::clamp(t.tm_yday, 0, 365);
    return t;
}

/// What a conversion stands for that not every C library has.
const wchar_t* longForm(wchar_t conversion) {
    switch (conversion) {
    case L'D':
        return L"%m/%d/%y";
    case L'F':
        return L"%Y-%m-%d";
    case L'R':
        return L"%H:%M";
    case L'T':
        return L"%H:%M:%S";
    case L'h':
        return L"%b";
    case L'n':
        return L"\n";
    case L't':
        return L"\t";
    default:
        return nullptr;
    }
}

/// Adds one conversion of a time format. The C library sees only those that it knows.
void addTime(std::wstring& out, wchar_t conversion, const std::tm& when) {
    const wchar_t single[] = {L'%', conversion, 0};
    const wchar_t* const form = longForm(conversion) ? longForm(conversion) : single;
    if (form == single && !std::wcschr(L"aAbBcdHIjmMpSUwWxXyYzZ%", conversion)) {
        out += single;
        return;
    }
    wchar_t buffer[256];
    out.append(buffer, std::wcsftime(buffer, std::size(buffer), form, &when));
}

} // namespace

str& str::sprintf(const wchar_t* pattern, ...) {
    va_list args;
    va_start(args, pattern);
    const std::vector<wchar_t> text = formatted(pattern, args);
    va_end(args);
    return setWStr(text.data());
}

str& str::sprintfArgs(const str& pattern, void* args, bool add) {
    // On every Windows target a va_list is the address of the arguments.
    const std::vector<wchar_t> text = formatted(pattern.oleStr(), static_cast<va_list>(args));
    return add ? append(text.data()) : setWStr(text.data());
}

str& str::Format(int value, const wchar_t* format) {
    return sprintf(format && writesOneInteger(format) ? format : L"%d", value);
}

str& str::time(const wchar_t* format, const std::tm* when) {
    std::wstring text;
    if (format && when) {
        const std::tm fields = limited(*when);
        for (; *format; ++format) {
            if (*format == L'%' && format[1]) {
                addTime(text, *++format, fields);
            } else {
                text += *format;
            }
        }
    }
    return setWStr(text.c_str());
}

} // namespace vcore
