#include "marvo/core/strtokens_path.h"

namespace vcore {

int strtokens_path::splitStr(const str& text) {
    return splitText(text, L"\\/", true, false);
}

int strtokens_path::splitStr(str& text) {
    return splitStr(static_cast<const str&>(text));
}

} // namespace vcore
