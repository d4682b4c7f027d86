#include "core/cstr.h"
#include "core/str.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

using vcore::str;

namespace {

constexpr int fixed = str::narrowStale;

std::wstring text(const str& s) {
    EXPECT_EQ(std::wcslen(s.oleStr()), s.len());
    EXPECT_LE(s.len() + 1, s.bufferSize());
    return s.oleStr();
}

str* volatile noString = nullptr;

} // namespace

TEST(Str, ConstructorsChooseCapacityAndNarrowCopy) {
    struct {
        str s;
        const wchar_t* text;
        unsigned long capacity, memory;
    } const cases[] = {
        {str(), L"", 64, 128},
        {str(L"abc"), L"abc", 4, 8},
        {str(L"abc", 100), L"abc", 100, 200},
        {str("abc"), L"abc", 4, 12},
        {str(static_cast<const wchar_t*>(nullptr), 100), L"", 8, 16},
        {str(static_cast<const char*>(nullptr)), L"", 8, 24},
        {str(16ul, str::keepNarrow), L"", 16, 48},
        {str(*reinterpret_cast<const str*>(1016)), L"", 64, 192},
        {str(CLSID_NULL), L"{00000000-0000-0000-0000-000000000000}", 256, 512},
        {str(vcore::strtoken(L"abcdef", 3)), L"abc", 4, 8},
    };
    for (const auto& c : cases) {
        str copy(c.s);
        EXPECT_EQ(text(c.s), c.text);
        EXPECT_EQ(text(copy), c.text);
        EXPECT_EQ(copy.bufferSize(), c.capacity) << c.text;
        EXPECT_EQ(c.s.memSize(), c.memory) << c.text;
    }
}

TEST(StrDeathTest, ImpossibleCapacitiesAndLengthsStopTheProcess) {
    EXPECT_DEATH(str(65536ul), "");
    EXPECT_DEATH(str(8ul).updateWStr(8), "");
    EXPECT_DEATH(str(8ul).updateStr(8), "");
    str grown(65535ul);
    grown.fill(L'x', 200000);
    EXPECT_EQ(str(grown).len(), 200000u);
}

TEST(Str, AnswersOnANullObject) {
    EXPECT_TRUE(noString->len() == 0 && noString->bufferSize() == 0 && !noString->equal(L"", true));
    EXPECT_STREQ(noString->getStr(), "");
    EXPECT_EQ(text(str(L"x") = *noString), L"");
}

TEST(Str, GrowsByDoublingAndOnlyWhenNeeded) {
    str s(8ul);
    EXPECT_EQ((s = L"1234567").bufferSize(), 8u);
    EXPECT_EQ((s += L'8').bufferSize(), 16u);
    EXPECT_EQ(s.append(std::wstring(100, L'x').c_str()).bufferSize(), 128u);
    EXPECT_EQ(text(s), L"12345678" + std::wstring(100, L'x'));
    EXPECT_EQ((s = L"a").bufferSize(), 128u);
    s.compact();
    EXPECT_EQ(s.bufferSize(), 2u);
    EXPECT_EQ(text(s += L"b"), L"ab");
}

TEST(Str, FixedCapacityTruncates) {
    const wchar_t* digits = L"12345678901234567890";
    EXPECT_EQ(text(str(8ul, fixed) = digits), L"1234567");
    EXPECT_EQ(text((str(8ul, fixed) = L"abcd").append(digits)), L"abcd123");
    EXPECT_EQ(text((str(8ul, fixed) = L"abcd").insert(1, digits)), L"a123456");
    EXPECT_EQ(text(str(8ul, fixed).fill(L'x', 20)), L"xxxxxxx");
    EXPECT_EQ(text(str(8ul, fixed).sprintf(L"%s", digits)), L"1234567");
    EXPECT_FALSE(str(8ul, fixed).allocBuffer(9));
}

TEST(Str, NarrowCopyFollowsTheText) {
    str s(L"a\u00e9z");
    EXPECT_STREQ(s.getStr(), "a\xe9z");
    s += L"\u4e2d!";
    EXPECT_STREQ(s.getStr(), "a\xe9z?!") << "a character that the code page lacks does not end the text";
    s.upper().remove(0, 1);
    EXPECT_STREQ(s.getStr(), "\xc9Z?!");
    s.setStr("n\xe4rrow", 4);
    EXPECT_STREQ(s.getStr(), "n\xe4rr");
    EXPECT_EQ(text(s), L"n\u00e4rr");
    s.append(std::wstring(200, L'y').c_str());
    EXPECT_EQ(std::strlen(s.getStr()), 204u);

    std::strcpy(s.getStr(), "written");
    s.updateStr(4);
    EXPECT_EQ(text(s), L"writ");
    EXPECT_STREQ(s.getStr(), "writ");
    std::wcscpy(s.oleStr(), L"wide");
    s.updateWStr();
    EXPECT_STREQ(s.getStr(), "wide");
}

TEST(Str, ArgumentsMayPointIntoTheString) {
    str s(L"abcdef");
    EXPECT_EQ(text(s.setStr(s.getStr() + 2)), L"cdef");
    EXPECT_EQ(text(s.setStr(s.getStr() + 1, 2)), L"de");
    EXPECT_EQ(text(s = *&s), L"de");
    EXPECT_EQ(text(s.cleanStr(s.oleStr() + 1)), L"d");
}

