#include "marvo/flat/text.h"

#include "marvo/core/windows.h"
#include "marvo/flat/failure.h"

#include <climits>
#include <cstring>

namespace flat {

std::wstring wideText(const char* text, const char* what) {
    if (!text) {
        fail(MARVO_E_ARGUMENT, std::string("There is no ") + what + ": it is null.");
    }
    return wideTextOrNone(text, what);
}

std::wstring wideTextOrNone(const char* text, const char* what) {
    const std::size_t length = text ? std::strlen(text) : 0;
    if (length == 0) {
        return {};
    }
    std::wstring wide(length, L'\0');
    const int units = length > INT_MAX
                          ? 0
                          : MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, text, static_cast<int>(length),
                                                wide.data(), static_cast<int>(length));
    if (units <= 0) {
        fail(MARVO_E_ARGUMENT, std::string("The ") + what + " is not valid UTF-8.");
    }
    wide.resize(static_cast<std::size_t>(units));
    return wide;
}

std::string utf8(const std::wstring& text) {
    constexpr std::size_t mostBytesPerUnit = 3;
    std::string narrow(text.size() * mostBytesPerUnit, '\0');
    const int bytes =
        text.empty() ? 0
                     : WideCharToMultiByte(CP_UTF8, 0, text.data(), static_cast<int>(text.size()),
                                           narrow.data(), static_cast<int>(narrow.size()), nullptr, nullptr);
    narrow.resize(static_cast<std::size_t>(bytes));
    return narrow;
}

std::string asUtf8(const std::string& text) {
    const auto wide = [&text](UINT codePage, DWORD flags) {
        std::wstring units(text.size(), L'\0');
        const int count = MultiByteToWideChar(codePage, flags, text.data(), static_cast<int>(text.size()),
                                              units.data(), static_cast<int>(units.size()));
        units.resize(count > 0 ? static_cast<std::size_t>(count) : 0);
        return units;
    };
    return !wide(CP_UTF8, MB_ERR_INVALID_CHARS).empty() ? text : utf8(wide(CP_ACP, 0));
}

std::size_t fittingLength(const char* text, std::size_t length, std::size_t capacity) {
    if (length < capacity) {
        return length;
    }
    const auto continues = [text](std::size_t at) {
        return (static_cast<unsigned char>(text[at]) & 0xC0) == 0x80;
    };
    std::size_t end = capacity - 1;
    while (end > 0 && continues(end)) {
        --end;
    }
    return end;
}

void putText(char* to, std::size_t capacity, const std::string& text) {
    const std::size_t length = fittingLength(text.data(), text.size(), capacity);
    std::memcpy(to, text.data(), length);
    to[length] = '\0';
}

void answer(const std::string& text, char* buffer, marvo_u32 capacity, marvo_u32* needed) {
    const auto bytes = static_cast<marvo_u32>(text.size() + 1);
    if (needed) {
        *needed = bytes;
    }
    if (buffer && capacity > 0) {
        putText(buffer, capacity, text);
    }
    if (!buffer || capacity < bytes) {
        fail(MARVO_E_BUFFER, "The buffer has " + std::to_string(buffer ? capacity : 0) +
                                 " bytes; the text needs " + std::to_string(bytes) + ".");
    }
}

} // namespace flat
