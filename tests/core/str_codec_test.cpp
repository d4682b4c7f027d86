#include "marvo/core/str.h"

#include <gtest/gtest.h>

#include <climits>
#include <clocale>
#include <cmath>
#include <cstdarg>
#include <string>

using vcore::str;

namespace {

std::wstring text(const str& s) {
    EXPECT_EQ(s.oleStr()[s.len()], 0);
    return {s.oleStr(), s.len()};
}

} // namespace

TEST(StrCodec, WritesUTF8ForNarrowAndWideReaders) {
    const str source(L"a\u00e9\u20ac\U0001d11e\xd834\xdd1e \xd834! \xdd1e");
    str s;
    const char* const expected =
        "a\xc3\xa9\xe2\x82\xac\xf0\x9d\x84\x9e\xf0\x9d\x84\x9e \xef\xbf\xbd! \xef\xbf\xbd";
    EXPECT_STREQ(s.encodeUTF8(&source).getStr(), expected);
    EXPECT_EQ(text(s), text(str(expected)));
    EXPECT_EQ(text(s.decodeUTF8(&s)), L"a\u00e9\u20ac\U0001d11e\U0001d11e \ufffd! \ufffd");
    EXPECT_EQ(s.encodeUTF8(nullptr).len() + s.decodeUTF8(nullptr).len() + s.encodeBase64(nullptr).len(), 0u);
    EXPECT_EQ(text(str(8ul, str::narrowStale).encodeUTF8(&source)), text(str(expected)).substr(0, 7));
}

TEST(StrCodec, ReplacesEachInvalidPieceOfUTF8Once) {
    // How many pieces there are in following bytes alone; in overlong forms of two, three and four bytes; in
    // a surrogate; beyond the last code point; in what is cut before another character and at the end.
    const std::pair<const char*, int> cases[] = {
        {"\x80\xbf", 2},         {"\xc0\xaf", 2},     {"\xe0\x9f\xbf", 3},
        {"\xf0\x8f\xbf\xbf", 4}, {"\xed\xa0\x80", 3}, {"\xf4\x90\x80\x80", 4},
        {"\xf5\xff", 2},         {"\xe2\x82", 1},     {"\xf0\x9d\x84", 1}};
    for (const auto& [bytes, pieces] : cases) {
        for (const wchar_t* next : {L".", L""}) {
            const str source(str(bytes) + next);
            EXPECT_EQ(text(str().decodeUTF8(&source)), std::wstring(pieces, L'\ufffd') + next) << bytes;
        }
    }
    const str last("\xf4\x8f\xbf\xbf\xed\x9f\xbf");
    EXPECT_EQ(text(str().decodeUTF8(&last)), L"\U0010ffff\ud7ff");
    str noBytes(L"\xe2\u4e2d");
    EXPECT_EQ(text(noBytes.decodeUTF8(&noBytes)), L"\ufffd\ufffd");
}

TEST(StrCodec, WritesBase64) {
    const wchar_t* const cases[][2] = {{L"", L""},
                                       {L"f", L"Zg=="},
                                       {L"fo", L"Zm8="},
                                       {L"foob", L"Zm9vYg=="},
                                       {L"\xfb\xff\xbf", L"+/+/"},
                                       {L"\u4e2d", L"Pw=="}};
    for (const auto& c : cases) {
        str s(c[0]);
        EXPECT_EQ(text(s.encodeBase64(&s)), c[1]);
    }
}

TEST(StrCodec, ThreeCharactersForEachReturnToTheText) {
    str all;
    for (unsigned int c = 1; c < 0x10000; ++c) {
        all.appendChar(static_cast<wchar_t>(c));
    }
    all.Append(str().fill(0, 2));
    const char digits41[] = "\xff 0123456789abcdefghijklmnopqrstuvwxyz,.;!";
    for (const char* alphabet : {static_cast<const char*>(nullptr), digits41}) {
        str s(all);
        ASSERT_TRUE(s.u4code(alphabet) && s.isU4Codec(alphabet) && s.len() == 3 * all.len());
        ASSERT_TRUE(s.u4decode(alphabet));
        EXPECT_EQ(text(s), text(all));
    }
    str s(L"A");
    EXPECT_TRUE(s.u4code() && s == L"ABB");
    for (const wchar_t* wrong : {L"AB", L"ABBA", L"AB+", L"AB\u4e2d"}) {
        EXPECT_FALSE((s = wrong).isU4Codec() || s.u4decode());
        EXPECT_EQ(s, wrong);
    }
    EXPECT_TRUE((s = L"___").u4decode() && s == L"\ufffd");
    EXPECT_TRUE((s = L"").isU4Codec("") && s.u4decode());
    s = L"abc";
    EXPECT_TRUE(s.isU4Codec("cba") && !s.u4decode("cba") && !s.u4code("cba") &&
                !s.u4code(std::string(41, 'x').c_str()));
    EXPECT_EQ(s, L"abc");
}

