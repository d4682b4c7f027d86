#include "marvo.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <climits>
#include <cmath>
#include <random>
#include <string>
#include <thread>

using namespace vcore;

namespace {

VARIANT raw(VARTYPE type, long long payload) {
    VARIANT v{};
    v.vt = type;
    v.llVal = payload;
    return v;
}

str asText(const var& v, bool quote = false) {
    str text;
    return v.toStr(text, quote);
}

/// An object that only counts its references, from 1 on.
class Counting : public IUnknown {
public:
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void**) override { return E_NOINTERFACE; }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++references; }
    ULONG STDMETHODCALLTYPE Release() override { return --references; }
    /// As an automation interface of which nothing else may be called.
    IDispatch* dispatch() { return reinterpret_cast<IDispatch*>(static_cast<IUnknown*>(this)); }
    ULONG references = 1;
};

var referTo(VARTYPE type, void* payload) {
    VARIANT v = raw(static_cast<VARTYPE>(VT_BYREF | type), 0);
    v.byref = payload;
    return var(v);
}

/// The value with all its elements as text, by its bare payload; an object is a capital letter.
std::wstring described(const var& v, const Counting* objects) {
    if (v.vt == (VT_ARRAY | VT_VARIANT)) {
        std::wstring all(L"[");
        for (ULONG k = 0; k < v.parray->rgsabound[0].cElements; ++k) {
            all += described(static_cast<const var*>(v.parray->pvData)[k], objects) + L',';
        }
        return all + L']';
    }
    const auto letter = static_cast<wchar_t>(L'A' + (static_cast<const Counting*>(v.punkVal) - objects));
    return v.vt == VT_EMPTY     ? L""
           : v.vt == VT_BSTR    ? v.bstrVal
           : v.vt == VT_UNKNOWN ? std::wstring(1, letter)
                                : std::to_wstring(v.llVal);
}

var* volatile noVar = nullptr;

} // namespace

TEST(Var, ConvertsBetweenTypes) {
    long four = 4;
    const struct {
        var v;
        VARTYPE type;
        long i;
        long long i64;
        double f;
        bool b;
        const wchar_t* text;
    } cases[] = {{var(), VT_EMPTY, 0, 0, 0, false, L"0"},
                 {var(-7), VT_I4, -7, -7, -7, true, L"-7"},
                 {varI64(1ll << 40), VT_I8, 0, 1ll << 40, 0x1p40, true, L"0"},
                 {varB(true), VT_BOOL, -1, -1, -1, true, L"TRUE"},
                 {var(2.75), VT_R8, 2, 2, 2.75, true, L"2.75000000"},
                 {varF(1e300), VT_R8, LONG_MAX, LLONG_MAX, 1e300, true, nullptr},
                 {varF(-HUGE_VAL), VT_R8, LONG_MIN, LLONG_MIN, -HUGE_VAL, true, nullptr},
                 {varS(L"1,5"), VT_BSTR, 1, 1, 1.5, true, L"1,5"},
                 {var(raw(VT_I1, 0xff)), VT_I1, -1, -1, -1, true, L"-1"},
                 {var(raw(VT_UI2, 0xffff)), VT_UI2, 65535, 65535, 65535, true, L"65535"},
                 {var(raw(VT_UI4, 0xffffffff)), VT_UI4, -1, 0xffffffffll, 4294967295.0, true, L"-1"},
                 {var(raw(VT_UI8, -1)), VT_UI8, -1, -1, 0x1p64, true, L"-1"},
                 {var(raw(VT_R4, 0x3fc00000)), VT_R4, 1, 1, 1.5, true, L"1.5000"},
                 {var(raw(VT_DATE, -1)), VT_DATE, 0, 0, 0, false, L"0"},
                 {varP(&four), VT_VOID, 0, 0, 0, false, L"0"}};
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << "type " << c.type << " value " << c.f);
        EXPECT_STREQ(c.v.getS(), c.type == VT_BSTR ? c.text : L"") << "only text is text";
        if (c.text) {
            EXPECT_STREQ(asText(c.v).oleStr(), c.text);
        }
        const var reference = referTo(c.type, const_cast<LONGLONG*>(&c.v.llVal));
        for (const var* v : {&c.v, &reference}) {
            EXPECT_TRUE(v->getI() == c.i && v->getB() == c.b);
            EXPECT_TRUE(v->getI64() == c.i64 && v->getF() == c.f);
        }
        EXPECT_TRUE(c.v.vt == c.type && reference.getP() == c.v.getP());
        EXPECT_EQ(reference.getS(), std::wstring(c.v.getS()));
    }
    EXPECT_TRUE(varF(std::nan("")).getB() && varF(std::nan("")).getI() == 0);
    EXPECT_EQ(asText(varS(L"a b"), true), L"\"a b\"");
    EXPECT_STREQ(var(raw(VT_VECTOR | VT_BSTR, 8)).getS(), L"") << "a vector is no text";
}

