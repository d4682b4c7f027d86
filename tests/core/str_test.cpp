#include "marvo/core/cstr.h"
#include "marvo/core/str.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

using vcore::str;
using vcore::strtoken;

namespace {

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
    } const cases[] = {{str(), L"", 64, 128},
                       {str(L"abc", 100), L"abc", 100, 200},
                       {str("abc"), L"abc", 4, 12},
                       {str(static_cast<const wchar_t*>(nullptr), 100), L"", 8, 16},
                       {str(16ul, str::keepNarrow), L"", 16, 48},
                       {str(*reinterpret_cast<const str*>(1016)), L"", 64, 192},
                       {str(CLSID_NULL), L"{00000000-0000-0000-0000-000000000000}", 256, 512},
                       {str(strtoken(L"abcdef", 3)), L"abc", 4, 8}};
    for (const auto& c : cases) {
        str copy(c.s);
        EXPECT_TRUE(text(c.s) == c.text && text(copy) == c.text) << c.text;
        EXPECT_TRUE(copy.bufferSize() == c.capacity && c.s.memSize() == c.memory) << c.text;
    }
}

TEST(StrDeathTest, ImpossibleCapacitiesAndLengthsStopTheProcess) {
    EXPECT_DEATH(str(65536ul), "");
    EXPECT_DEATH(str(8ul).updateWStr(8), "");
    EXPECT_DEATH(str(8ul).updateStr(8), "");
    EXPECT_EQ(str(str(65535ul).fill(L'x', 200000)).len(), 200000u);
}

