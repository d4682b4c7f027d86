#include "core/strtokens_line.h"
#include "core/strtokens_lines.h"
#include "core/strtokens_path.h"
#include "core/strtokens_var.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using namespace vcore;

namespace {

using words = std::vector<std::wstring>;

words list(const strtokens& tokens) {
    words result;
    for (int i = 0; i < tokens.count(); ++i)
        result.emplace_back(tokens[i].start(), tokens[i].len());
    return result;
}

template <class Tokens>
words split(const wchar_t* text) {
    const str source(text);
    return list(Tokens(source));
}

words splitAt(const wchar_t* separators, const wchar_t* text) {
    const str source(text);
    strtokens_var tokens(separators);
    const int n = tokens.splitStr(source);
    EXPECT_EQ(n, tokens.count());
    return list(tokens);
}

} // namespace

TEST(Strtokens, SplitsByEachRule) {
    EXPECT_EQ(split<strtokens_path>(L"d:\\a\\b\\"), (words{L"d:", L"a", L"b"}));
    EXPECT_EQ(split<strtokens_path>(L"/a//b"), (words{L"", L"a", L"", L"b"}));
    EXPECT_EQ(split<strtokens_line>(L"  ab   c"), (words{L"ab", L"c"}));
    EXPECT_EQ(split<strtokens_line>(L"\t\r\n"), words{});
    EXPECT_EQ(split<strtokens_lines>(L"a\r\n\r\nb\rc\n"), (words{L"a", L"", L"b\rc"}));
    EXPECT_EQ(splitAt(L",", L"a,,b,"), (words{L"a", L"", L"b", L""}));
    EXPECT_EQ(splitAt(L";,", L"a;b,c"), (words{L"a", L"b", L"c"}));
    EXPECT_EQ(split<strtokens_path>(L""), words{});
    EXPECT_EQ(splitAt(L",", L""), words{L""});
    EXPECT_EQ(split<strtokens_var>(L"a b"), words{L"a b"});
}

TEST(Strtokens, KeepsManyTokensInOrderAndForgetsThemOnTheNextSplit) {
    str text;
    for (int i = 0; i < 200; ++i)
        text.Append(str::toStr(i)) += L' ';
    strtokens_line tokens(text);
    ASSERT_EQ(tokens.count(), 200);
    for (int i = 0; i < 200; ++i)
        EXPECT_EQ(str(tokens[i]).toLong(), i);
    const strtokens_line copy(tokens);
    EXPECT_EQ(tokens.splitStr(text = L"x y"), 2);
    EXPECT_EQ(copy.count(), 200);
    EXPECT_EQ(str(tokens.takeLast()), L"y");
    tokens.newToken().set(L"new", 3);
    EXPECT_EQ(list(tokens), (words{L"x", L"new"}));
    tokens.clearAll();
    EXPECT_TRUE(tokens.takeLast().start() == nullptr && tokens[0].len() == 0);
}
