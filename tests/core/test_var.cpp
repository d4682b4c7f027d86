#include "core/str.h"
#include "core/var.h"

#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <limits>
#include <string>

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

var* volatile noVar = nullptr;

} // namespace

TEST(Var, ConvertsBetweenTypes) {
    long four = 4;
    long long big = 1ll << 40;
    bool yes = true;
    const struct {
        var v;
        VARTYPE type;
        long i;
        long long i64;
        double f;
        bool b;
        const wchar_t* text;
    } cases[] = {
        {var(), VT_EMPTY, 0, 0, 0, false, L"0"},
        {var(-7), VT_I4, -7, -7, -7, true, L"-7"},
        {var(big), VT_I8, 0, big, 0x1p40, true, L"0"},
        {var(yes), VT_BOOL, -1, -1, -1, true, L"TRUE"},
        {varB(false), VT_BOOL, 0, 0, 0, false, L"FALSE"},
        {var(2.75), VT_R8, 2, 2, 2.75, true, L"2.75000000"},
        {varF(1.0 / 3), VT_R8, 0, 0, 1.0 / 3, true, L"0.33333333"},
        {varF(1e300), VT_R8, LONG_MAX, LLONG_MAX, 1e300, true, nullptr},
        {varF(-HUGE_VAL), VT_R8, LONG_MIN, LLONG_MIN, -HUGE_VAL, true, nullptr},
        {varS(L"1,5"), VT_BSTR, 1, 1, 1.5, true, L"1,5"},
        {varS(L"10/4"), VT_BSTR, 2, 2, 2.5, true, L"10/4"},
        {varI64(-1), VT_I8, -1, -1, -1, true, L"-1"},
        {var(raw(VT_I1, 0xff)), VT_I1, -1, -1, -1, true, L"-1"},
        {var(raw(VT_UI2, 0xffff)), VT_UI2, 65535, 65535, 65535, true, L"65535"},
        {var(raw(VT_UI4, 0xffffffff)), VT_UI4, -1, 0xffffffffll, 4294967295.0, true, L"-1"},
        {var(raw(VT_UI8, -1)), VT_UI8, -1, -1, 0x1p64, true, L"-1"},
        {var(raw(VT_R4, 0x3fc00000)), VT_R4, 1, 1, 1.5, true, L"1.5000"},
        {var(raw(VT_DATE, -1)), VT_DATE, 0, 0, 0, false, L"0"},
        {varP(&four), VT_VOID, 0, 0, 0, false, L"0"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << "type " << c.type << " value " << c.f);
        EXPECT_EQ(c.v.vt, c.type);
        EXPECT_EQ(c.v.getI(), c.i);
        EXPECT_EQ(c.v.getI64(), c.i64);
        EXPECT_EQ(c.v.getF(), c.f);
        EXPECT_EQ(c.v.getB(), c.b);
        EXPECT_STREQ(c.v.getS(), c.type == VT_BSTR ? c.text : L"") << "only text is text";
        if (c.text) {
            EXPECT_STREQ(asText(c.v).oleStr(), c.text);
        }
        VARIANT place = raw(static_cast<VARTYPE>(VT_BYREF | c.type), 0);
        place.byref = const_cast<LONGLONG*>(&c.v.llVal);
        const var reference(place);
        EXPECT_TRUE(reference.getI() == c.i && reference.getI64() == c.i64 && reference.getF() == c.f);
        EXPECT_TRUE(reference.getB() == c.b && reference.getP() == c.v.getP());
        EXPECT_EQ(reference.getS(), std::wstring(c.v.getS()));
    }
    EXPECT_TRUE(varF(std::numeric_limits<double>::quiet_NaN()).getB());
    EXPECT_EQ(varF(std::numeric_limits<double>::quiet_NaN()).getI(), 0);
    EXPECT_TRUE(varI64(1).isI() && varI64(1).isI64() && varI(1).isI() && !varI(1).isI64() && varF(1).isF());
    EXPECT_EQ(asText(varS(L"a b"), true), L"\"a b\"");
    EXPECT_STREQ(var(raw(VT_VECTOR | VT_BSTR, 8)).getS(), L"") << "a vector is no text";
}

TEST(Var, TextReadsAsBoolean) {
    for (const wchar_t* yes : {L"yes", L"Ja", L"an", L"TRUE", L"Wahr", L"on", L"3", L"2-1"})
        EXPECT_TRUE(varS(yes).getB()) << str(yes).getStr();
    for (const wchar_t* no : {L"no", L"FALSE", L"0", L"", L"0.5", L"yes ", L"1-1"})
        EXPECT_FALSE(varS(no).getB()) << str(no).getStr();
}

TEST(Var, OwnsItsText) {
    var v(L"abc");
    v.setS(v.getS() + 1);
    EXPECT_STREQ(v.getS(), L"bc");
    var copy(v);
    v = *&v;
    v.setEmpty();
    EXPECT_STREQ(copy.getS(), L"bc");
    VARIANT foreign{};
    ASSERT_EQ(VariantCopy(&foreign, &copy), S_OK) << "COM takes it for a variant";
    EXPECT_STREQ(var(foreign).getS(), L"bc");
    VariantClear(&foreign);
    EXPECT_STREQ(static_cast<const char*>(copy), "bc");
    EXPECT_STREQ(var(static_cast<const wchar_t*>(nullptr)).getS(), L"");

    char narrow[] = "2+\xe9";
    v = var(raw(VT_LPSTR, 0));
    v.dataC() = narrow;
    EXPECT_TRUE(v.isC());
    EXPECT_STREQ(static_cast<const char*>(v), narrow);
    EXPECT_STREQ(v.getS(), L"2+\u00e9");
    EXPECT_TRUE(v.isS());
}

TEST(Var, ReadsThroughReferences) {
    double number = 2.5;
    VARIANT v = raw(VT_BYREF | VT_R8, 0);
    v.pdblVal = &number;
    var reference(v);
    EXPECT_EQ(reference.getI(), 2);
    reference.dataF() = 7;
    EXPECT_EQ(number, 7);

    var target(L"6*7");
    VARIANT toVariant = raw(VT_BYREF | VT_VARIANT, 0);
    toVariant.pvarVal = &target;
    EXPECT_EQ(var(toVariant).getI(), 42);
    EXPECT_STREQ(var(toVariant).getS(), L"6*7");

    toVariant.pvarVal = &toVariant;
    EXPECT_EQ(var(toVariant).getI(), 0) << "a circle ends";
    EXPECT_EQ(var(raw(VT_BYREF | VT_I4, 0)).getI(), 0) << "a reference to nothing";
}

TEST(Var, ANullObjectReadsAsEmpty) {
    EXPECT_TRUE(noVar->isEmpty() && noVar->getI() == 0 && !noVar->getB() && noVar->getU() == nullptr);
    EXPECT_STREQ(noVar->getS(), L"");
}
