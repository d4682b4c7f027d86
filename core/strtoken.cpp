#include "core/strtoken.h"

#include <cwchar>

namespace vcore {

void strtoken::set(const wchar_t* start, unsigned long length) {
    _start = start;
    _length = start ? static_cast<unsigned long>(wcsnlen(start, length)) : 0;
}

int strtoken::compare(const wchar_t* s) const {
    if (!s)
        return _start ? 1 : 0;
    const int result = _start ? std::wcsncmp(_start, s, _length) : 0;
    return result == 0 && std::wcslen(s) > _length ? 1 : result;
}

} // namespace vcore
