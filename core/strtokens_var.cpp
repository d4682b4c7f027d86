#include "core/strtokens_var.h"

namespace vcore {

int strtokens_var::splitStr(const str& text) {
    return _split(text, _separators.oleStr(), true, true);
}

int strtokens_var::splitStr(str& text) {
    return splitStr(static_cast<const str&>(text));
}

} // namespace vcore
