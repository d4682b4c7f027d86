#include "marvo/core/var.h"

#include "marvo/core/process_state.h"
#include "marvo/core/str.h"

#include <cmath>
#include <limits>
#include <memory>
#include <utility>

namespace vcore {

namespace {

/// Drops the fraction and keeps the result within the integer's range; a NaN is 0.
template <class Integer>
Integer truncated(double value) {
    if (std::isnan(value)) {
        return 0;
    }
    // As a double, an integer type's maximum may round up to the first value beyond it.
    if (value >= static_cast<double>(std::numeric_limits<Integer>::max())) {
        return std::numeric_limits<Integer>::max();
    }
    if (value <= static_cast<double>(std::numeric_limits<Integer>::min())) {
        return std::numeric_limits<Integer>::min();
    }
    return static_cast<Integer>(value);
}

/// The narrow texts that a thread was given last.
struct NarrowTexts {
    static constexpr unsigned count = 8;
    str texts[count];
    unsigned next = 0;
};

/// Leads every thread to its own texts. Deliberately a slot of the system, and one for fibers: it frees what
/// a thread left when the thread ends, and what all threads left when the library is unloaded, which neither
/// thread_local nor a plain thread slot does for a library that is loaded late.
class NarrowTextSlot {
public:
    NarrowTextSlot() : slot_(FlsAlloc(&release)) {}
    ~NarrowTextSlot() {
        if (!processEnding()) {
            FlsFree(slot_);
        }
    }
    NarrowTextSlot(const NarrowTextSlot&) = delete;
    NarrowTextSlot& operator=(const NarrowTextSlot&) = delete;

    /// The calling thread's texts, null when it cannot have any.
    NarrowTexts* own() const {
        if (auto* const texts = static_cast<NarrowTexts*>(FlsGetValue(slot_))) {
            return texts;
        }
        auto fresh = std::make_unique<NarrowTexts>();
        return FlsSetValue(slot_, fresh.get()) ? fresh.release() : nullptr;
    }

private:
    static void WINAPI release(void* texts) { delete static_cast<NarrowTexts*>(texts); }

