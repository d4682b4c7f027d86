#include "core/str.h"

#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <cstdarg>
#include <string>

using vcore::str;

TEST(StrNumber, ReadsNumbersAndTellsWhereTheyStop) {
    const struct {
        const wchar_t* text;
        double value;
        int stop;
    } cases[] = {
        {L"12.5x", 12.5, 4}, {L" -3", -3, 3},    {L"1e3.", 1000, 3},      {L"1e", 1, 1},
        {L".5", 0.5, 2},     {L"0x1F!", 31, 4},  {L"-0x10", -16, 5},      {L"0xg", 0, 1},
        {L"", 0, 0},         {L"  abc", 0, 0},   {L"nan", 0, 0},          {L"infinity", 0, 0},
        {L"+-1", 0, 0},      {L"1.2.3", 1.2, 3}, {L"1e999", HUGE_VAL, 5}, {L"1e-999", 0, 6},
    };
    for (const auto& c : cases) {
        const str s(c.text);
        wchar_t* end = nullptr;
        EXPECT_EQ(s.toDouble(&end), c.value) << c.text;
        EXPECT_EQ(end - s.oleStr(), c.stop) << c.text;
    }
    const str whole(L" 08.09");
    wchar_t* end = nullptr;
    EXPECT_EQ(whole.toLong(&end), 8);
    EXPECT_EQ(end - whole.oleStr(), 3);
    EXPECT_EQ(str(L"99999999999").toLong(), LONG_MAX);
    EXPECT_EQ(str(L"-99999999999").toInt64(), -99999999999);
}

TEST(StrNumber, WritesNumbers) {
    const struct {
        double value;
        int decimals;
        const wchar_t* text;
    } cases[] = {
        {1.5, 2, L"1.50"},
        {2.0, 0, L"2"},
        {0.125, 1, L"0.125"},
        {1.5, 3, L"1.500"},
        {-0.25, 0, L"-0.25"},
        {100, 0, L"100"},
        {1.0 / 3, 2, L"0.333333333333"},
        {1, 20, L"1.000000000000"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(str::toStr(c.value, c.decimals), c.text) << c.value;
    EXPECT_EQ(str::toStr(-1.7e308, 0).len(), 310u);
}

TEST(StrNumber, FormatsWideTextAndNumbersAlikeOnBothTargets) {
    str s;
    s.sprintf(L"%s|%c|%S|%05d|%08x|%8.3f|%I64d|%lld|%%", L"w\u00e9", L'x', "n", 42, 0xbeefu, 1.5, 1ll << 40,
              -1ll);
    EXPECT_EQ(s, L"w\u00e9|x|n|00042|0000beef|   1.500|1099511627776|-1|%");
    const std::wstring longText(5000, L'l');
    EXPECT_EQ(s.sprintf(L"%s%s", longText.c_str(), longText.c_str()).len(), 10000u);
    const auto viaArgs = [](str& out, int add, ...) {
        va_list args;
        va_start(args, add);
        out.sprintfArgs(str(L"%d,%s"), args, add != 0);
        va_end(args);
    };
    viaArgs(s, false, 7, L"x");
    viaArgs(s, true, 8, L"y");
    EXPECT_EQ(s, L"7,x8,y");
}

TEST(StrNumber, FormatsOneIntegerWhateverTheFormat) {
    const wchar_t* const cases[][2] = {
        {L"%05d!", L"-0042!"}, {L"100%% %i", L"100% -42"},
        {L"%x", L"ffffffd6"},  {nullptr, L"-42"},
        {L"", L"-42"},         {L"%s", L"-42"},
        {L"%d%d", L"-42"},     {L"%*d", L"-42"},
        {L"%", L"-42"},        {L"%4000d", L"-42"},
        {L"%n", L"-42"},       {L"%lld", L"-42"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(str().Format(-42, c[0]), c[1]) << str(c[0]).getS();
    str own(L"<%d>");
    EXPECT_EQ(own.Format(INT_MIN, own.oleStr()), L"<-2147483648>");
}

TEST(StrNumber, FormatsTimesWithAnyFields) {
    std::tm when{};
    when.tm_year = 107;
    when.tm_mon = 2;
    when.tm_mday = 5;
    when.tm_hour = 14;
    when.tm_sec = 9;
    when.tm_wday = 1;
    when.tm_yday = 63;
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
    } cases[] = {
        {L"1,5*2", 3},  {L"(10/0)", 10}, {L"3>=2", 1},      {L"2+3*4", 20}, {L"", 0},      {L"10/4", 2.5},
        {L"3<=2", 0},   {L"2==2", 1},    {L"2!=2", 0},      {L"3<2", 0},    {L"3>2", 1},   {L"3=7", 7},
        {L"3!7", 7},    {L"2 + 3", 2},   {L"2+ 3", 5},      {L"2*-3", 6},   {L"1+", 1},    {L"1+x", 1},
        {L"1+abc2", 1}, {L"0x10+1", 17}, {L" [ 4-1 ] ", 3}, {L"abc", 0},    {L"-2-1", -3}, {L"5&2+1", 6},
    };
    for (const auto& c : cases)
        EXPECT_EQ(str(c.text).calculate(), c.value) << c.text;
    str sum(L"1");
    for (int i = 0; i < 50000; ++i)
        sum += L"+1";
    EXPECT_EQ(sum.calculate(), 50001);
}