TEST(Var, TextReadsAsBoolean) {
    for (const wchar_t* yes : {L"yes", L"Ja", L"an", L"TRUE", L"Wahr", L"on", L"3", L"2-1"}) {
        EXPECT_TRUE(varS(yes).getB()) << str(yes).getStr();
    }
    for (const wchar_t* no : {L"FALSE", L"0", L"", L"0.5", L"yes ", L"1-1"}) {
        EXPECT_FALSE(varS(no).getB()) << str(no).getStr();
    }
}

TEST(Var, OwnsItsText) {
    EXPECT_TRUE(noVar->isEmpty() && noVar->getI() == 0 && !*noVar->getS());
    var v(L"abc");
    v.setS(v.getS() + 1);
    var copy(v);
    v = *&v;
    EXPECT_STREQ(v.getS(), L"bc");
    v.setEmpty();
    EXPECT_STREQ(static_cast<const char*>(copy), "bc");

    char narrow[] = "2+\xe9";
    v = var(raw(VT_LPSTR, 0));
    v.dataC() = narrow;
    EXPECT_TRUE(v.isC() && static_cast<const char*>(v) == std::string(narrow));
    EXPECT_STREQ(v.getS(), L"2+\u00e9");
    EXPECT_EQ(varS(std::wstring(1 << 20, L'7').c_str()).getI(), LONG_MAX);
}

TEST(Var, NarrowTextsStayForEightConversionsOfTheirThread) {
    std::atomic<int> wrong{0};
    const auto convert = [&](std::string narrow) {
        for (int i = 0; i < 20000; ++i) {
            const char* const text = varS(str(narrow.c_str()).oleStr());
            for (int k = 0; k < 7; ++k) {
                wrong += *static_cast<const char*>(varS(L"other")) != 'o';
            }
            wrong += narrow != text;
        }
    };
    std::thread thread(convert, std::string(300, 'b'));
    convert("aa");
    thread.join();
    EXPECT_EQ(wrong, 0);
}

TEST(VarOwnership, BorrowsWhatAReferencePointsTo) {
    Counting object;
    IDispatch* dispatch = object.dispatch();
    BSTR words = SysAllocString(L"yes");
    var_array array(3);
    double number = 2.5;
    {
        const var text = referTo(VT_BSTR, &words), copy(text);
        EXPECT_TRUE(copy.getS() == words && referTo(VT_DISPATCH, &dispatch).getD() == dispatch);
        EXPECT_EQ(referTo(VT_ARRAY | VT_VARIANT, &array.parray).getArray(), array.parray);
        EXPECT_EQ(referTo(VT_VARIANT, &array).getArray(), array.parray);
        referTo(VT_R8, &number).dataF() = 7;
    }
    EXPECT_STREQ(words, L"yes");
    SysFreeString(words);
    EXPECT_TRUE(object.references == 1u && array.count() == 3 && number == 7);
    VARIANT circle = raw(VT_BYREF | VT_VARIANT, 0);
    circle.pvarVal = &circle;
    EXPECT_TRUE(var(circle).getI() == 0 && referTo(VT_I4, nullptr).getI() == 0);
}

