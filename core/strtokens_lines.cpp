#include "core/strtokens_lines.h"

namespace vcore {

int strtokens_lines::splitStr(const str& text) {
    const int lines = _split(text, L"\n", true, false);
    for (int i = 0; i < lines; ++i) {
        strtoken& line = _token(i);
        if (line.len() > 0 && line.start()[line.len() - 1] == L'\r')
            line.set(line.start(), line.len() - 1);
    }
    return lines;
}

int strtokens_lines::splitStr(str& text) {
    return splitStr(static_cast<const str&>(text));
}

} // namespace vcore
