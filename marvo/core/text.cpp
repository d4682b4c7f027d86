#include "marvo/core/text.h"

#include "marvo/core/platform.h"

#include <cstdarg>
#include <cstdio>
#include <iterator>

namespace vcore {

std::string format(const char* pattern, ...) {
    char text[1024] = "";
    std::va_list arguments;
    va_start(arguments, pattern);
    std::vsnprintf(text, sizeof text, pattern, arguments);
    va_end(arguments);
    return text;
}

std::string counted(unsigned long long count, const char* noun) {
    return std::to_string(count) + " " + noun + (count == 1 ? "" : "s");
}

std::wstring systemMessage(unsigned long error) {
    wchar_t text[512];
    DWORD length = FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS |
                                      FORMAT_MESSAGE_MAX_WIDTH_MASK,
                                  nullptr, error, 0, text, static_cast<DWORD>(std::size(text)), nullptr);
    while (length > 0 && (text[length - 1] == L'.' || text[length - 1] <= L' ')) {
        --length;
    }
    return length > 0 ? std::wstring(text, length) : L"system error " + std::to_wstring(error);
}

} // namespace vcore
