#include "core/strtokens_cpp.h"
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
    text.Clear();
    for (int i = 0; i < 20; ++i)
        text.Append(text) += L"a ";
    EXPECT_EQ(tokens.splitStr(text), (1 << 20) - 1);
    tokens.clearAll();
    EXPECT_TRUE(tokens.takeLast().start() == nullptr && tokens[0].len() == 0);
}

TEST(Strtokens, CommandLinesKeepSeparatorsInQuotes) {
    const struct {
        const wchar_t *text, *edited;
        words bare, quoted;
    } cases[] = {
        {L" a \"b c\"\td ", L" a b c\td ", {L"a", L"b c", L"d"}, {L"a", L"b c", L"d"}},
        {L"x=\"b c\"d e", L"x=b cd e", {L"x=b cd", L"e"}, {L"x=\"b c\"d", L"e"}},
        {L"\"a\"\" b\" c", L"a b c", {L"a b", L"c"}, {L"\"a\"\" b\"", L"c"}},
        {L"\"d:\\my dir\\\" x", L"d:\\my dir\\ x", {L"d:\\my dir\\", L"x"}, {L"d:\\my dir\\", L"x"}},
        {L"a \"open b ", L"a open b ", {L"a", L"open b "}, {L"a", L"open b "}},
        {L"a\"open b", L"aopen b", {L"aopen b"}, {L"a\"open b"}},
        {L"\"\" \" \" \"\"\"\" \"", L"    ", {L" "}, {L" "}},
        {L"", L"", {}, {}},
    };
    for (const auto& c : cases) {
        str text(c.text);
        const strtokens_cpp untouched(static_cast<const str&>(text));
        EXPECT_EQ(list(untouched), c.quoted) << str(c.text).getS();
        EXPECT_EQ(text, c.text);
        const strtokens_cpp tokens(text);
        EXPECT_EQ(list(tokens), c.bare) << str(c.text).getS();
        EXPECT_EQ(text, c.edited);
    }
    str text(L"a,\"b,c\" d,,\"e");
    strtokens_cpp atCommas(L",\"");
    EXPECT_EQ(atCommas.splitStr(text), 3);
    EXPECT_EQ(list(atCommas), (words{L"a", L"b,c d", L"e"}));
}
