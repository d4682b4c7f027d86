// Compares strings with a simple model, operation by operation, on random arguments.
#include "marvo.h"

#include "tests/support/rounds.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <string>
#include <string_view>
#include <vector>

using namespace vcore;

namespace {

class Random {
public:
    explicit Random(unsigned int seed) : engine_(seed) {}

    /// From 0 to `n` - 1.
    unsigned long below(std::size_t n) { return static_cast<unsigned long>(engine_() % n); }
    wchar_t character(std::wstring_view set) { return set[below(set.size())]; }
    std::wstring text(std::wstring_view set, std::size_t longest) {
        std::wstring result(below(longest + 1), 0);
        std::generate(result.begin(), result.end(), [&] { return character(set); });
        return result;
    }

private:
    std::mt19937 engine_;
};

constexpr std::wstring_view letters = L"aAbBabab ,;\t\"\\/\n1\u00a7\u4e2d";

std::wstring_view view(const str& s) {
    return {s.oleStr(), s.len()};
}

/// What a change may make use of: places in the text or a little behind it, a number, a character and texts.
struct Arguments {
    unsigned long pos, inside, n;
    wchar_t c;
    std::wstring text, set;

    std::size_t place(std::wstring_view m) const { return std::min<std::size_t>(pos, m.size()); }
    std::wstring part(const std::wstring& m) const { return m.substr(inside, n); }
    /// Whether a character is a member of the set.
    bool operator()(wchar_t m) const { return set.find(m) != std::wstring::npos; }
};

/// A string and the standard library's string that has gone through the same operations.
class Model {
public:
    Model(unsigned long capacity, int flags) : s_(capacity, flags), fixed_(!(flags & str::growable)) {}

    /// Changes both in the same way and compares them. Little is allocated, since on a guarded heap that
    /// takes long.
    void change(Random& random) {
        const Arguments a{random.below(m_.size() + 3),
                          random.below(m_.size() + 1),
                          random.below(20),
                          random.character(letters),
                          random.text(letters, random.below(50) ? 7 : 300),
                          random.text(letters, 3)};
        using Std = std::wstring;
        using Args = const Arguments;
        static constexpr void (*changes[])(str&, Std&, Args&) = {
            [](str& s, Std& m, Args& a) { s.append(a.text.c_str(), a.n), m.append(a.text, 0, a.n); },
            [](str& s, Std& m, Args& a) { s.append(s.oleStr() + a.inside, a.n), m += a.part(m); },
            [](str& s, Std& m, Args&) { s.Append(s), m += std::wstring(m); },
            [](str& s, Std& m, Args& a) { s += a.c, m += a.c; },
            [](str& s, Std& m, Args& a) {
                s.insert(a.pos, a.text.c_str(), a.n), m.insert(a.place(m), a.text, 0, a.n);
            },
            [](str& s, Std& m, Args& a) {
                s.insert(a.pos, s.oleStr() + a.inside, a.n), m.insert(a.place(m), a.part(m));
            },
            [](str& s, Std& m, Args& a) { s.remove(static_cast<int>(a.pos), a.n), m.erase(a.place(m), a.n); },
            [](str& s, Std& m, Args& a) {
                s.remove(-static_cast<int>(a.pos), a.n), m.erase(0, a.n > a.pos ? a.n - a.pos : 0);
            },
            [](str& s, Std& m, Args& a) { s.setWStr(a.text.c_str(), a.n), m.assign(a.text, 0, a.n); },
            [](str& s, Std& m, Args& a) { s = s.mid(static_cast<int>(a.inside), a.n), m = a.part(m); },
            [](str& s, Std& m, Args& a) { s = s.oleStr() + a.inside, m.erase(0, a.inside); },
            [](str& s, Std& m, Args& a) { s.trimStr(a.set.c_str()), trim(m, a); },
            [](str& s, Std& m, Args& a) { s.cleanStr(a.set.c_str()), std::erase_if(m, a); },
            [](str& s, Std& m, Args& a) { s.fill(a.c, a.n), m.assign(a.n, a.c); },
            [](str& s, Std& m, Args&) { s.sprintf(L"<%s>", s.oleStr()), m = L'<' + m + L'>'; },
            [](str& s, Std& m, Args& a) {
                s.removeTo(a.set.c_str()) ? m.erase(0, m.find(a.set) + a.set.size()) : m;
            },
            [](str& s, Std& m, Args& a) { takeToken(s, m, a.c); },
            [](str& s, Std&, Args&) { s.compact(); },
            [](str& s, Std&, Args& a) { s.allocBuffer(a.n * 4); },
            [](str& s, Std& m, Args&) { codecs(s, m); },
        };
        changes[random.below(std::size(changes))](s_, m_, a);
        if (fixed_) {
            m_.resize(std::min<std::size_t>(m_.size(), s_.bufferSize() - 1));
        }
        ASSERT_EQ(view(s_), m_);
        ASSERT_TRUE(s_.oleStr()[s_.len()] == 0 && s_.bufferSize() > s_.len());
        query(a);
        if (m_.size() > 500) {
            s_.Clear();
            m_.clear();
        }
    }

private:
    static void trim(std::wstring& m, const Arguments& a) {
        m.erase(0, m.find_first_not_of(a.set));
        m.resize(m.find_last_not_of(a.set) + 1);
    }

