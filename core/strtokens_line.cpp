#include "core/strtokens_line.h"

namespace vcore {

int strtokens_line::splitStr(const str& text) {
    return _split(text, L" \t\n\r", false, false);
}

int strtokens_line::splitStr(str& text) {
    return splitStr(static_cast<const str&>(text));
}

} // namespace vcore
