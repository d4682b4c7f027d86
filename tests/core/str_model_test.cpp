// Compares strings with a simple model, operation by operation, on random arguments.
#include "core/str.h"
#include "core/strtokens_cpp.h"
#include "core/strtokens_line.h"
#include "core/strtokens_lines.h"
#include "core/strtokens_path.h"
#include "core/strtokens_var.h"

#include "tests/support/rounds.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <random>
#include <sstream>
#include <string>
#include <vector>

using namespace vcore;

namespace {

using words = std::vector<std::wstring>;

class Random {
public:
    explicit Random(unsigned int seed) : _engine(seed) {}

    /// From 0 to `n` - 1.
    unsigned long below(std::size_t n) { return static_cast<unsigned long>(_engine() % n); }
    wchar_t character(std::wstring_view set) { return set[below(set.size())]; }
    std::wstring text(std::wstring_view set, std::size_t longest) {
        std::wstring result(below(longest + 1), 0);
        std::generate(result.begin(), result.end(), [&] { return character(set); });
        return result;
    }

private:
    std::mt19937 _engine;
};

/// Letters without a second case beyond ASCII, so that the model needs to know none.
constexpr std::wstring_view letters = L"aAbBabab ,;\t\"\\/\n1\u00a7\u4e2d";

/// A string and the standard library's string that has gone through the same operations.
class Model {
public:
    Model(unsigned long capacity, int flags) : _s(capacity, flags), _fixed(!(flags & str::growable)) {}

    /// Changes both in the same way and compares them.
    void change(Random& random) {
        const std::size_t pos = random.below(_m.size() + 3), inside = random.below(_m.size() + 1);
        const unsigned long n = random.below(20);
        const std::wstring arg = random.text(letters, random.below(50) ? 8 : 300);
        const std::wstring set = random.text(letters, 3);
        const std::wstring own = _m.substr(inside, n);
        const wchar_t c = random.character(letters);
        const auto isMember = [&](wchar_t m) { return set.find(m) != std::wstring::npos; };
        const std::function<void()> changes[] = {
            [&] { _s.append(arg.c_str(), n), _m.append(arg, 0, n); },
            [&] { _s.append(_s.oleStr() + inside, n), _m += own; },
            [&] { _s.Append(_s), _m += std::wstring(_m); },
            [&] { _s += c, _m += c; },
            [&] {
                _s.insert(static_cast<unsigned long>(pos), arg.c_str(), n),
                    _m.insert(std::min(pos, _m.size()), arg, 0, n);
            },
            [&] {
                _s.insert(static_cast<unsigned long>(pos), _s.oleStr() + inside, n),
                    _m.insert(std::min(pos, _m.size()), own);
            },
            [&] { _s.remove(static_cast<int>(pos), n), _m.erase(std::min(pos, _m.size()), n); },
            [&] { _s.remove(-static_cast<int>(pos), n), _m.erase(0, n > pos ? n - pos : 0); },
            [&] { _s.setWStr(arg.c_str(), n), _m = arg.substr(0, n); },
            [&] { _s = _s.mid(static_cast<int>(inside), n), _m = own; },
            [&] { _s = _s.oleStr() + inside, _m.erase(0, inside); },
            [&] { _s.trimStr(set.c_str()), trim(set); },
            [&] { _s.cleanStr(set.c_str()), std::erase_if(_m, isMember); },
            [&] { _s.cleanStr(set.c_str(), c, 1, false), collapse(isMember, c); },
            [&] { _s.fill(c, n), _m.assign(n, c); },
            [&] { _s.setStr(std::string(n, '\xa7').c_str()), _m.assign(n, L'\u00a7'); },
            [&] {
                _s.sprintf(L"<%s>%d", _s.oleStr(), static_cast<int>(n)),
                    _m = L'<' + _m + L'>' + std::to_wstring(n);
            },
            [&] { _s.lower(), std::transform(_m.begin(), _m.end(), _m.begin(), small); },
            [&] { _s.removeTo(set.c_str()) ? _m.erase(0, _m.find(set) + set.size()) : _m; },
            [&] { takeToken(c); },
            [&] { _s.compact(); },
            [&] { _s.allocBuffer(n * 4); },
            [&] { codecs(); },
        };
        changes[random.below(std::size(changes))]();
        if (_fixed)
            _m.resize(std::min<std::size_t>(_m.size(), _s.bufferSize() - 1));
        compareTexts();
        query(arg, set, pos, n);
        if (_m.size() > 2000) {
            _s.Clear();
            _m.clear();
        }
    }

private:
    static wchar_t small(wchar_t c) { return c >= L'A' && c <= L'Z' ? c + (L'a' - L'A') : c; }

    void trim(const std::wstring& set) {
        _m.erase(0, _m.find_first_not_of(set));
        _m.resize(_m.find_last_not_of(set) + 1);
    }

    template <class Member>
    void collapse(Member isMember, wchar_t c) {
        std::replace_if(_m.begin(), _m.end(), isMember, 0);
        _m.erase(std::unique(_m.begin(), _m.end(), [](wchar_t a, wchar_t b) { return a == 0 && b == 0; }),
                 _m.end());
        std::replace(_m.begin(), _m.end(), L'\0', c);
    }

    void takeToken(wchar_t separator) {
        const std::size_t end = std::min(_m.find(separator), _m.size());
        ASSERT_EQ(_s.tok(separator), _m.substr(0, end).c_str());
        _m.erase(0, end + 1);
    }

