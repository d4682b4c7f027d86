/// @file
/// Values of dynamic type.
#pragma once

#include "marvo/core/platform.h"

#include <cstddef>
#include <type_traits>

namespace vcore {

class str;

/// A value of dynamic type, laid out as the OLE `VARIANT` that it is, so that it can be handed to COM as it
/// stands.
///
/// Reading converts leniently: what cannot be converted is 0, false or empty text, and so is a null object. A
/// by-reference payload is read through its pointer; a reference to another variant reads that variant.
///
/// The payload is owned as OLE has it, so that a value that a foreign function has filled in is freed as it
/// must be: text (a `BSTR`) and arrays are copied when they are stored and freed, interfaces are referenced
/// and released. Raw pointers, narrow text and what a by-reference payload points to are borrowed. The same
/// holds for copies of a value. Not thread-safe.
class MARVO_API var : public VARIANT {
public:
    /// Empty.
    var() { setTypeTag(VT_EMPTY); }
    /// A 32-bit integer.
    var(int value) : var() { setI(value); }
    /// A 32-bit integer; the value is taken, not the reference.
    var(long& value) : var() { setI(value); }
    /// A 64-bit integer; the value is taken, not the reference.
    var(long long& value) : var() { setI64(value); }
    /// A boolean; the value is taken, not the reference.
    var(bool& value) : var() { setB(value); }
    /// A boolean or an integer that is no variable of the types above, such as `true` or `1ll << 40`: with 32
    /// bits when they hold every value of its type, else with 64.
    template <class Integer, std::enable_if_t<std::is_integral_v<Integer>, int> = 0>
    var(Integer value) : var() {
        if constexpr (std::is_same_v<Integer, bool>) {
            setB(value);
        } else if constexpr (sizeof(Integer) + std::is_unsigned_v<Integer> <= sizeof(long)) {
            setI(static_cast<long>(value));
        } else {
            setI64(static_cast<long long>(value));
        }
    }
    /// A 64-bit floating point number.
    var(double value) : var() { setF(value); }
    /// A copy of the text; null makes an empty text.
    var(const wchar_t* text) : var() { setS(text); }
    /// A raw pointer, borrowed.
    var(void* pointer) : var() { setP(pointer); }
    /// An interface, referenced; may be null.
    var(IUnknown* object) : var() { setU(object); }
    /// An automation interface, referenced; may be null.
    var(IDispatch* object) : var() { setD(object); }
    /// A copy of the array; see `setArray`.
    var(SAFEARRAY* array) : var() { setArray(array); }
    /// A copy. Empty when there is no memory for it.
    var(const VARIANT& source) : var() { assignFrom(source); }
    /// As above; null makes an empty value.
    var(const VARIANT* source);
    /// As above.
    var(const var& source) : var() { assignFrom(source); }
    /// Takes the value over; `source` is empty then.
    var(var&& source) noexcept : var() { swap(source); }
    /// Takes over a copy, which may be of a part of this value (an element of its array).
    var& operator=(const var& source);
    /// Takes the value over and frees the one held before; `source` is empty then, unless it is this value.
    var& operator=(var&& source) noexcept;
    ~var() { freeS(); }

    /// Frees the payload, if it is owned, and makes the value empty. An array that somebody has locked is not
    /// freed but left to him.
    void freeS();
    /// Exchanges two values without copying anything.
    void swap(var& other) noexcept;
    /// Same as `freeS`.
    void setEmpty() { freeS(); }
    /// Stores a 32-bit integer.
    void setI(long value);
    /// Stores a 64-bit integer.
    void setI64(long long value);
    /// Stores a 64-bit floating point number.
    void setF(double value);
    /// Stores a copy of the text, which may be this value's own.
    void setS(const wchar_t* text);
    /// Stores a boolean, true as -1.
    void setB(bool value);
    /// Stores an interface and adds a reference to it, which the value releases.
    void setU(IUnknown* object);
    /// Stores an automation interface in the same way.
    void setD(IDispatch* object);
    /// Stores a raw pointer, borrowed.
    void setP(void* pointer);
    /// Stores a copy of the array with all its elements, with the array flag and the element type that it
    /// tells (variants when it does not). Null, or no memory for the copy, makes a value of array type
    /// without an array.
    void setArray(SAFEARRAY* array);

    /// Whether there is no value.
    bool isEmpty() const { return typeTag() == VT_EMPTY; }
    /// Whether it is an integer of any size.
    bool isI() const;
    /// Whether it is a 64-bit integer.
    bool isI64() const;
    /// Whether it is a floating point number.
    bool isF() const;
    /// Whether it is text (a `BSTR`).
    bool isS() const { return typeTag() == VT_BSTR; }
    /// Whether it is a pointer to narrow text, which is borrowed.
    bool isC() const { return typeTag() == VT_LPSTR; }
    /// Whether it is a boolean.
    bool isB() const { return typeTag() == VT_BOOL; }
    /// Whether it is an interface of any kind.
    bool isU() const { return typeTag() == VT_UNKNOWN || isD(); }
    /// Whether it is an automation interface.
    bool isD() const { return typeTag() == VT_DISPATCH; }
    /// Whether it is a raw pointer.
    bool isP() const { return typeTag() == VT_VOID; }
    /// Whether it is an array.
    bool isArray() const { return (typeTag() & VT_ARRAY) != 0; }