TEST(StrCodec, ReadsEscapesWithAllTheirQuirks) {
    str s;
    EXPECT_EQ(text(s.setRegExpression("\\\\\\a\\b\\e\\f\\n\\r\\t\\v\\.\\\"\\y\\1\\\xe9\\")),
              L"\\\a\b\x1b\f\n\r\t\v.\"y1\u00e9");
    EXPECT_EQ(text(s.setRegExpression("\\u4e2d\\x41\\0---\\u0042\\u20AC\\u12")),
              L"\u4e2d\u4e41\u4e41\x42\u20ac");
    EXPECT_EQ(text(s.setRegExpression("\\0---!\\x00a\\cbc\\c")), L"!ac");
    EXPECT_EQ(text(s.setRegExpression("\\u41-2\\x4z")), L"A\x414");
    for (const char* nothing : {static_cast<const char*>(nullptr), "", "\\x4", "\\0--"}) {
        EXPECT_EQ(text(str(L"old").setRegExpression(nothing)), L"");
    }
    s = "\\x41\\x42";
    EXPECT_EQ(text(s.setRegExpression(s.getStr())), L"AB");
    EXPECT_EQ(s.getRegExpression().len(), 0u);
}

TEST(StrCodec, DigestsAsPublished) {
    constexpr unsigned char text[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789";
    EXPECT_EQ(str::md5(text, 62), L"d174ab98d277d9f5a5611c2c9f419d9f");
    const std::string million(1000000, 'a');
    EXPECT_EQ(str::md5(reinterpret_cast<const unsigned char*>(million.data()), 1000000),
              L"7707d6ae4e027c70eea2a935c2296f21");
    EXPECT_EQ(str::md5(nullptr, 9), L"d41d8cd98f00b204e9800998ecf8427e");
}

TEST(StrCodec, CodePagesReplaceWhatTheyLack) {
    str s;
    EXPECT_EQ(text(s.locale("\xe9\x80", 1252)), L"\u00e9\u20ac");
    EXPECT_EQ(text(s.locale(L"a\u00e9\u4e2dz", 1252)), L"a\u00e9?z");
    EXPECT_EQ(text(s.locale(L"a\u4e2dz", CP_UTF8)), L"a\u4e2dz");
    EXPECT_EQ(text(s.locale(s.oleStr() + 1, 54321)), L"?z") << "no such code page";
    EXPECT_EQ(text(s.locale("a\xe9z", 54321)), L"a?z");
}

TEST(StrNumber, ReadsNumbersAndTellsWhereTheyStop) {
    const struct {
        const wchar_t* text;
        double value;
        int stop;
    } cases[] = {{L"12.5x", 12.5, 4}, {L" -3", -3, 3},    {L"1e3.", 1000, 3},      {L"1e", 1, 1},
                 {L".5", 0.5, 2},     {L"0x1F!", 31, 4},  {L"-0x10", -16, 5},      {L"0xg", 0, 1},
                 {L"", 0, 0},         {L"  abc", 0, 0},   {L"nan", 0, 0},          {L"infinity", 0, 0},
                 {L"+-1", 0, 0},      {L"1.2.3", 1.2, 3}, {L"1e999", HUGE_VAL, 5}, {L"1e-999", 0, 6}};
    for (const auto& c : cases) {
        const str s(c.text);
        wchar_t* end = nullptr;
        EXPECT_TRUE(s.toDouble(&end) == c.value && end - s.oleStr() == c.stop) << c.text;
    }
    const str whole(L" 08.09");
    wchar_t* end = nullptr;
    EXPECT_TRUE(whole.toLong(&end) == 8 && end == whole.oleStr() + 3);
    EXPECT_TRUE(str(L"99999999999").toLong() == LONG_MAX && str(L"-99999999999").toInt64() == -99999999999);
}

TEST(StrNumber, WritesNumbers) {
    EXPECT_TRUE(str::toStr(1.5, 2) == L"1.50" && str::toStr(100, 0) == L"100" &&
                str::toStr(-0.125, 1) == L"-0.125");
    EXPECT_TRUE(str::toStr(1.0 / 3, 2) == L"0.333333333333" && str::toStr(1, 20) == L"1.000000000000");
    EXPECT_EQ(str::toStr(-1.7e308, 0).len(), 310u);
    EXPECT_TRUE(str::toStr(-HUGE_VAL, 1) == L"-inf" && str::toStr(1e22, 1) == L"10000000000000000000000.0");
    // A host's locale with a decimal comma.
    EXPECT_TRUE(std::setlocale(LC_NUMERIC, "German"));
    EXPECT_TRUE(str::toStr(0.1, 1) == L"0.1");
    std::setlocale(LC_NUMERIC, "C");
}

TEST(StrNumber, FormatsWideTextAndNumbersAlikeOnBothTargets) {
    str s;
    s.sprintf(L"%s|%c|%S|%05d|%08x|%8.3f|%I64d|%lld|%%", L"w\u00e9", L'x', "n", 42, 0xbeefu, 1.5, 1ll << 40,
              -1ll);
    EXPECT_EQ(s, L"w\u00e9|x|n|00042|0000beef|   1.500|1099511627776|-1|%");
    const std::wstring longText(5000, L'l');
    EXPECT_EQ(s.sprintf(L"%s%s", longText.c_str(), longText.c_str()).len(), 10000u);
    const auto addArgs = [](str* out, ...) {
        va_list args;
        va_start(args, out);
        out->sprintfArgs(str(L"%d,%s"), args, true);
        va_end(args);
    };
    addArgs(&(s = L"<"), 8, L"y");
    EXPECT_EQ(s, L"<8,y");
}

TEST(StrNumber, FormatsOneIntegerWhateverTheFormat) {
    EXPECT_TRUE(str().Format(-42, L"%05d!") == L"-0042!" && str().Format(-42, L"%x") == L"ffffffd6");
    EXPECT_EQ(str().Format(-42, L"100%% %i"), L"100% -42");
    for (const wchar_t* bad : {static_cast<const wchar_t*>(nullptr), L"", L"%s", L"%d%d", L"%*d", L"%",
                               L"%4000d", L"%n", L"%lld"}) {
        EXPECT_EQ(str().Format(-42, bad), L"-42") << str(bad).getS();
    }
    str own(L"<%d>");
    EXPECT_EQ(own.Format(INT_MIN, own.oleStr()), L"<-2147483648>");
}

TEST(StrNumber, FormatsTimesWithAnyFields) {
    std::tm when{9, 0, 14, 5, 2, 107, 1, 63, 0};
    str s;
    EXPECT_EQ(s.time(L"%A %d. %b %Y, %H:%M:%S|%F|%T|%j|\u4e2d|%%|%Q|%", &when),
              L"Monday 05. Mar 2007, 14:00:09|2007-03-05|14:00:09|064|\u4e2d|%|%Q|%");
    when = {INT_MAX, -1, 99, 0, 12, -5000, 7, INT_MIN, 0};
    EXPECT_EQ(s.time(L"%H:%M:%S %d.%m.%Y %w %j", &when), L"23:00:59 01.12.0000 6 001");
    EXPECT_EQ(s.time(L"%Y", nullptr).len() + s.time(nullptr, &when).len(), 0u);
}

TEST(StrNumber, CalculatesFromLeftToRight) {
    const struct {
        const wchar_t* text;
        double value;
    } cases[] = {{L"1,5*2", 3}, {L"(10/0)", 10}, {L"3>=3", 1},   {L"2+3*4", 20},  {L"10/4", 2.5},
                 {L"3<=2", 0},  {L"2==2", 1},    {L"2!=2", 0},   {L"2<2", 0},     {L"2>2", 0},
                 {L"3=7", 7},   {L"3!7", 7},     {L"2 + 3", 2},  {L"2+ 3", 5},    {L"2*-3", 6},
                 {L"1+", 1},    {L"1+x", 1},     {L"1+abc2", 1}, {L"0x10+1", 17}, {L" [ 4-1 ] ", 3},
                 {L"abc", 0},   {L"-2-1", -3},   {L"5&2+1", 6}};
    for (const auto& c : cases) {
        EXPECT_EQ(str(c.text).calculate(), c.value) << c.text;
    }
}