    void codecs() const {
        str copy, utf8;
        copy = _s;
        const int n = WideCharToMultiByte(CP_UTF8, 0, _m.c_str(), -1, nullptr, 0, nullptr, nullptr);
        std::string expected(n, 0);
        WideCharToMultiByte(CP_UTF8, 0, _m.c_str(), -1, expected.data(), n, nullptr, nullptr);
        ASSERT_STREQ(utf8.encodeUTF8(&_s).getStr(), expected.c_str());
        ASSERT_EQ(utf8.decodeUTF8(&utf8), _s);
        ASSERT_TRUE(copy.u4code() && copy.isU4Codec() && copy.u4decode());
        ASSERT_EQ(copy, _s);
        ASSERT_EQ(_s.match(copy.upper().oleStr()), 1);
        ASSERT_TRUE(_s.matchWildcard(copy.cleanStr(L"aA", L'*', 1, false)));
    }

    void compareTexts() const {
        ASSERT_EQ(std::wstring(_s.oleStr(), _s.len()), _m);
        ASSERT_EQ(_s.oleStr()[_s.len()], 0);
        ASSERT_GT(_s.bufferSize(), _s.len());
    }

    void query(const std::wstring& arg, const std::wstring& set, std::size_t pos, unsigned long n) const {
        const auto from = static_cast<unsigned long>(pos);
        const auto place = [](std::size_t found) {
            return found == std::wstring::npos ? -1 : static_cast<int>(found);
        };
        ASSERT_EQ(_s.findStr(set.c_str(), from), place(_m.find(set, pos)));
        ASSERT_EQ(_s.findChar(set.c_str(), from), place(_m.find_first_of(set, pos)));
        ASSERT_EQ(_s.findRChar(set.c_str(), from), place(_m.find_last_of(set, pos)));
        ASSERT_EQ(_s.startsWith(set.c_str()), _m.starts_with(set));
        ASSERT_EQ(_s.endsWith(set.c_str()), _m.ends_with(set));
        ASSERT_EQ(_s.compare(arg.c_str()) < 0, _m < arg);
        ASSERT_EQ(_s == arg.c_str(), _m == arg);
        ASSERT_EQ(_s.equal(arg.c_str(), true), _m == arg);
        ASSERT_EQ(_s.compare(arg.c_str(), n) == 0, _m.substr(0, n) == arg.substr(0, n));
        ASSERT_EQ(str(_s.mid(static_cast<int>(pos), n)), _m.substr(std::min(pos, _m.size()), n).c_str());
        ASSERT_EQ(str(_s.right(n)), _m.substr(_m.size() - std::min<std::size_t>(n, _m.size())).c_str());
        if (n)
            return;
        std::string narrow(_m.size() + 1, 0);
        std::transform(_m.begin(), _m.end(), narrow.begin(),
                       [](wchar_t m) { return m == L'\u4e2d' ? '?' : static_cast<char>(m); });
        ASSERT_STREQ(_s.getStr(), narrow.c_str());
    }

    str _s;
    std::wstring _m;
    bool _fixed;
};

words list(const strtokens& tokens) {
    words result;
    for (int i = 0; i < tokens.count(); ++i)
        result.emplace_back(tokens[i].start(), tokens[i].len());
    return result;
}

/// Every piece between separators; those between quotes do not separate when these count, and then go.
words pieces(const std::wstring& text, std::wstring_view separators, bool quotes = false) {
    words result(1);
    bool quoted = false;
    for (const wchar_t c : text)
        if (quotes && c == L'"')
            quoted = !quoted;
        else if (!quoted && separators.find(c) != std::wstring_view::npos)
            result.emplace_back();
        else
            result.back() += c;
    return result;
}

words filled(words all) {
    std::erase(all, L"");
    return all;
}

words withoutEmptyEnd(words all) {
    if (all.back().empty())
        all.pop_back();
    return all;
}

} // namespace

TEST(StrModel, StringsDoWhatTheModelDoes) {
    Random random(20240229);
    Model models[] = {
        {8, str::defaultFlags}, {64, str::growable | str::keepNarrow}, {32, 0}, {2, str::keepNarrow}};
    for (int i = 0; i < rounds(240000) && !HasFatalFailure(); ++i) {
        SCOPED_TRACE(i);
        models[random.below(std::size(models))].change(random);
    }
}

TEST(StrModel, TokenisersDoWhatTheModelDoes) {
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
}

TEST(StrModel, ExpressionsAreCalculatedStepByStep) {
    Random random(2);
    for (int i = 0; i < rounds(20000); ++i) {
        std::wstring text = std::to_wstring(random.below(100));
        double expected = std::stod(text);
        for (unsigned long steps = random.below(8); steps > 0; --steps) {
            const wchar_t sign = random.character(L"+-*/");
            // Exact in any precision of the processor.
            const double operand = sign == L'/' ? 4 * random.below(2) : random.below(200) / 4.0;
            std::wostringstream step;
            step << sign << operand;
            text += step.str();
            expected = sign == L'+'   ? expected + operand
                       : sign == L'-' ? expected - operand
                       : sign == L'*' ? expected * operand
                       : operand != 0 ? expected / operand
                                      : expected;
        }
        ASSERT_EQ(str(text.c_str()).calculate(), expected) << str(text.c_str()).getS();
        const str noise(random.text(L"0123456789abcdefx.,+-*/<>=!() \u4e2d", 30).c_str());
        const double value = noise.calculate();
        ASSERT_TRUE(std::isnan(value) || value == (str(L"(") + noise.oleStr()).calculate())
            << str(noise).getS();
    }
}
