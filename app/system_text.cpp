#include "app/system_text.h"

#include "marvo.h"

#include <iterator>

namespace app {

std::wstring systemText(unsigned long error) {
    wchar_t words[256] = L"";
    const DWORD length = FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr,
                                        error, 0, words, static_cast<DWORD>(std::size(words)), nullptr);
    std::wstring text(words, length);
    while (!text.empty() && (text.back() <= L' ' || text.back() == L'.')) {
        text.pop_back();
    }
    return text + (text.empty() ? L"(" : L" (") + std::to_wstring(error) + L")";
}

} // namespace app
