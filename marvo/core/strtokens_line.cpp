#include "marvo/core/strtokens_line.h"

namespace vcore {

int strtokens_line::splitStr(const str& text) {
    return splitText(text, L" \t\n\r", false, false);
}

int strtokens_line::splitStr(str& text) {
    return splitStr(static_cast<const str&>(text));
}

} // namespace vcore