    static void takeToken(str& s, std::wstring& m, wchar_t separator) {
        const std::size_t end = std::min(m.find(separator), m.size());
        ASSERT_EQ(s.tok(separator), m.substr(0, end).c_str());
        m.erase(0, end + 1);
    }

    static void codecs(const str& s, const std::wstring& m) {
        str copy, utf8;
        copy = s;
        const int n = WideCharToMultiByte(CP_UTF8, 0, m.c_str(), -1, nullptr, 0, nullptr, nullptr);
        std::string expected(n, 0);
        WideCharToMultiByte(CP_UTF8, 0, m.c_str(), -1, expected.data(), n, nullptr, nullptr);
        ASSERT_STREQ(utf8.encodeUTF8(&s).getStr(), expected.c_str());
        ASSERT_EQ(utf8.decodeUTF8(&utf8), s);
        ASSERT_TRUE(copy.u4code() && copy.isU4Codec() && copy.u4decode());
        ASSERT_EQ(copy, s);
        ASSERT_EQ(s.match(copy.upper().oleStr()), 1);
        ASSERT_TRUE(s.matchWildcard(copy.cleanStr(L"aA", L'*', 1, false)));
    }

    void query(const Arguments& a) const {
        const auto place = [](std::size_t found) {
            return found == std::wstring::npos ? -1 : static_cast<int>(found);
        };
        const std::wstring_view m = m_;
        ASSERT_EQ(s_.findStr(a.set.c_str(), a.pos), place(m.find(a.set, a.pos)));
        ASSERT_EQ(s_.findChar(a.set.c_str(), a.pos), place(m.find_first_of(a.set, a.pos)));
        ASSERT_EQ(s_.findRChar(a.set.c_str(), a.pos), place(m.find_last_of(a.set, a.pos)));
        ASSERT_EQ(s_.startsWith(a.set.c_str()), m.starts_with(a.set));
        ASSERT_EQ(s_.endsWith(a.set.c_str()), m.ends_with(a.set));
        ASSERT_EQ(s_.compare(a.text.c_str()) < 0, m < a.text);
        ASSERT_EQ(s_ == a.text.c_str(), m == a.text);
        ASSERT_EQ(s_.equal(a.text.c_str(), true), m == a.text);
        ASSERT_EQ(s_.compare(a.text.c_str(), a.n) == 0,
                  m.substr(0, a.n) == std::wstring_view(a.text).substr(0, a.n));
        const strtoken middle = s_.mid(static_cast<int>(a.pos), a.n), end = s_.right(a.n);
        ASSERT_EQ(std::wstring_view(middle.start(), middle.len()), m.substr(a.place(m), a.n));
        ASSERT_TRUE(end.len() == std::min<std::size_t>(a.n, m.size()) && m.ends_with(end.start()));
        if (a.n > 0) {
            return;
        }
        std::string narrow(m.size() + 1, 0);
        std::transform(m.begin(), m.end(), narrow.begin(),
                       [](wchar_t c) { return c == L'\u4e2d' ? '?' : static_cast<char>(c); });
        ASSERT_STREQ(s_.getStr(), narrow.c_str());
    }

    str s_;
    std::wstring m_;
    bool fixed_;
};

using Words = std::vector<std::wstring>;

Words list(const strtokens& tokens) {
    Words result;
    for (int i = 0; i < tokens.count(); ++i) {
        result.emplace_back(tokens[i].start(), tokens[i].len());
    }
    return result;
}

/// Every piece between separators; those between quotes do not separate when these count, and then go.
Words pieces(const std::wstring& text, std::wstring_view separators, bool quotes = false) {
    Words result(1);
    bool quoted = false;
    for (const wchar_t c : text) {
        if (quotes && c == L'"') {
            quoted = !quoted;
        } else if (!quoted && separators.find(c) != std::wstring_view::npos) {
            result.emplace_back();
        } else {
            result.back() += c;
        }
    }
    return result;
}

} // namespace

