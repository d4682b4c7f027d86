#include "marvo/core/strtoken.h"

#include <cwchar>

namespace vcore {

void strtoken::set(const wchar_t* start, unsigned long length) {
    start_ = start;
    length_ = start ? static_cast<unsigned long>(wcsnlen(start, length)) : 0;
}

int strtoken::compare(const wchar_t* s) const {
    if (!s) {
        return start_ ? 1 : 0;
    }
    const int result = start_ ? std::wcsncmp(start_, s, length_) : 0;
    return result == 0 && std::wcslen(s) > length_ ? 1 : result;
}

} // namespace vcore
