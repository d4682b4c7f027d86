#include "marvo/com/com_clsid.h"

#include "marvo/core/str.h"

#include <iterator>

namespace vwin {

com_clsid::com_clsid(const GUID& guid) : guid_(guid) {}

com_clsid::com_clsid(const wchar_t* text) {
    set(text);
}

bool com_clsid::set(const wchar_t* text) {
    if (text != nullptr && SUCCEEDED(CLSIDFromString(text, &guid_))) {
        return true;
    }
    guid_ = {};
    return false;
}

bool com_clsid::getText(vcore::str& text) const {
    wchar_t buffer[64] = {};
    if (StringFromGUID2(guid_, buffer, static_cast<int>(std::size(buffer))) == 0) {
        return false;
    }
    text = buffer;
    return true;
}

bool com_clsid::empty() const {
    return IsEqualGUID(guid_, GUID{}) != FALSE;
}

} // namespace vwin