TEST(Str, NarrowCopyFollowsTheText) {
    str s(L"a\u00e9z");
    EXPECT_STREQ(s.getStr(), "a\xe9z");
    s += L"\u4e2d!";
    EXPECT_STREQ(s.getStr(), "a\xe9z?!") << "a character that the code page lacks does not end the text";
    EXPECT_STREQ(s.upper().getStr(), "A\xc9Z?!");
    EXPECT_STREQ(s.lower().getStr(), "a\xe9z?!");
    std::strcpy(s.getStr(), "written");
    s.updateStr(4);
    EXPECT_EQ(text(s), L"writ");
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

TEST(Str, EditsInPlace) {
    const wchar_t network[] = {0x4100, 0x4200, 0, 0x4300, 0};
    EXPECT_TRUE(str().setWStrNet(network, 9) == L"AB" && str().setWStrNet(network, 1) == L"A");
    EXPECT_EQ(text(str(L" \t \u00c4 B \n").trimStr().lower()), L"\u00e4 b");
    EXPECT_EQ(text(str(L"a12b345").cleanStr(L"ab", L'#', 2, true)), L"a##b##");
    EXPECT_EQ(text(str(L"aab").cleanStr(L"a", L'x', 0, false).cleanStr(nullptr)), L"xxb");
    EXPECT_FALSE(str(8ul, str::narrowStale).allocBuffer(9)) << "its capacity is fixed";
    str kept(L"kept");
    EXPECT_FALSE(kept.allocBuffer(0x80000001) || kept.allocBuffer(str::toEnd) || kept != L"kept");
}

TEST(Str, TakesNullForEmptyTextAndSurvivesLargeNumbers) {
    EXPECT_TRUE(noString->len() == 0 && *noString->getStr() == 0 && (str(L"x") = *noString) == L"");
    constexpr const wchar_t* null = nullptr;
    str s(L"ab");
    s.append(null).insert(0, null).appendPascal(nullptr).trimStr(null).cleanStr(null, L'x', 1, true);
    s.toPascal(nullptr);
    EXPECT_FALSE(s.removeTo(null) || s.startsWith(null) || s.endsWith(null) || s.checkCharAtEnd(null));
    EXPECT_EQ(s.findChar(null) + s.findRChar(null), -2);
    EXPECT_EQ(text(s.remove(INT_MIN, str::toEnd).remove(INT_MAX, 1).insert(str::toEnd, L"c", str::toEnd)),
              L"c");
    EXPECT_EQ(s.right(str::toEnd).len() + s.mid(INT_MIN).len() + s.mid(INT_MAX, 1).len(), 2u);
    EXPECT_EQ(s.setWStr(null).len() + s.setStr(nullptr).len() + s.setWStrNet(null, 1).len(), 0u);
    EXPECT_EQ(s.sprintf(nullptr).len() + str(strtoken(nullptr, 5)).len(), 0u);
}

TEST(Str, KeepsZerosWhereLengthsAreKnown) {
    str s(L"ab");
    s.oleStr()[0] = 0;
    s.updateWStr(2);
    str t;
    (t = s).Append(s).Append(t);
    EXPECT_EQ(std::wstring(t.oleStr(), t.len()), std::wstring(L"\0b\0b\0b\0b", 8));
    EXPECT_STREQ(t.getStr() + 7, "b");
    EXPECT_TRUE(t.append(L"; ").trimStr(L" b").len() == 9 && t.tok(L'b').len() == 1 && t.len() == 7);
    EXPECT_TRUE(t.tok(L'b').len() == 1 && t.tok(L';').len() == 4 && t.len() == 0);
}

TEST(Str, PascalStringsCarryAtMost255Bytes) {
    char out[257] = "zzzzzz";
    str(L"abc").toPascal(out);
    EXPECT_EQ(std::string(out, 6), std::string("\3abc\0z", 6));
    str().fill(L'x', 300).toPascal(out);
    EXPECT_EQ(std::string(out, 257), '\xff' + std::string(255, 'x') + '\0');
    EXPECT_EQ(text(str(L"<").appendPascal("\2ab...")), L"<ab");
}

TEST(Cstr, HoldsACopyOfAnySource) {
    vcore::cstr a(str(L"Abcdefgh").left(6));
    vcore::cstr b(a);
    a.set(a.oleStr() + 2, 3);
    EXPECT_TRUE(a.compare(L"cde") == 0 && a.len() == 3 && a.size() == 8);
    a = b;
    b.lower();
    EXPECT_TRUE(a.compareI(b.oleStr()) == 0 && a.compare(b.oleStr()) != 0);
    EXPECT_TRUE(b.findStr(L"ef", 2) == 4 && b.findStr(L"ef", 7) == -1);
    b = static_cast<const wchar_t*>(nullptr);
    EXPECT_EQ(b.len() + b.size(), 0u);
}

TEST(StrSearch, FindsComparesAndCutsOut) {
    const str s(L"abcabc");
    EXPECT_TRUE(s.findStr(nullptr) == -1 && s.findChar(L'c', 3) == 5 && s.findChar(L'a', 9) == -1);
    EXPECT_TRUE(s.findRChar(L'a', 3) == 3 && s.findRChar(L'a', 2) == 0 && str().findRChar(L'a') == -1);
    EXPECT_TRUE(s.countChar(L'a') == 2 && s.countChar(L'a', 1) == 1 && s.countChar(L'a', 7) == 0);
    EXPECT_TRUE(s.checkCharAtEnd(L"xc") && !str().checkCharAtEnd(L"xc") && !s.endsWith(L"xabcabc"));
    EXPECT_TRUE(s.equal(L"ABCABC", false) && !s.equal(L"ABCABC", true));
    EXPECT_TRUE(s.compareI(L"ABX", 2) == 0 && str(L"\u00c4\u0416").compareI(L"\u00e4\u0436") == 0);
    EXPECT_TRUE(str::compare(nullptr, L"") < 0 && str::compareI(L"", nullptr) > 0) << "null comes first";
    EXPECT_TRUE(str::equal(nullptr, nullptr, true) && str().compareI(nullptr, 1) > 0);
    EXPECT_TRUE(s == s.right(9) && str(s.mid(-2, 3)) == L"a" && str(s.mid(-3, 2)) == L"");

    EXPECT_TRUE(strtoken(L"abc", 3).compare(L"abcd") == 1 && strtoken(L"abcd", 3).compare(L"abc") == 0);
    EXPECT_TRUE(strtoken(L"abc", 3).compare(L"abd") < 0 && strtoken(L"abc", 3).compare(L"ab") > 0);
    EXPECT_TRUE(strtoken(L"abc", 99).len() == 3 && strtoken(nullptr, 9).compare(nullptr) == 0);
}

TEST(StrSearch, ScoresLikeness) {
    const std::wstring large(500000, L'x');
    const wchar_t* const texts[] = {L"", L"a", L"abc", L"ABD", L"aabaab", L"abaa", L"baab", large.c_str()};
    for (const wchar_t* a : texts) {
        for (const wchar_t* b : texts) {
            str s;
            const float score = (s = a).match(b);
            EXPECT_EQ(score, (s = b).match(a));
            EXPECT_TRUE(a == b ? score == 1 : score >= 0 && score < 1);
        }
    }
    EXPECT_TRUE(str(L"\u00c4bc").match(L"\u00e4BC") == 1 && str(L"abc").match(L"xyz") == 0);
    EXPECT_TRUE(str(L"abc").match(L"abd") == 0.5f && str().match(nullptr) == 1);
    EXPECT_LT(str(L"abcacba").match(L"acbabca"), 1) << "the same pairs in another order";
}

TEST(StrSearch, MatchesWildcards) {
    for (const wchar_t* fitting : {L"ABCABDA", L"*", L"a?cabd?", L"*bda", L"ab*", L"*ab*a*", L"abc*abda",
                                   L"**?**b*", L"*?d?", L"*abda*", L"*abd*?"}) {
        EXPECT_TRUE(str(L"abcabda").matchWildcard(str(fitting))) << str(fitting).getS();
    }
    for (const wchar_t* other : {L"", L"?", L"abcabd", L"????????", L"b*", L"*d", L"*bda*a", L"abcabda*a",
                                 L"*ab*ab*ab*", L"*?a?", L"abcabda?"}) {
        EXPECT_FALSE(str(L"abcabda").matchWildcard(str(other))) << str(other).getS();
    }
    EXPECT_TRUE(str().matchWildcard(str(L"*")) && !str().matchWildcard(str(L"?")));
    str text, pattern(L"*");
    text.fill(L'a', 1 << 20);
    pattern.Append(str().fill(L'a', 1 << 18)) += L"b*";
    EXPECT_FALSE(text.matchWildcard(pattern));
    for (pattern = L"*"; pattern.len() < 10000;) {
        pattern += L"a*a?*";
    }
    EXPECT_FALSE(text.matchWildcard(pattern += L"b"));
}
