#include "marvo/core/varlist.h"

#include <memory>
#include <new>

namespace vcore {

varlist& varlist::operator+=(var* value) {
    std::unique_ptr<var> owned(value);
    if (owned && add(owned.get())) {
        owned.release();
    }
    return *this;
}

varlist& varlist::operator+=(const wchar_t* text) {
    return *this += new (std::nothrow) var(text);
}

} // namespace vcore
