#include "core/str.h"
#include "core/var.h"
#include "core/var_array.h"
#include "core/varlist.h"
#include "core/vars.h"

#include <gtest/gtest.h>

#include <array>
#include <climits>
#include <random>
#include <string>
#include <vector>

using namespace vcore;

namespace {

/// An automation object that only counts its references, from 1 on.
class counting : public IDispatch {
public:
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void** out) override {
        *out = nullptr;
        return E_NOINTERFACE;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++references; }
    ULONG STDMETHODCALLTYPE Release() override { return --references; }
    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*,
                                     UINT*) override {
        return E_NOTIMPL;
    }
    ULONG references = 1;
};

var referTo(VARTYPE type, void* payload) {
    VARIANT v{};
    v.vt = static_cast<VARTYPE>(VT_BYREF | type);
    v.byref = payload;
    return var(v);
}

} // namespace

TEST(VarOwnership, ReadsByReferencePayloadsOfEveryType) {
    signed char i1 = -1;
    unsigned char ui1 = 255;
    short i2 = -2;
    unsigned short ui2 = 65535;
    long i4 = -4;
    unsigned long ui4 = 0xffffffff;
    long long i8 = -8;
    unsigned long long ui8 = 1ull << 63;
    float r4 = 1.5f;
    double r8 = -2.5;
    VARIANT_BOOL yes = VARIANT_TRUE;
    char narrow[] = "3*4";
    char* text = narrow;
    const struct {
        VARTYPE type;
        void* payload;
        long long i64;
        double f;
    } cases[] = {
        {VT_I1, &i1, -1, -1},    {VT_UI1, &ui1, 255, 255},
        {VT_I2, &i2, -2, -2},    {VT_UI2, &ui2, 65535, 65535},
        {VT_I4, &i4, -4, -4},    {VT_UI4, &ui4, 0xffffffffll, 4294967295.0},
        {VT_INT, &i4, -4, -4},   {VT_UINT, &ui4, 0xffffffffll, 4294967295.0},
        {VT_I8, &i8, -8, -8},    {VT_UI8, &ui8, LLONG_MIN, 0x1p63},
        {VT_R4, &r4, 1, 1.5},    {VT_R8, &r8, -2, -2.5},
        {VT_BOOL, &yes, -1, -1}, {VT_LPSTR, &text, 12, 12},
        {VT_DATE, &r8, 0, 0},
    };
    for (const auto& c : cases) {
        const var reference = referTo(c.type, c.payload);
        EXPECT_EQ(reference.getI64(), c.i64) << c.type;
        EXPECT_EQ(reference.getF(), c.f) << c.type;
        EXPECT_EQ(reference.getB(), c.f != 0) << c.type;
    }

    counting object;
    IDispatch* dispatch = &object;
    BSTR words = SysAllocString(L"yes");
    void* pointer = &object;
    var_array array(3);
    {
        EXPECT_STREQ(referTo(VT_BSTR, &words).getS(), L"yes");
        EXPECT_EQ(referTo(VT_DISPATCH, &dispatch).getD(), dispatch);
        EXPECT_EQ(referTo(VT_DISPATCH, &dispatch).getU(), dispatch);
        EXPECT_EQ(referTo(VT_VOID, &pointer).getP(), pointer);
        EXPECT_EQ(referTo(VT_ARRAY | VT_VARIANT, &array.parray).getArray(), array.parray);
        const var viaVariant = referTo(VT_VARIANT, &array);
        EXPECT_TRUE(viaVariant.isArray() && viaVariant.getArray() == array.parray);
    }
    EXPECT_STREQ(words, L"yes") << "borrowed";
    EXPECT_EQ(object.references, 1u) << "borrowed";
    EXPECT_EQ(array.count(), 3) << "borrowed";
    SysFreeString(words);
    const VARTYPE vector = 0x1000;
    EXPECT_TRUE(var(VARIANT{{{static_cast<VARTYPE>(vector | VT_BSTR), 0, 0, 0, {8}}}}).getS() ==
                std::wstring())
        << "a vector is no text";
}

