#include "marvo/core/strtokens_cpp.h"

#include <cwchar>

namespace vcore {

namespace {

constexpr wchar_t quote = L'"';

} // namespace

bool strtokens_cpp::separates(wchar_t c) const {
    return c != quote && c != 0 && std::wcschr(separators_.oleStr(), c);
}

int strtokens_cpp::splitStr(const str& text) {
    clearAll();
    const wchar_t* const start = text.oleStr();
    const unsigned long length = text.len();
    for (unsigned long pos = 0; pos < length;) {
        const unsigned long begin = pos;
        int quotes = 0;
        for (; pos < length && (quotes % 2 || !separates(start[pos])); ++pos) {
            quotes += start[pos] == quote;
        }
        const unsigned long size = pos - begin;
        const bool enclosed = quotes == 2 && start[begin] == quote && start[pos - 1] == quote;
        const bool open = quotes == 1 && start[begin] == quote;
        if (enclosed || open) {
            addWord(start + begin + 1, size - 1 - enclosed);
        } else if (size > static_cast<unsigned long>(quotes)) {
            addWord(start + begin, size);
        }
        ++pos;
    }
    return count();
}

int strtokens_cpp::splitStr(str& text) {
    clearAll();
    wchar_t* const out = text.oleStr();
    const unsigned long length = text.len();
    unsigned long kept = 0, begin = 0;
    bool quoted = false;
    for (unsigned long i = 0; i < length; ++i) {
        const wchar_t c = out[i];
        if (c == quote) {
            quoted = !quoted;
            continue;
        }
        out[kept++] = c;
        if (!quoted && separates(c)) {
            addWord(out + begin, kept - 1 - begin);
            begin = kept;
        }
    }
    text.remove(static_cast<int>(kept), str::toEnd);
    addWord(out + begin, kept - begin);
    return count();
}

} // namespace vcore
