#include "marvo/core/var_array.h"

namespace vcore {

namespace {

constexpr int mostElements = 0x7FFFFFFF / sizeof(VARIANT);

} // namespace

bool var_array::create(int count) {
    SAFEARRAY* const array = count >= 0 && count <= mostElements
                                 ? SafeArrayCreateVector(VT_VARIANT, 0, static_cast<ULONG>(count))
                                 : nullptr;
    freeS();
    vt = VT_ARRAY | VT_VARIANT;
    parray = array;
    return array != nullptr;
}

int var_array::count() const {
    SAFEARRAY* const array = getArray();
    if (!array || SafeArrayGetDim(array) != 1) {
        return 0;
    }
    return static_cast<int>(array->rgsabound[0].cElements);
}

bool var_array::findElement(int i, VARTYPE& element, LONG& index) const {
    if (i < 0 || i >= count() || FAILED(SafeArrayGetVartype(getArray(), &element))) {
        return false;
    }
    index = getArray()->rgsabound[0].lLbound + i;
    return true;
}

var var_array::get(int i) const {
    var result;
    VARTYPE element;
    LONG index;
    if (!findElement(i, element, index)) {
        return result;
    }
    if (element == VT_VARIANT) {
        SafeArrayGetElement(getArray(), &index, static_cast<VARIANT*>(&result));
    } else if (SafeArrayGetElemsize(getArray()) <= sizeof result.llVal) {
        result.vt = element;
        if (FAILED(SafeArrayGetElement(getArray(), &index, &result.llVal))) {
            result = var();
        }
    }
    return result;
}

bool var_array::set(int i, const var& value) {
    VARTYPE element;
    LONG index;
    if (!findElement(i, element, index) || element != VT_VARIANT) {
        return false;
    }
    // A copy, because the value may be an element of this array.
    const var copy(value);
    return SUCCEEDED(SafeArrayPutElement(getArray(), &index, const_cast<var*>(&copy)));
}

} // namespace vcore