    /// The value as an integer: fractions are dropped, numbers out of range become the nearest there is, text
    /// is evaluated as an expression (`str::calculate`). A 64-bit integer is cut to its low half.
    long getI() const;
    /// As `getI`, with 64 bits; text that is nothing but a whole number is read to the last digit.
    long long getI64() const;
    /// The value as a floating point number, converted like `getI` but with the fraction.
    double getF() const;
    /// The value as a boolean: text is true when it is TRUE, WAHR, ON, JA, YES or AN in any letter case, or
    /// evaluates to an integer other than 0; any other value when it is not 0 (a NaN is true).
    bool getB() const;
    /// The text, owned by the value; empty text for any other type (numbers are written by `toStr`). Narrow
    /// text is first turned into wide text in place.
    const wchar_t* getS() const;
    /// The interface, not referenced for the caller; null for any other type.
    IUnknown* getU() const;
    /// The automation interface in the same way.
    IDispatch* getD() const;
    /// The raw pointer; null for any other type.
    void* getP() const;
    /// The array, owned by the value (or by whom a by-reference payload belongs to); null for any other type.
    SAFEARRAY* getArray() const;
    /// The text in the ANSI code page. Valid until the eighth further conversion, of whatever value, on the
    /// same thread, or until that thread ends. Empty text when there is no memory for the thread's texts.
    operator const char*() const;
    /// Writes the value as text to `out` and returns it: numbers with a fraction with 4 digits (32 bits) or 8
    /// (64 bits), TRUE or FALSE, text as it is or in double quotes with `quote`, an object's address, and
    /// anything else as the integer that `getI` gives.
    str& toStr(str& out, bool quote) const;

    /// The raw payload as a 32-bit integer, whatever the type is; through the pointer for a by-reference
    /// value. This and the others of its kind neither convert nor free anything: what is stored there belongs
    /// to the value.
    long& dataI() { return payload<long>(); }
    /// The raw payload as a 64-bit floating point number.
    double& dataF() { return payload<double>(); }
    /// The raw payload as text.
    BSTR& dataS() { return payload<BSTR>(); }
    /// The raw payload as a pointer to narrow text.
    char*& dataC() { return payload<char*>(); }
    /// The raw payload as an interface.
    IUnknown*& dataU() { return payload<IUnknown*>(); }
    /// The raw payload as an automation interface.
    IDispatch*& dataD() { return payload<IDispatch*>(); }
    /// The raw payload as a boolean.
    VARIANT_BOOL& dataB() { return payload<VARIANT_BOOL>(); }
    /// The raw payload as a pointer.
    void*& dataP() { return payload<void*>(); }

private:
    /// The variant that holds the payload: this one, or the one it refers to; an empty one on a null object.
    VARIANT& variant() const;
    /// Type of the target without the by-reference flag.
    int typeTag() const;
    void setTypeTag(VARTYPE type);
    void assignFrom(const VARIANT& source);
    /// The target's payload as a `T`.
    template <class T>
    T& payload() const {
        VARIANT& target = variant();
        const bool indirect = (target.vt & VT_BYREF) && target.byref;
        return *static_cast<T*>(indirect ? target.byref : static_cast<void*>(&target.llVal));
    }
    /// The value of an integer or boolean, else 0.
    long long toInteger() const;
    /// The value of a floating point number or of text, else 0.
    double toFraction() const;
};

// A value is handed to COM as the variant that it is.
static_assert(std::is_standard_layout_v<var> && sizeof(var) == sizeof(VARIANT) &&
              alignof(var) == alignof(VARIANT));
static_assert(offsetof(VARIANT, vt) == 0 && offsetof(VARIANT, llVal) == 8);
static_assert(sizeof(VARIANT) == 8 + 2 * sizeof(void*), "16 bytes in a 32-bit process");

/// A value constructed as a boolean.
class MARVO_API varB : public var {
public:
    /// The boolean.
    varB(bool value) { setB(value); }
};

/// A value constructed as a 32-bit integer.
class MARVO_API varI : public var {
public:
    /// The integer.
    varI(long value) { setI(value); }
};

/// A value constructed as a 64-bit integer.
class MARVO_API varI64 : public var {
public:
    /// The integer.
    varI64(long long value) { setI64(value); }
};

/// A value constructed as text.
class MARVO_API varS : public var {
public:
    /// A copy of the text; null makes an empty text.
    varS(const wchar_t* text) { setS(text); }
};

/// A value constructed as a floating point number.
class MARVO_API varF : public var {
public:
    /// The number.
    varF(double value) { setF(value); }
};

/// A value constructed as an interface, referenced.
class MARVO_API varU : public var {
public:
    /// The interface; may be null.
    varU(IUnknown* object) { setU(object); }
};

/// A value constructed as a raw pointer.
class MARVO_API varP : public var {
public:
    /// The pointer; may be null.
    varP(void* pointer) { setP(pointer); }
};

} // namespace vcore
