#include "marvo.h"

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <climits>
#include <cmath>
#include <random>
#include <string>
#include <thread>
#include <vector>

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

/// What a value is expected to be, without any of the machinery.
struct Expected {
    VARTYPE type = VT_EMPTY;
    double number = 0;
    std::wstring text{};
    int object = -1;
    std::vector<Expected> elements{};
};

class VarModel : public testing::Test {
protected:
    static constexpr int slots = 12, objectCount = 3;

    int below(int n) { return static_cast<int>(random() % static_cast<unsigned>(n)); }
    void change(int i) {
        const int other = below(slots), object = below(objectCount), n = below(2000001) - 1000000;
        const std::wstring text(static_cast<std::size_t>(below(40)), static_cast<wchar_t>(L'a' + n % 26));
        const std::pair<var, Expected> fresh[] = {{varI(n), {VT_I4, n * 1.0}},
                                                  {varI64(n * (1ll << 32)), {VT_I8, n * 0x1p32}},
                                                  {varF(n / 16.0), {VT_R8, n / 16.0}},
                                                  {varB(n % 2), {VT_BOOL, n % 2 ? -1.0 : 0.0}},
                                                  {varS(text.c_str()), {VT_BSTR, 0, text}},
                                                  {varU(&objects[object]), {VT_UNKNOWN, 0, L"", object}}};
        const unsigned kind = static_cast<unsigned>(below(10));
        if (kind < std::size(fresh)) {
            real[i] = fresh[kind].first;
            model[i] = fresh[kind].second;
        } else if (kind == 6 || other == i) {
            real[i] = real[other];
            model[i] = Expected(model[other]);
        } else if (kind == 7) {
            real[i] = std::move(real[other]);
            model[i] = std::exchange(model[other], {});
        } else if (kind == 8) {
            makeArray(i);
        } else if (!model[i].elements.empty()) { // becomes the first element of its own array
            real[i] = *static_cast<const var*>(real[i].parray->pvData);
            model[i] = Expected(model[i].elements[0]);
        }
    }

    void makeArray(int i) {
        var_array array(below(5));
        Expected e{.type = VT_ARRAY | VT_VARIANT};
        for (int k = 0; k < array.count(); ++k) {
            const int from = below(slots);
            // Few arrays of arrays, or they would grow without bounds.
            const bool plain = !real[from].isArray() || below(8) == 0;
            ASSERT_TRUE(array.set(k, plain ? real[from] : var()));
            e.elements.push_back(plain ? model[from] : Expected{});
        }
        real[i].setArray(array.getArray());
        model[i] = e;
    }

    void compare(const var& v, const Expected& e, std::vector<ULONG>& references) {
        ASSERT_EQ(v.vt, e.type);
        if (e.type != VT_BSTR) {
            ASSERT_EQ(v.getF(), e.number);
        }
        ASSERT_EQ(v.getS(), e.text);
        ASSERT_EQ(v.getU(), e.object < 0 ? nullptr : &objects[e.object]);
        if (e.object >= 0) {
            ++references[e.object];
        }
        const var through = referTo(VT_VARIANT, const_cast<var*>(&v));
        ASSERT_TRUE(through.getS() == e.text && through.getB() == v.getB() && through.getD() == v.getD());
        ASSERT_EQ(v.isArray() ? v.parray->rgsabound[0].cElements : 0, e.elements.size());
        for (std::size_t k = 0; k < e.elements.size(); ++k) {
            compare(static_cast<const var*>(v.parray->pvData)[k], e.elements[k], references);
        }
    }

    std::mt19937 random{20070305};
    std::array<Counting, objectCount> objects;
    std::array<var, slots> real;
    std::array<Expected, slots> model;
};

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
    EXPECT_TRUE(varI64(1).isI() && varI64(1).isI64() && varI(1).isI() && !varI(1).isI64() && varF(1).isF());
    EXPECT_EQ(asText(varS(L"a b"), true), L"\"a b\"");
    EXPECT_STREQ(var(raw(VT_VECTOR | VT_BSTR, 8)).getS(), L"") << "a vector is no text";
}