TEST(StrModel, StringsDoWhatTheModelDoes) {
    Random random(20240229);
    Model models[] = {
        {8, str::defaultFlags}, {64, str::growable | str::keepNarrow}, {32, 0}, {2, str::keepNarrow}};
    for (int i = 0; i < 240000; ++i) {
        models[random.below(std::size(models))].change(random);
        ASSERT_FALSE(HasFatalFailure()) << "operation " << i;
    }
}

TEST(StrModel, AnyTextIsCalculatedAlikeInBrackets) {
    Random random(2);
    for (int i = 0; i < rounds(20000); ++i) {
        const str noise(random.text(L"0123456789abcdefx.,+-*/<>=!() \u4e2d", 30).c_str());
        const double value = noise.calculate();
        ASSERT_TRUE(std::isnan(value) || value == (str(L"(") + noise.oleStr()).calculate()) << noise.getS();
    }
}

TEST(Strtokens, SplitAsTheModelDoes) {
    const auto filled = [](Words all) { return std::erase(all, L""), all; };
    const auto withoutEmptyEnd = [](Words all) { return all.resize(all.size() - all.back().empty()), all; };
    Random random(1);
    for (int i = 0; i < rounds(20000); ++i) {
        const std::wstring text = random.text(L"ab\\/ \n\t\";,", random.below(100) ? 12 : 400);
        str s;
        s = text.c_str();
        const str& fixed = s;
        ASSERT_EQ(list(strtokens_path(fixed)), withoutEmptyEnd(pieces(text, L"\\/")));
        ASSERT_EQ(list(strtokens_line(fixed)), filled(pieces(text, L" \t\n\r")));
        ASSERT_EQ(list(strtokens_lines(fixed)), withoutEmptyEnd(pieces(text, L"\n")));
        strtokens_var tokens(L";,");
        tokens.splitStr(fixed);
        ASSERT_EQ(list(tokens), pieces(text, L";,"));
        ASSERT_EQ(list(strtokens_cpp(s)), filled(pieces(text, L" \t\n\r", true)));
    }
    EXPECT_EQ(list(strtokens_lines(str(L"a\r\n\r\nb\rc\n"))), (Words{L"a", L"", L"b\rc"}));
}

TEST(Strtokens, KeepManyInOrderAndForgetThemOnTheNextSplit) {
    str text(L"a b c");
    strtokens_line tokens(text);
    const strtokens_line copy(tokens);
    EXPECT_EQ(tokens.splitStr(text = L"x y"), 2);
    EXPECT_EQ(str(tokens.takeLast()), L"y");
    tokens.newToken().set(L"new", 3);
    EXPECT_EQ(list(tokens), (Words{L"x", L"new"}));
    EXPECT_EQ(copy.count(), 3);
    tokens.clearAll();
    EXPECT_TRUE(tokens.takeLast().start() == nullptr && tokens[0].len() == 0);
    for (text = L"a "; text.len() < 1 << 21;) {
        text.Append(text);
    }
    EXPECT_EQ(tokens.splitStr(text), 1 << 20);
}

TEST(Strtokens, CommandLinesKeepSeparatorsInQuotes) {
    const struct {
        const wchar_t *text, *edited;
        Words quoted;
    } cases[] = {{L"x=\"b c\"d e", L"x=b cd e", {L"x=\"b c\"d", L"e"}},
                 {L"\"a\"\" b\" c", L"a b c", {L"\"a\"\" b\"", L"c"}},
                 {L"\"d:\\my dir\\\" x", L"d:\\my dir\\ x", {L"d:\\my dir\\", L"x"}},
                 {L"a \"open b ", L"a open b ", {L"a", L"open b "}},
                 {L"\"\" \" \" \"\"\"\" \"", L"    ", {L" "}}};
    for (const auto& c : cases) {
        str text(c.text);
        EXPECT_EQ(list(strtokens_cpp(static_cast<const str&>(text))), c.quoted);
        EXPECT_EQ(text, c.text);
        const strtokens_cpp tokens(text);
        EXPECT_EQ(text, c.edited);
    }
}
