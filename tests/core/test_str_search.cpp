#include "core/str.h"

#include <gtest/gtest.h>

using vcore::str;
using vcore::strtoken;

TEST(StrSearch, FindsForwardsAndBackwards) {
    const str s(L"abcabc");
    EXPECT_TRUE(s.findStr(L"bc", 2) == 4 && s.findStr(nullptr) == -1 && s.findStr(L"", 6) == 6);
    EXPECT_TRUE(s.findStr(L"", 7) == -1 && s.findChar(L'c', 3) == 5 && s.findChar(L'a', 9) == -1);
    EXPECT_TRUE(s.findRChar(L'a', 3) == 3 && s.findRChar(L'a', 2) == 0 && str().findRChar(L'a') == -1);
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

TEST(StrSearch, ScoresLikeness) {
    const std::wstring large(500000, L'x');
    const wchar_t* const texts[] = {L"",     L"a",    L"abc",         L"ABD",    L"aabaab",
                                    L"abaa", L"baab", L"Z\u00fcrich", L"zurich", large.c_str()};
    for (const wchar_t* a : texts)
        for (const wchar_t* b : texts) {
            str s;
            const float score = (s = a).match(b);
            EXPECT_EQ(score, (s = b).match(a));
            EXPECT_TRUE(a == b ? score == 1 : score >= 0 && score < 1);
        }
    EXPECT_TRUE(str(L"\u00c4bc").match(L"\u00e4BC") == 1 && str(L"abc").match(L"xyz") == 0);
    EXPECT_EQ(str(L"abc").match(L"abd"), 0.5f);
    EXPECT_EQ(str(L"aaab").match(L"aa"), 0.5f);
    EXPECT_LT(str(L"abcacba").match(L"acbabca"), 1) << "the same pairs in another order";
    EXPECT_GT(str(L"Zurich").match(L"Z\u00fcrich"), str(L"Zurich").match(L"Munich"));
    EXPECT_EQ(str().match(nullptr), 1);
}

TEST(StrSearch, MatchesWildcards) {
    const struct {
        const wchar_t *text, *pattern;
        bool fits;
    } cases[] = {
        {L"", L"", true},
        {L"", L"*", true},
        {L"", L"?", false},
        {L"abc", L"ABC", true},
        {L"abc", L"ab", false},
        {L"abc", L"a?c", true},
        {L"abc", L"????", false},
        {L"abc", L"*", true},
        {L"abc", L"*c", true},
        {L"abc", L"a*", true},
        {L"abc", L"*b*", true},
        {L"abc", L"b*", false},
        {L"abc", L"*b", false},
        {L"aba", L"ab*ba", false},
        {L"abba", L"ab*ba", true},
        {L"aXbXc", L"a*b*c", true},
        {L"abcd", L"*?c?", true},
        {L"abcd", L"*?d?", false},
        {L"a*c", L"a*c", true},
        {L"aaab", L"*aab", true},
        {L"abcabd", L"*abd", true},
        {L"ababac", L"*abac*", true},
        {L"abab", L"**?**b*", true},
        {L"ab", L"*ab*ab*", false},
        {L"xay", L"*?a*y", true},
    };
    for (const auto& c : cases)
        EXPECT_EQ(str(c.text).matchWildcard(str(c.pattern)), c.fits)
            << str(c.text).getS() << ' ' << str(c.pattern).getS();
    str text, pattern(L"*");
    text.fill(L'a', 1 << 20);
    str run;
    pattern.Append(run.fill(L'a', 1 << 18)) += L"b*";
    EXPECT_FALSE(text.matchWildcard(pattern));
    for (pattern = L"*"; pattern.len() < 10000;)
        pattern += L"a*a?*";
    EXPECT_TRUE(text.matchWildcard(pattern));
    EXPECT_FALSE(text.matchWildcard(pattern += L"b"));
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