TEST(Var, TextReadsAsBoolean) {
    for (const wchar_t* yes : {L"yes", L"Ja", L"an", L"TRUE", L"Wahr", L"on", L"3", L"2-1"}) {
        EXPECT_TRUE(varS(yes).getB()) << str(yes).getStr();
    }
    for (const wchar_t* no : {L"no", L"FALSE", L"0", L"", L"0.5", L"yes ", L"1-1"}) {
        EXPECT_FALSE(varS(no).getB()) << str(no).getStr();
    }
}

TEST(Var, OwnsItsText) {
    EXPECT_TRUE(noVar->isEmpty() && noVar->getI() == 0 && !noVar->getB() && noVar->getU() == nullptr);
    EXPECT_STREQ(noVar->getS(), L"");
    var v(L"abc");
    v.setS(v.getS() + 1);
    var copy(v);
    v = *&v;
    EXPECT_STREQ(v.getS(), L"bc");
    v.setEmpty();
    EXPECT_STREQ(static_cast<const char*>(copy), "bc");
    EXPECT_STREQ(var(static_cast<const wchar_t*>(nullptr)).getS(), L"");

    char narrow[] = "2+\xe9";
    v = var(raw(VT_LPSTR, 0));
    v.dataC() = narrow;
    EXPECT_TRUE(v.isC() && static_cast<const char*>(v) == std::string(narrow));
    EXPECT_STREQ(v.getS(), L"2+\u00e9");

    const std::wstring longText(1 << 20, L'7');
    EXPECT_EQ(varS(longText.c_str()).getI(), LONG_MAX);
    EXPECT_EQ(asText(varS(longText.c_str()), true).len(), longText.size() + 2);
}

TEST(Var, NarrowTextsStayForEightConversionsOfTheirThread) {
    std::atomic<int> wrong{0};
    const auto convert = [&](std::string narrow) {
        const std::wstring wide(narrow.begin(), narrow.end());
        for (int i = 0; i < 20000; ++i) {
            const char* const text = varS(wide.c_str());
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

        var held(&object), filled;
        held.setD(object.dispatch());
        held.setD(held.getD());
        VARIANT out{};
        EXPECT_EQ(VariantCopy(&out, &held), S_OK);
        *static_cast<VARIANT*>(&filled) = out; // as a foreign function fills it in
        EXPECT_EQ(object.references, 6u);
    }
    EXPECT_EQ(object.references, 1u);
}

TEST(VarOwnership, ArraysKeepTheirBoundsAndTypes) {
    var_array array(5);
    EXPECT_TRUE(array.create(0) && !array.create(-1) && !array.create(INT_MAX));
    EXPECT_TRUE(array.isArray() && array.count() == 0 && array.get(0).isEmpty() && !array.set(0, 1));
    EXPECT_EQ(var_array(static_cast<SAFEARRAY*>(nullptr)).count(), 0);

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
        list += new var(&object);
        (list += L"text") += static_cast<var*>(nullptr);
        list += static_cast<const wchar_t*>(nullptr);
        EXPECT_TRUE(list.count() == 3u && object.references == 3u);
        EXPECT_TRUE(list[1]->isS() && *list[1]->getS() == L't' && *list[2]->getS() == 0);
    }
    EXPECT_EQ(object.references, 1u);
}

TEST_F(VarModel, BehavesAsASimpleModel) {
    for (int n = 0; n < 50000 && !HasFatalFailure(); ++n) {
        change(below(slots));
        if (n % 4 != 0) {
            continue;
        }
        SCOPED_TRACE(n);
        std::vector<ULONG> references(objectCount, 1);
        for (int i = 0; i < slots; ++i) {
            compare(real[i], model[i], references);
        }
        for (int k = 0; k < objectCount; ++k) {
            ASSERT_EQ(objects[k].references, references[k]) << "object " << k;
        }
    }
    real = {};
    for (const Counting& object : objects) {
        EXPECT_EQ(object.references, 1u);
    }
}
