#include "core/str.h"

#include <gtest/gtest.h>

using vcore::str;
using vcore::strtoken;

TEST(StrSearch, FindsForwardsAndBackwards) {
    const str s(L"abcabc");
    const int results[][2] = {
        {s.findStr(L"bc"), 1},     {s.findStr(L"bc", 2), 4},    {s.findStr(L"x"), -1},
        {s.findStr(nullptr), -1},  {s.findStr(L"", 6), 6},      {s.findStr(L"", 7), -1},
        {s.findChar(L'c'), 2},     {s.findChar(L'c', 3), 5},    {s.findChar(L"cb", 2), 2},
        {s.findChar(L"xyz"), -1},  {s.findChar(L'a', 9), -1},   {s.findRChar(L'a'), 3},
        {s.findRChar(L'a', 3), 3}, {s.findRChar(L'a', 2), 0},   {s.findRChar(L"ab", 5), 4},
        {s.findRChar(L'x'), -1},   {str().findRChar(L'a'), -1},
    };
    for (std::size_t i = 0; i < std::size(results); ++i)
        EXPECT_EQ(results[i][0], results[i][1]) << "case " << i;
    EXPECT_TRUE(s.countChar(L'a') == 2 && s.countChar(L'a', 1) == 1 && s.countChar(L'a', 7) == 0);
    EXPECT_TRUE(s.checkCharAtEnd(L"xc") && !str().checkCharAtEnd(L"xc"));
    EXPECT_TRUE(s.startsWith(L"abc") && s.endsWith(L"bc") && s.endsWith(L""));
    EXPECT_FALSE(s.startsWith(L"bc") || s.endsWith(L"ab") || s.endsWith(L"xabcabc") || s.startsWith(nullptr));
}

TEST(StrSearch, ComparesWithAndWithoutLetterCase) {
    const str s(L"abc");
    EXPECT_TRUE(s.equal(L"ABC", false));
    EXPECT_FALSE(s.equal(L"ABC", true));
    EXPECT_TRUE(s < L"abd" && s > L"abb" && s <= L"abc" && s >= L"abc" && s > L"ab" && s > L"Z");
    EXPECT_LT(s.compareI(L"Z"), 0);
    EXPECT_EQ(s.compareI(L"ABX", 2), 0);
    EXPECT_LT(s.compare(L"abx", 3), 0);
    EXPECT_EQ(str(L"\u00c4\u0416").compareI(L"\u00e4\u0436"), 0);
    EXPECT_TRUE(s == str("abc") && s == L"abc" && s == strtoken(L"abcd", 3) && s != strtoken(L"abcd", 2));
}

TEST(StrSearch, NullSortsBeforeAnyText) {
    EXPECT_TRUE(str::compare(nullptr, L"") < 0 && str::compareI(L"", nullptr) > 0);
    EXPECT_TRUE(str::compare(nullptr, nullptr) == 0 && str::equal(nullptr, nullptr, true));
    EXPECT_TRUE(str().compare(nullptr) > 0 && str().compareI(nullptr, 1) > 0);
}

TEST(StrSearch, ViewsStayInsideTheText) {
    const str s(L"abcdef");
    const struct {
        strtoken view;
        const wchar_t* text;
    } cases[] = {
        {s.left(2), L"ab"},    {s.left(9), L"abcdef"}, {s.right(2), L"ef"},  {s.right(9), L"abcdef"},
        {s.mid(2, 3), L"cde"}, {s.mid(4), L"ef"},      {s.mid(4, 9), L"ef"}, {s.mid(9, 1), L""},
        {s.mid(-2, 3), L"a"},  {s.mid(-3, 2), L""},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(str(c.view), c.text);
        EXPECT_TRUE(c.view.start() >= s.oleStr() && c.view.start() + c.view.len() <= s.oleStr() + 6);
    }
}

TEST(Strtoken, ComparesItsOwnLengthOnly) {
    EXPECT_EQ(strtoken(L"abc", 3).compare(L"abcd"), 1);
    EXPECT_EQ(strtoken(L"abcd", 3).compare(L"abc"), 0);
    EXPECT_LT(strtoken(L"abc", 3).compare(L"abd"), 0);
    EXPECT_GT(strtoken(L"abc", 3).compare(L"ab"), 0);
    EXPECT_EQ(strtoken(L"abc", 99).len(), 3u);
    EXPECT_EQ(strtoken(nullptr, 9).compare(nullptr), 0);
    EXPECT_EQ(strtoken().compare(L"a"), 1);
}
