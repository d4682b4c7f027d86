#include "marvo/core/strtokens_var.h"

namespace vcore {

int strtokens_var::splitStr(const str& text) {
    return splitText(text, separators_.oleStr(), true, true);
}

int strtokens_var::splitStr(str& text) {
    return splitStr(static_cast<const str&>(text));
}

} // namespace vcore