TEST(VarOwnership, CopiesOwnTextArraysAndInterfaces) {
    Counting object;
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
        EXPECT_TRUE(array.set(0, array.get(1)));
        EXPECT_STREQ(var_array(all.getArray()).get(0).getS(), L"x") << "the copy does not see the change";

        var held(&object);
        held.setD(object.dispatch());
        held.setD(held.getD());
        EXPECT_EQ(object.references, 5u);
    }
    EXPECT_EQ(object.references, 1u);
}

TEST(VarOwnership, ArraysKeepTheirBoundsAndTypes) {
    var_array array(5);
    EXPECT_TRUE(array.create(0) && !array.create(-1) && !array.create(INT_MAX));
    EXPECT_TRUE(array.isArray() && array.count() == 0 && array.get(0).isEmpty() && !array.set(0, 1));

    SAFEARRAYBOUND bounds[] = {{3, 10}, {2, 0}};
    SAFEARRAY* numbers = SafeArrayCreate(VT_I4, 1, bounds);
    LONG index = 11;
    long seven = 7;
    ASSERT_EQ(SafeArrayPutElement(numbers, &index, &seven), S_OK);
    var_array ints(numbers);
    SafeArrayDestroy(numbers);
    EXPECT_TRUE(ints.vt == (VT_ARRAY | VT_I4) && ints.count() == 3);
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
    Counting object;
    {
        vars values(2);
        values[1] = var(&object);
        const var* const room = values.begin();
        EXPECT_TRUE(values.checkSize(1) && values.count() == 2u && values.begin() == room);
        EXPECT_TRUE(values.checkSize(17) && values.checkSize(33) && values.count() == 33u);
        EXPECT_TRUE(values[1].getU() == &object && values[32].isEmpty() && values[33].isEmpty());
        EXPECT_EQ(object.references, 2u) << "moved, not copied";
        EXPECT_TRUE(!values.checkSize(UINT_MAX) && vars(ULONG_MAX).count() == 0u);
        vars copy(values);
        copy = *&copy;
        EXPECT_EQ(object.references, 3u);
        values.clearAll();
        EXPECT_TRUE(values.count() == 0u && copy.count() == 33u);

        varlist list;
        ((list += new var(&object)) += L"text") += static_cast<var*>(nullptr);
        EXPECT_TRUE(list.count() == 2u && object.references == 3u && *list[1]->getS() == L't');
    }
    EXPECT_EQ(object.references, 1u);
}

TEST(VarOwnership, LastsThroughAnyOrderOfChanges) {
    std::mt19937 random(20070305);
    const auto below = [&](int n) { return static_cast<int>(random() % static_cast<unsigned>(n)); };
    constexpr int slots = 12;
    Counting objects[3];
    var values[slots];
    std::wstring expected[slots];
    const auto change = [&](int at) {
        var_array array(below(5));
        for (int k = 0; k < array.count(); ++k) {
            // Few arrays of arrays, or they would grow without bounds.
            const var& element = values[below(slots)];
            ASSERT_TRUE(array.set(k, element.isArray() && below(8) ? var() : element));
        }
        const std::wstring text(static_cast<std::size_t>(below(40)), L'x');
        const var fresh[] = {varI64(below(9) * (1ll << 32)), varS(text.c_str()), varU(&objects[below(3)]),
                             array};
        const int kind = below(7), other = below(slots);
        const bool hasParts = values[at].isArray() && values[at].parray->rgsabound[0].cElements > 0;
        const var& source = kind < 4                ? fresh[kind]
                            : kind == 4 && hasParts ? *static_cast<const var*>(values[at].parray->pvData)
                                                    : values[other];
        const std::wstring result = described(source, objects);
        if (kind == 6) {
            values[at] = std::move(values[other]);
            expected[other].clear();
        } else {
            values[at] = source;
        }
        expected[at] = result;
    };
    for (int n = 0; n < 12000 && !HasFatalFailure(); ++n) {
        SCOPED_TRACE(n);
        change(below(slots));
        std::wstring all;
        for (int i = 0; i < slots; ++i) {
            ASSERT_EQ(described(values[i], objects), expected[i]);
            all += expected[i];
        }
        for (int i = 0; i < 3; ++i) {
            ASSERT_EQ(objects[i].references, 1u + std::count(all.begin(), all.end(), L'A' + i));
        }
    }
}
