#include "tools/failure.h"

#include "tools/text.h"

namespace dvrec {

std::string systemMessage(DWORD error) {
    wchar_t text[512];
    DWORD length = FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS |
                                      FORMAT_MESSAGE_MAX_WIDTH_MASK,
                                  nullptr, error, 0, text, ARRAYSIZE(text), nullptr);
    while (length > 0 && (text[length - 1] == L'.' || text[length - 1] <= L' ')) {
        --length;
    }
    return length > 0 ? utf8(std::wstring(text, length)) : "system error " + std::to_string(error);
}

} // namespace dvrec