TEST(Str, TakesNullForEmptyTextAndSurvivesLargeNumbers) {
    constexpr const wchar_t* null = nullptr;
    str s(L"ab");
    s.append(null).insert(0, null).appendPascal(nullptr).trimStr(null).cleanStr(null, L'x', 1, true);
    s += null;
    s.copyTo(static_cast<char*>(nullptr));
    s.copyTo(static_cast<wchar_t*>(nullptr));
    s.toPascal(nullptr);
    EXPECT_FALSE(s.removeTo(null) || s.startsWith(null) || s.endsWith(null) || s.checkCharAtEnd(null));
    EXPECT_EQ(s.findChar(null) + s.findRChar(null), -2);
    EXPECT_EQ(text(s.remove(INT_MIN, str::toEnd).remove(INT_MAX, 1).insert(str::toEnd, L"c", str::toEnd)),
              L"c");
    EXPECT_EQ(s.right(str::toEnd).len() + s.mid(INT_MIN).len() + s.mid(INT_MAX, 1).len(), 2u);
    EXPECT_EQ(s.setWStr(null).len() + s.setStr(nullptr).len() + s.setWStrNet(null, 1).len(), 0u);
    EXPECT_EQ((s = null).len() + s.sprintf(nullptr).len() + str(vcore::strtoken(nullptr, 5)).len(), 0u);
}

TEST(Str, EditsInPlace) {
    EXPECT_EQ(text(str(L"abcdef").remove(-2, 3)), L"bcdef");
    EXPECT_EQ(text(str(L"ab").insert(99, L"xyz", 2)), L"abxy");
    EXPECT_EQ(text(str(L"ab").insert(0, nullptr).append(L"c", 0)), L"ab");
    EXPECT_EQ(text(str(L" \t a b \n").trimStr()), L"a b");
    EXPECT_EQ(text(str(L"xyx").trimStr(L"xy")), L"");
    const wchar_t network[] = {0x4100, 0x4200, 0, 0x4300, 0};
    EXPECT_EQ(text(str().setWStrNet(network, 9)), L"AB");
    EXPECT_EQ(text(str().setWStrNet(network, 1)), L"A");
    EXPECT_EQ(text(str(L"\u00c4B").lower()), L"\u00e4b");

    EXPECT_EQ(text(str(L" a\t b ").cleanStr(L" \t")), L"ab");
    EXPECT_EQ(text(str(L"a \t b  c").cleanStr(L" \t", L'_', 1, false)), L"a_b_c");
    EXPECT_EQ(text(str(L"a12b345").cleanStr(L"ab", L'#', 2, true)), L"a##b##");
    EXPECT_EQ(text(str(L"aab").cleanStr(L"a", L'x', 0, false).cleanStr(nullptr)), L"xxb");

    str s(L"one, two, three");
    EXPECT_TRUE(s.removeTo(L", "));
    EXPECT_FALSE(s.removeTo(L";"));
    EXPECT_EQ(text(s), L"two, three");
    EXPECT_EQ(text(s.tok(L',')), L"two");
    EXPECT_EQ(text(s.tok(L',')), L" three");
    EXPECT_EQ(s.len(), 0u);
}

TEST(Str, KeepsZerosWhereLengthsAreKnown) {
    str s(L"ab");
    s.oleStr()[0] = 0;
    s.updateWStr(2);
    str t;
    t = s;
    t.Append(s).Append(t);
    EXPECT_EQ(std::wstring(t.oleStr(), t.len()), std::wstring(L"\0b\0b\0b\0b", 8));
    EXPECT_TRUE(t == L"" && t.findChar(L'b', 2) == 3 && t.countChar(0) == 4);
    EXPECT_STREQ(t.getStr() + 7, "b");
    EXPECT_EQ((t = s.oleStr()).len(), 0u);
}

TEST(Str, PascalStringsCarryAtMost255Bytes) {
    char out[257];
    std::memset(out, 'z', sizeof out);
    str(L"abc").toPascal(out);
    EXPECT_EQ(std::string(out, 6), std::string("\3abc\0z", 6));
    str s;
    s.fill(L'x', 300);
    out[256] = 'z';
    s.toPascal(out);
    EXPECT_EQ(std::string(out, 257), '\xff' + std::string(255, 'x') + 'z');
    EXPECT_EQ(text(str(L"<").appendPascal("\2ab...")), L"<ab");
}

TEST(Cstr, HoldsACopyOfAnySource) {
    vcore::cstr a(str(L"Abcdefgh").left(6));
    vcore::cstr b(a);
    a.set(a.oleStr() + 2, 3);
    EXPECT_STREQ(a.oleStr(), L"cde");
    EXPECT_TRUE(a.len() == 3 && a.size() == 8);
    a = b;
    b.lower();
    EXPECT_TRUE(a.compareI(b.oleStr()) == 0 && a.compare(b.oleStr()) != 0);
    EXPECT_TRUE(b.findStr(L"ef", 2) == 4 && b.findStr(L"ef", 7) == -1);
    b = static_cast<const wchar_t*>(nullptr);
    EXPECT_EQ(b.len() + b.size(), 0u);
}