    const DWORD slot_;
};

} // namespace

var::var(const VARIANT* source) : var() {
    if (source) {
        assignFrom(*source);
    }
}

var& var::operator=(const var& source) {
    assignFrom(source);
    return *this;
}

var& var::operator=(var&& source) noexcept {
    var taken(std::move(source));
    swap(taken);
    return *this;
}

void var::swap(var& other) noexcept {
    std::swap(static_cast<VARIANT&>(*this), static_cast<VARIANT&>(other));
}

// The copy is complete before the old payload is freed, because the source may be part of that.
void var::assignFrom(const VARIANT& source) {
    VARIANT copy{};
    const HRESULT result = VariantCopy(&copy, const_cast<VARIANT*>(&source));
    // Types that belong in no variant (narrow text, raw pointers) own nothing.
    if (result == DISP_E_BADVARTYPE) {
        copy = source;
    } else if (FAILED(result)) {
        copy = VARIANT{};
    }
    freeS();
    static_cast<VARIANT&>(*this) = copy;
}

void var::setTypeTag(VARTYPE type) {
    static_cast<VARIANT&>(*this) = VARIANT{};
    vt = type;
}

void var::freeS() {
    if (vt != VT_EMPTY) {
        VariantClear(this);
    }
    setTypeTag(VT_EMPTY);
}

void var::setI(long value) {
    freeS();
    vt = VT_I4;
    lVal = value;
}

void var::setI64(long long value) {
    freeS();
    vt = VT_I8;
    llVal = value;
}

void var::setF(double value) {
    freeS();
    vt = VT_R8;
    dblVal = value;
}

void var::setS(const wchar_t* text) {
    const BSTR copy = SysAllocString(text);
    freeS();
    vt = VT_BSTR;
    bstrVal = copy;
}

void var::setB(bool value) {
    freeS();
    vt = VT_BOOL;
    boolVal = value ? VARIANT_TRUE : VARIANT_FALSE;
}

void var::setU(IUnknown* object) {
    if (object) {
        object->AddRef();
    }
    freeS();
    vt = VT_UNKNOWN;
    punkVal = object;
}

void var::setD(IDispatch* object) {
    if (object) {
        object->AddRef();
    }
    freeS();
    vt = VT_DISPATCH;
    pdispVal = object;
}

void var::setArray(SAFEARRAY* array) {
    VARTYPE element = VT_VARIANT;
    if (!array || FAILED(SafeArrayGetVartype(array, &element))) {
        element = VT_VARIANT;
    }
    SAFEARRAY* copy = nullptr;
    if (array && FAILED(SafeArrayCopy(array, &copy))) {
        copy = nullptr;
    }
    freeS();
    vt = static_cast<VARTYPE>(VT_ARRAY | element);
    parray = copy;
}

void var::setP(void* pointer) {
    freeS();
    vt = VT_VOID;
    byref = pointer;
}

VARIANT& var::variant() const {
    static VARIANT nothing;
    if (isNullObject(this)) {
        return nothing = VARIANT{};
    }
    // References do not refer to references, but a damaged value could make a circle.
    constexpr int deepest = 8;
    VARIANT* target = const_cast<var*>(this);
    for (int i = 0; i < deepest && target->vt == (VT_BYREF | VT_VARIANT) && target->pvarVal; ++i) {
        target = target->pvarVal;
    }
    return *target;
}

int var::typeTag() const {
    return variant().vt & ~VT_BYREF;
}

bool var::isI() const {
    switch (typeTag()) {
    case VT_I1:
    case VT_UI1:
    case VT_I2:
    case VT_UI2:
    case VT_I4:
    case VT_UI4:
    case VT_INT:
    case VT_UINT:
        return true;
    default:
        return isI64();
    }
}

bool var::isI64() const {
    return typeTag() == VT_I8 || typeTag() == VT_UI8;
}

bool var::isF() const {
    return typeTag() == VT_R4 || typeTag() == VT_R8;
}

long long var::toInteger() const {
    switch (typeTag()) {
    case VT_I1:
        return payload<signed char>();
    case VT_UI1:
        return payload<unsigned char>();
    case VT_I2:
    case VT_BOOL:
        return payload<short>();
    case VT_UI2:
        return payload<unsigned short>();
    case VT_I4:
    case VT_INT:
        return payload<long>();
    case VT_UI4:
    case VT_UINT:
        return payload<unsigned long>();
    case VT_I8:
    case VT_UI8:
        return payload<long long>();
    default:
        return 0;
    }
}

double var::toFraction() const {
    switch (typeTag()) {
    case VT_R4:
        return payload<float>();
    case VT_R8:
        return payload<double>();
    case VT_BSTR:
    case VT_LPSTR: {
        str text;
        return (text = getS()).calculate();
    }
    default:
        return 0;
    }
}

long var::getI() const {
    return isI() || isB() ? static_cast<long>(toInteger()) : truncated<long>(toFraction());
}

long long var::getI64() const {
    if (isS() || isC()) {
        // A floating point number would lose the last digits of a long one.
        str text;
        wchar_t* end = nullptr;
        const long long whole = (text = getS()).toInt64(&end);
        if (end != text.oleStr() && *end == 0) {
            return whole;
        }
    }
    return isI() || isB() ? toInteger() : truncated<long long>(toFraction());
}

double var::getF() const {
    if (typeTag() == VT_UI8) {
        return static_cast<double>(static_cast<unsigned long long>(toInteger()));
    }
    return isI() || isB() ? static_cast<double>(toInteger()) : toFraction();
}

bool var::getB() const {
    if (isB()) {
        return toInteger() != 0;
    }
    if (!isS() && !isC()) {
        return getF() != 0;
    }
    for (const wchar_t* word : {L"TRUE", L"WAHR", L"ON", L"JA", L"YES", L"AN"}) {
        if (str::equal(getS(), word, false)) {
            return true;
        }
    }
    return getI() != 0;
}

const wchar_t* var::getS() const {
    if (isC()) {
        str text;
        text = payload<char*>();
        VARIANT& target = variant();
        target = VARIANT{};
        target.vt = VT_BSTR;
        target.bstrVal = SysAllocString(text.oleStr());
    }
    const wchar_t* const text = isS() ? payload<BSTR>() : nullptr;
    return text ? text : L"";
}

IUnknown* var::getU() const {
    return isU() ? payload<IUnknown*>() : nullptr;
}

IDispatch* var::getD() const {
    return isD() ? payload<IDispatch*>() : nullptr;
}

void* var::getP() const {
    return isP() ? payload<void*>() : nullptr;
}

SAFEARRAY* var::getArray() const {
    return isArray() ? payload<SAFEARRAY*>() : nullptr;
}

var::operator const char*() const {
    static const NarrowTextSlot slot;
    if (isC() && payload<char*>()) {
        return payload<char*>();
    }
    NarrowTexts* const own = slot.own();
    return own ? (own->texts[own->next++ % NarrowTexts::count] = getS()).getStr() : "";
}

str& var::toStr(str& out, bool quote) const {
    switch (typeTag()) {
    case VT_R4:
        return out.sprintf(L"%.4f", getF());
    case VT_R8:
        return out.sprintf(L"%.8f", getF());
    case VT_BOOL:
        return out = getB() ? L"TRUE" : L"FALSE";
    case VT_BSTR:
    case VT_LPSTR:
        out = getS();
        return quote ? out.insert(0, L"\"").append(L"\"") : out;
    case VT_DISPATCH:
        return out.sprintf(L"%8Ix", getD());
    default:
        return out.sprintf(L"%d", getI());
    }
}

} // namespace vcore