TEST(VarOwnership, CopiesOwnTextArraysAndInterfaces) {
    counting object;
    {
        var text;
        text.vt = VT_BSTR;
        text.bstrVal = SysAllocStringLen(L"a\0b", 3);
        const var copy(text);
        EXPECT_TRUE(copy.bstrVal != text.bstrVal && SysStringLen(copy.bstrVal) == 3u);

        var_array array(2);
        ASSERT_TRUE(array.set(0, varS(L"x")) && array.set(1, &object));
        EXPECT_FALSE(array.set(2, 1) || array.set(-1, 1) || array.set(0, varP(&object)));
        const var all(array.getArray());
        EXPECT_EQ(object.references, 3u);
        array = var_array(array.getArray());
        EXPECT_TRUE(array.set(0, array.get(1)));
        EXPECT_EQ(object.references, 4u);
        EXPECT_STREQ(var_array(all.getArray()).get(0).getS(), L"x") << "the copy does not see the change";
        static_cast<var&>(array) = *static_cast<var*>(array.parray->pvData);
        EXPECT_EQ(array.getU(), &object) << "assigned from an element of its own";
        EXPECT_EQ(array.count(), 0);
        EXPECT_EQ(object.references, 3u);

        var held(&object), moved(std::move(held));
        EXPECT_TRUE(held.isEmpty());
        moved = *&moved;
        moved.setD(moved.getD());
        moved.setU(moved.getU());
        EXPECT_EQ(object.references, 4u);
        held = std::move(moved);
        EXPECT_TRUE(moved.isEmpty() && held.isU());
        VARIANT out{};
        EXPECT_EQ(VariantChangeType(&out, &held, 0, VT_UNKNOWN), S_OK);
        *static_cast<VARIANT*>(&moved) = out; // as a foreign function fills it in
    }
    EXPECT_EQ(object.references, 1u);
    EXPECT_TRUE(var(static_cast<IUnknown*>(nullptr)).getU() == nullptr);
}

TEST(VarOwnership, ArraysKeepTheirBoundsAndTypes) {
    var_array array(5);
    EXPECT_EQ(array.vt, VT_ARRAY | VT_VARIANT);
    EXPECT_TRUE(array.create(0) && array.count() == 0 && array.isArray());
    EXPECT_FALSE(array.create(-1) || array.create(INT_MAX));
    EXPECT_TRUE(array.isArray() && array.count() == 0 && array.get(0).isEmpty() && !array.set(0, 1));
    EXPECT_EQ(array.getI(), 0);
    EXPECT_EQ(var_array(static_cast<SAFEARRAY*>(nullptr)).count(), 0);

    SAFEARRAYBOUND bounds[] = {{3, 10}, {2, 0}};
    SAFEARRAY* numbers = SafeArrayCreate(VT_I4, 1, bounds);
    LONG index = 11;
    long seven = 7;
    ASSERT_EQ(SafeArrayPutElement(numbers, &index, &seven), S_OK);
    var_array ints(numbers);
    SafeArrayDestroy(numbers);
    EXPECT_EQ(ints.vt, VT_ARRAY | VT_I4);
    EXPECT_EQ(ints.count(), 3);
    EXPECT_TRUE(ints.get(1).getI() == 7 && ints.get(3).isEmpty() && ints.get(-1).isEmpty());
    EXPECT_FALSE(ints.set(1, 8)) << "not made of variants";
    for (const auto& [type, dimensions] : {std::pair<VARTYPE, UINT>{VT_DECIMAL, 1}, {VT_I4, 2}}) {
        SAFEARRAY* const other = SafeArrayCreate(type, dimensions, bounds);
        const var_array odd(other);
        EXPECT_EQ(odd.count(), dimensions == 1 ? 3 : 0);
        EXPECT_TRUE(odd.get(0).isEmpty() && odd.isArray());
        SafeArrayDestroy(other);
    }
}

TEST(VarOwnership, ListsAndArraysOfValuesGrow) {
    counting object;
    {
        vars values(2);
        values[1] = var(&object);
        const var* const room = values.begin();
        EXPECT_TRUE(values.checkSize(1) && values.count() == 2u && values.begin() == room);
        EXPECT_TRUE(values.checkSize(17) && values.checkSize(33));
        EXPECT_EQ(values.count(), 33u);
        EXPECT_TRUE(values[1].getD() == &object && values[32].isEmpty() && values[33].isEmpty());
        EXPECT_EQ(object.references, 2u) << "moved, not copied";
        EXPECT_FALSE(values.checkSize(UINT_MAX));
        vars copy(values);
        copy = values;
        copy = *&copy;
        EXPECT_EQ(object.references, 3u);
        values.clearAll();
        EXPECT_TRUE(values.count() == 0u && copy.count() == 33u);
        EXPECT_EQ(vars(ULONG_MAX).count(), 0u);

        varlist list;
        list += new var(&object);
        (list += L"text") += static_cast<var*>(nullptr);
        list += static_cast<const wchar_t*>(nullptr);
        EXPECT_EQ(list.count(), 3u);
        EXPECT_TRUE(list[1]->isS() && *list[1]->getS() == L't' && *list[2]->getS() == 0);
        EXPECT_EQ(object.references, 3u);
    }
    EXPECT_EQ(object.references, 1u);
}

namespace {

/// What a value is expected to be, without any of the machinery.
struct expected {
    VARTYPE type = VT_EMPTY;
    long long integer = 0;
    double number = 0;
    std::wstring text{};
    int object = -1;
    std::vector<expected> elements{};
};

class VarModel : public testing::Test {
protected:
    static constexpr int slots = 12, objectCount = 3;

    unsigned below(unsigned n) { return static_cast<unsigned>(random()) % n; }

