#include "tools/text.h"

#include "marvo/core/platform.h"

#include <algorithm>
#include <cwctype>

namespace dvrec {

namespace {

constexpr wchar_t longPrefix[] = L"\\\\?\\";
constexpr wchar_t longSharePrefix[] = L"\\\\?\\UNC\\";

} // namespace

std::wstring openable(const std::wstring& name) {
    // The system takes 259 characters, for folders fewer, and some are needed for what a command appends.
    constexpr DWORD mostPlain = 230;
    const DWORD size = GetFullPathNameW(name.c_str(), 0, nullptr, nullptr);
    if (size <= mostPlain || name == L"-" || name.starts_with(longPrefix)) {
        return name;
    }
    std::wstring full(size, L'\0');
    full.resize(GetFullPathNameW(name.c_str(), size, full.data(), nullptr));
    if (full.size() >= size || full.starts_with(L"\\\\.\\")) {
        return name;
    }
    return full.starts_with(L"\\\\") ? longSharePrefix + full.substr(2) : longPrefix + full;
}

std::string utf8(std::wstring_view text) {
    const int length = static_cast<int>(text.size());
    const int bytes = WideCharToMultiByte(CP_UTF8, 0, text.data(), length, nullptr, 0, nullptr, nullptr);
    std::string result(static_cast<size_t>(bytes), '\0');
    WideCharToMultiByte(CP_UTF8, 0, text.data(), length, result.data(), bytes, nullptr, nullptr);
    return result;
}

std::wstring shown(std::wstring_view name) {
    if (name.starts_with(longSharePrefix)) {
        return L"\\\\" + std::wstring(name.substr(std::wstring_view(longSharePrefix).size()));
    }
    const size_t prefix = name.starts_with(longPrefix) ? std::wstring_view(longPrefix).size() : 0;
    return std::wstring(name.substr(prefix));
}

std::string utf8Name(std::wstring_view name) {
    return utf8(shown(name));
}

std::string quoted(std::wstring_view text) {
    std::string result(1, '\'');
    result += utf8Name(text);
    result += '\'';
    return result;
}

namespace {

/// A character of UTF-8 text: its bytes, and the places that it takes.
struct Character {
    size_t bytes;
    size_t columns;
};

Character characterAt(std::string_view text, size_t at) {
    const auto lead = static_cast<unsigned char>(text[at]);
    const size_t said = lead < 0xC0 ? 1 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
    // From U+3000 on most characters are wide; one too many costs a place and no more.
    return {std::min(said, text.size() - at), lead >= 0xE3 ? 2u : 1u};
}

/// How many bytes of the text take at most so many places.
size_t bytesWithin(std::string_view text, size_t columns) {
    size_t at = 0;
    while (at < text.size()) {
        const Character next = characterAt(text, at);
        if (next.columns > columns) {
            break;
        }
        columns -= next.columns;
        at += next.bytes;
    }
    return at;
}

} // namespace

size_t columnsOf(std::string_view text) {
    size_t columns = 0;
    for (size_t at = 0; at < text.size();) {
        const Character next = characterAt(text, at);
        columns += next.columns;
        at += next.bytes;
    }
    return columns;
}

std::string fitted(const std::string& name, const std::string& rest, size_t columns) {
    const size_t needed = columnsOf(name) + columnsOf(rest);
    if (needed <= columns) {
        return name + rest;
    }
    constexpr std::string_view gap = "...";
    constexpr size_t leastOfName = 15;
    const size_t room = std::max(columns - std::min(columns, columnsOf(rest) + gap.size()), leastOfName);
    std::string line = name;
    if (columnsOf(name) > room + gap.size()) {
        const std::string start = name.substr(0, bytesWithin(name, room / 2));
        size_t behind = start.size();
        while (columnsOf(std::string_view(name).substr(behind)) > room - room / 2) {
            behind += characterAt(name, behind).bytes;
        }
        line = start + std::string(gap) + name.substr(behind);
    }
    line += rest;
    return line.substr(0, bytesWithin(line, columns));
}

std::string durationText(double seconds) {
    const auto hundredths = static_cast<unsigned long long>(seconds * 100 + 0.5);
    return format("%u:%02u:%02u.%02u", static_cast<unsigned>(hundredths / 360000),
                  static_cast<unsigned>(hundredths / 6000 % 60), static_cast<unsigned>(hundredths / 100 % 60),
                  static_cast<unsigned>(hundredths % 100));
}

bool hasExtension(const std::wstring& name, std::wstring_view extension) {
    if (name.size() < extension.size()) {
        return false;
    }
    const std::wstring_view end = std::wstring_view(name).substr(name.size() - extension.size());
    for (size_t i = 0; i < extension.size(); ++i) {
        if (static_cast<wchar_t>(std::towlower(end[i])) != extension[i]) {
            return false;
        }
    }
    return true;
}

} // namespace dvrec
