#include "core/str.h"

#include <gtest/gtest.h>

#include <clocale>
#include <string>

using vcore::str;

namespace {

std::wstring text(const str& s) {
    EXPECT_EQ(s.oleStr()[s.len()], 0);
    return {s.oleStr(), s.len()};
}

std::wstring decoded(const char* bytes) {
    const str source(bytes);
    return text(str().decodeUTF8(&source));
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
    str zeros;
    zeros.fill(0, 3);
    EXPECT_EQ(zeros.encodeUTF8(&zeros).len(), 3u);
    EXPECT_EQ(text(str(8ul, str::narrowStale).encodeUTF8(&source)), text(str(expected)).substr(0, 7));
}

TEST(StrCodec, ReplacesEachInvalidPieceOfUTF8Once) {
    const struct {
        const char* bytes;
        const wchar_t* text;
    } cases[] = {
        {"\x80\xbf.", L"\ufffd\ufffd."},                     // following bytes alone
        {"\xc0\xaf.", L"\ufffd\ufffd."},                     // overlong in two bytes
        {"\xe0\x9f\xbf.", L"\ufffd\ufffd\ufffd."},           // in three
        {"\xf0\x8f\xbf\xbf.", L"\ufffd\ufffd\ufffd\ufffd."}, // in four
        {"\xed\xa0\x80.", L"\ufffd\ufffd\ufffd."},           // a surrogate
        {"\xf4\x90\x80\x80.", L"\ufffd\ufffd\ufffd\ufffd."}, // beyond the last code point
        {"\xf5\xff.", L"\ufffd\ufffd."},
        {"\xe2\x82.", L"\ufffd."},   // cut before another character
        {"\xf0\x9d\x84", L"\ufffd"}, // and at the end
        {"\xe2", L"\ufffd"},
        {"\xf4\x8f\xbf\xbf\xed\x9f\xbf", L"\U0010ffff\ud7ff"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(decoded(c.bytes), c.text) << c.bytes;
    const str noBytes(L"\xe2\u4e2d");
    EXPECT_EQ(text(str().decodeUTF8(&noBytes)), L"\ufffd\ufffd");
}

TEST(StrCodec, WritesBase64) {
    const wchar_t* const cases[][2] = {
        {L"", L""},           {L"f", L"Zg=="},        {L"fo", L"Zm8="},
        {L"foo", L"Zm9v"},    {L"foob", L"Zm9vYg=="}, {L"\xfb\xff\xbf", L"+/+/"},
        {L"\u4e2d", L"Pw=="},
    };
    for (const auto& c : cases) {
        str s(c[0]);
        EXPECT_EQ(text(s.encodeBase64(&s)), c[1]);
    }
}

TEST(StrCodec, ThreeCharactersForEachReturnToTheText) {
    str all;
    for (unsigned int c = 1; c < 0x10000; ++c)
        all.appendChar(static_cast<wchar_t>(c));
    all.Append(str().fill(0, 2));
    const char digits41[] = "\xff"
                            "0123456789 abcdefghijklmnopqrstuvwxyz,.;!";
    for (const char* alphabet : {static_cast<const char*>(nullptr), digits41}) {
        str s(all);
        ASSERT_TRUE(s.u4code(alphabet) && s.isU4Codec(alphabet));
        EXPECT_EQ(s.len(), 3 * all.len());
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
    s.Clear();
    EXPECT_TRUE(s.isU4Codec("") && s.u4decode());
    s = L"abc";
    EXPECT_TRUE(s.isU4Codec("cba") && !s.u4decode("cba") && !s.u4code("cba") &&
                !s.u4code(std::string(41, 'x').c_str()));
    EXPECT_EQ(s, L"abc");
}

TEST(StrCodec, ReadsEscapesWithAllTheirQuirks) {
    const struct {
        const char* escaped;
        const wchar_t* text;
    } cases[] = {
        {"a\\tb\\x41", L"a\tbA"},
        {"\\\\\\a\\b\\e\\f\\n\\r\\t\\v", L"\\\a\b\x1b\f\n\r\t\v"},
        {"\\.\\\"\\y\\~\\d\\1\\\xe9", L".\"y~d1\u00e9"},
        {"a\\", L"a"},
        {"a\\cbc\\c", L"ac"},
        {"\\u4e2d\\x41\\0---\\u0042", L"\u4e2d\u4e41\u4e41"
                                      L"B"},
        {"\\u20AC\\u12", L"\u20ac"},
        {"\\x4", L""},
        {"\\0--", L""},
        {"\\0---!\\x00", L"!"},
        {"\\u41-2\\x4z", L"A\x414"},
        {"", L""},
        {nullptr, L""},
    };
    for (const auto& c : cases)
        EXPECT_EQ(text(str(L"old").setRegExpression(c.escaped)), c.text) << (c.escaped ? c.escaped : "null");
    str s("\\x41\\x42");
    EXPECT_EQ(text(s.setRegExpression(s.getStr())), L"AB");
    EXPECT_EQ(s.getRegExpression().len(), 0u);
}

TEST(StrCodec, DigestsAsPublished) {
    const struct {
        std::string data;
        const wchar_t* digest;
    } cases[] = {
        {"", L"d41d8cd98f00b204e9800998ecf8427e"},
        {"abc", L"900150983cd24fb0d6963f7d28e17f72"},
        {"message digest", L"f96b697d7cb7938d525a2f31aaf161d0"},
        {"ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789",
         L"d174ab98d277d9f5a5611c2c9f419d9f"},
        {"1234567890123456789012345678901234567890123456789012345678901234567890123456789"
         "0",
         L"57edf4a22be3c955ac49da2e2107b67a"},
        {std::string(1000000, 'a'), L"7707d6ae4e027c70eea2a935c2296f21"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(str::md5(reinterpret_cast<const unsigned char*>(c.data.data()),
                           static_cast<unsigned long>(c.data.size())),
                  c.digest);
    EXPECT_EQ(str::md5(nullptr, 9), L"d41d8cd98f00b204e9800998ecf8427e");
}

TEST(StrCodec, CodePagesReplaceWhatTheyLack) {
    str s;
    EXPECT_EQ(text(s.locale("\xe9\x80", 1252)), L"\u00e9\u20ac");
    EXPECT_EQ(text(s.locale("\xc3\xa9!", CP_UTF8)), L"\u00e9!");
    EXPECT_EQ(text(s.locale(L"a\u00e9\u4e2dz", 1252)), L"a\u00e9?z");
    EXPECT_EQ(text(s.locale(L"a\u4e2dz", CP_UTF8)), L"a\u4e2dz");
    EXPECT_EQ(text(s.locale(s.oleStr() + 1, 54321)), L"?z") << "there is no such code page";
    EXPECT_EQ(text(s.locale("a\xe9z", 54321)), L"a?z");
    EXPECT_EQ(s.locale(static_cast<const char*>(nullptr)).len() + s.locale(L"").len(), 0u);
    std::setlocale(LC_ALL, "C");
    EXPECT_STREQ((s = L"a\u4e2dz").getStr(), "a?z") << "the host's C locale does not matter";
}