    void change(int i) {
        var& v = real[i];
        expected& e = model[i];
        const int other = static_cast<int>(below(slots));
        const long long integer = static_cast<long long>(random()) << below(33);
        switch (below(14)) {
        case 0:
            v.setI(static_cast<long>(integer));
            e = {.type = VT_I4, .integer = static_cast<long>(integer)};
            break;
        case 1:
            v.setI64(integer);
            e = {.type = VT_I8, .integer = integer};
            break;
        case 2:
            v.setF(static_cast<double>(integer) / 16);
            e = {.type = VT_R8, .number = static_cast<double>(integer) / 16};
            break;
        case 3:
            v.setB(integer % 2);
            e = {.type = VT_BOOL, .integer = integer % 2 ? -1 : 0};
            break;
        case 4: {
            const std::wstring text(below(40), static_cast<wchar_t>(L'a' + below(26)));
            v.setS(text.c_str());
            e = {.type = VT_BSTR, .text = text};
            break;
        }
        case 5: { // from a piece of its own text
            const auto from = static_cast<std::size_t>(below(static_cast<unsigned>(e.text.size()) + 1));
            v.setS(v.getS() + from);
            e = {.type = VT_BSTR, .text = e.text.substr(from)};
            break;
        }
        case 6:
        case 7: {
            const int object = static_cast<int>(below(objectCount));
            below(2) ? v.setU(&objects[object]) : v.setD(&objects[object]);
            e = {.type = v.vt, .object = object};
            break;
        }
        case 8:
            v = real[other];
            e = expected(model[other]);
            break;
        case 9: {
            const VARIANT& plain = real[other];
            v = var(&plain);
            e = expected(model[other]);
            break;
        }
        case 10:
            if (other != i) {
                v = std::move(real[other]);
                e = std::exchange(model[other], {});
            }
            break;
        case 11:
            makeArray(i);
            break;
        case 12:
            if (e.type == (VT_ARRAY | VT_VARIANT) && !e.elements.empty()) { // becomes an element of its own
                const auto at = below(static_cast<unsigned>(e.elements.size()));
                v = static_cast<const var*>(v.parray->pvData)[at];
                e = expected(e.elements[at]);
            }
            break;
        default:
            v.setEmpty();
            e = {};
        }
    }

    void makeArray(int i) {
        const int n = static_cast<int>(below(5));
        var_array array(n);
        expected e{.type = VT_ARRAY | VT_VARIANT};
        for (int k = 0; k < n; ++k) {
            const int from = static_cast<int>(below(slots));
            // Few arrays of arrays, or they would grow without bounds.
            const bool plain = !real[from].isArray() || below(8) == 0;
            ASSERT_TRUE(array.set(k, plain ? real[from] : var()));
            e.elements.push_back(plain ? model[from] : expected{});
        }
        real[i].setArray(array.getArray());
        model[i] = e;
    }

    void compare(const var& v, const expected& e, std::vector<ULONG>& references) {
        ASSERT_EQ(v.vt, e.type);
        const bool whole = e.type == VT_I4 || e.type == VT_I8 || e.type == VT_BOOL;
        if (whole) {
            ASSERT_EQ(v.getI64(), e.integer);
        }
        if (e.type != VT_BSTR) {
            ASSERT_EQ(v.getF(), whole ? static_cast<double>(e.integer) : e.number);
        }
        ASSERT_EQ(v.getS(), e.text);
        ASSERT_EQ(v.getU(), e.object < 0 ? nullptr : &objects[e.object]);
        if (e.object >= 0)
            ++references[e.object];
        const var through = referTo(VT_VARIANT, const_cast<var*>(&v));
        ASSERT_TRUE(through.getS() == e.text && through.getB() == v.getB() && through.getD() == v.getD());
        ASSERT_EQ(v.isArray() ? v.parray->rgsabound[0].cElements : 0, e.elements.size());
        for (std::size_t k = 0; k < e.elements.size(); ++k)
            compare(static_cast<const var*>(v.parray->pvData)[k], e.elements[k], references);
    }

    std::mt19937 random{20070305};
    std::array<counting, objectCount> objects;
    std::array<var, slots> real;
    std::array<expected, slots> model;
};

} // namespace

TEST_F(VarModel, BehavesAsASimpleModel) {
    constexpr int operations = 50000;
    for (int n = 0; n < operations && !HasFatalFailure(); ++n) {
        change(static_cast<int>(below(slots)));
        if (n % 4 != 0)
            continue;
        SCOPED_TRACE(n);
        std::vector<ULONG> references(objectCount, 1);
        for (int i = 0; i < slots; ++i)
            compare(real[i], model[i], references);
        for (int k = 0; k < objectCount; ++k)
            ASSERT_EQ(objects[k].references, references[k]) << "object " << k;
    }
    real = {};
    for (const counting& object : objects)
        EXPECT_EQ(object.references, 1u);
}
