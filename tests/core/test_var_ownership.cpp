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

/// An object that only counts its references, from 1 on.
class counting : public IUnknown {
public:
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void**) override { return E_NOINTERFACE; }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++references; }
    ULONG STDMETHODCALLTYPE Release() override { return --references; }
    /// As an automation interface of which nothing else may be called.
    IDispatch* dispatch() { return reinterpret_cast<IDispatch*>(static_cast<IUnknown*>(this)); }
    ULONG references = 1;
};

var referTo(VARTYPE type, void* payload) {
    VARIANT v{};
    v.vt = static_cast<VARTYPE>(VT_BYREF | type);
    v.byref = payload;
    return var(v);
}

} // namespace

TEST(VarOwnership, BorrowsWhatAReferencePointsTo) {
    counting object;
    IDispatch* dispatch = object.dispatch();
    BSTR words = SysAllocString(L"yes");
    var_array array(3);
    {
        const var text = referTo(VT_BSTR, &words), copy(text);
        EXPECT_EQ(copy.getS(), words);
        EXPECT_EQ(referTo(VT_DISPATCH, &dispatch).getD(), dispatch);
        EXPECT_EQ(referTo(VT_ARRAY | VT_VARIANT, &array.parray).getArray(), array.parray);
        EXPECT_EQ(referTo(VT_VARIANT, &array).getArray(), array.parray);
    }
    EXPECT_STREQ(words, L"yes");
    SysFreeString(words);
    EXPECT_TRUE(object.references == 1u && array.count() == 3);
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
        array = var_array(array.getArray());
        EXPECT_TRUE(array.set(0, array.get(1)));
        EXPECT_EQ(object.references, 4u);
        EXPECT_STREQ(var_array(all.getArray()).get(0).getS(), L"x") << "the copy does not see the change";

        var held(&object), filled;
        held = *&held;
        held.setD(object.dispatch());
        held.setD(held.getD());
        VARIANT out{};
        EXPECT_EQ(VariantCopy(&out, &held), S_OK);
        *static_cast<VARIANT*>(&filled) = out; // as a foreign function fills it in
        EXPECT_EQ(object.references, 6u);
    }
    EXPECT_EQ(object.references, 1u);
    const std::wstring longText(1 << 20, L'7');
    EXPECT_EQ(varS(longText.c_str()).getI(), LONG_MAX);
    str quoted;
    EXPECT_EQ(varS(longText.c_str()).toStr(quoted, true).len(), longText.size() + 2);
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
        EXPECT_TRUE(values[1].getU() == &object && values[32].isEmpty() && values[33].isEmpty());
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
    double number = 0;
    std::wstring text{};
    int object = -1;
    std::vector<expected> elements{};
};

class VarModel : public testing::Test {
protected:
    static constexpr int slots = 12, objectCount = 3;

    int below(int n) { return static_cast<int>(random() % static_cast<unsigned>(n)); }

    void take(int i, const var& value, const expected& e) {
        real[i] = value;
        model[i] = expected(e);
    }

    void change(int i) {
        const int other = below(slots), object = below(objectCount), n = below(2000001) - 1000000;
        const std::wstring text(static_cast<std::size_t>(below(40)), static_cast<wchar_t>(L'a' + n % 26));
        switch (below(10)) {
        case 0:
            return take(i, varI(n), {VT_I4, n * 1.0});
        case 1:
            return take(i, varI64(n * (1ll << 32)), {VT_I8, n * 0x1p32});
        case 2:
            return take(i, varF(n / 16.0), {VT_R8, n / 16.0});
        case 3:
            return take(i, varB(n % 2), {VT_BOOL, n % 2 ? -1.0 : 0.0});
        case 4:
            return take(i, varS(text.c_str()), {VT_BSTR, 0, text});
        case 5:
            return take(i, varU(&objects[object]), {VT_UNKNOWN, 0, L"", object});
        case 6:
            return take(i, real[other], model[other]);
        case 7:
            real[i] = other != i ? std::move(real[other]) : var();
            model[i] = other != i ? std::exchange(model[other], {}) : expected{};
            return;
        case 8:
            return makeArray(i);
        default:
            if (!model[i].elements.empty()) // becomes the first element of its own array
                take(i, *static_cast<const var*>(real[i].parray->pvData), model[i].elements[0]);
        }
    }

    void makeArray(int i) {
        const int n = below(5);
        var_array array(n);
        expected e{.type = VT_ARRAY | VT_VARIANT};
        for (int k = 0; k < n; ++k) {
            const int from = below(slots);
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
        if (e.type != VT_BSTR) {
            ASSERT_EQ(v.getF(), e.number);
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
        change(below(slots));
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
