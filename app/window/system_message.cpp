#include "app/window/system_message.h"

#include "marvo.h"

namespace app {

std::wstring systemMessage(unsigned long error) {
    wchar_t text[256] = L"";
    DWORD length = FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr, error,
                                  0, text, 256, nullptr);
    while (length > 0 && (text[length - 1] <= L' ' || text[length - 1] == L'.')) {
        text[--length] = 0;
    }
    return length > 0 ? text : std::to_wstring(error);
}

} // namespace app
