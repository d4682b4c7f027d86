#include "marvo/core/strtokens_lines.h"

namespace vcore {

int strtokens_lines::splitStr(const str& text) {
    const int lines = splitText(text, L"\n", true, false);
    for (int i = 0; i < lines; ++i) {
        strtoken& line = tokenAt(i);
        if (line.len() > 0 && line.start()[line.len() - 1] == L'\r') {
            line.set(line.start(), line.len() - 1);
        }
    }
    return lines;
}

int strtokens_lines::splitStr(str& text) {
    return splitStr(static_cast<const str&>(text));
}

} // namespace vcore
