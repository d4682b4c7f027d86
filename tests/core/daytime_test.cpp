#include "marvo/core/daytime.h"
#include "marvo/core/str.h"

#include <gtest/gtest.h>

#include <cmath>

using vcore::daytime;
using vcore::str;

namespace {

str asText(const daytime& time) {
    str text;
    return time.toStr(text);
}

daytime readTime(const wchar_t* text, bool yearFirst, bool iso) {
    daytime time(0, false);
    EXPECT_TRUE(time.fromStr(str(text), yearFirst, iso)) << str(text).getStr();
    return time;
}

} // namespace

TEST(Daytime, DaysBeyondTheMonthsEndBecomeItsLastDay) {
    EXPECT_EQ(asText(daytime(30, 2, 2008)), L"29.02.2008 00:00:00");
    EXPECT_EQ(asText(daytime(29, 2, 1900)), L"28.02.1900 00:00:00");
    EXPECT_EQ(asText(daytime(31, 12, 2007)), L"31.12.2007 00:00:00");
    daytime clamped(1, 1, 2007);
    clamped.fields().wDay = 0;
    clamped.fields().wMonth = 13;
    EXPECT_TRUE(clamped.updateFileTime());
    EXPECT_EQ(asText(clamped), L"01.12.2007 00:00:00");
    const unsigned long long count = clamped.count();
    clamped.fields().wHour = 24;
    EXPECT_TRUE(!clamped.updateFileTime() && clamped.count() == count) << "impossible";
}

TEST(Daytime, ReadsNumbersInTheOrderTheFlagsTell) {
    daytime time = readTime(L"05.03.2007 14:02:09", false, false);
    str text;
    EXPECT_TRUE(time.toStrShort(text) == L"20070305_140209" && time.fields().wDayOfWeek == 1);
    EXPECT_EQ(asText(daytime(time.count(), true)), L"05.03.2007 14:02:09");
    EXPECT_EQ(asText(readTime(L"2006-12-24T18:30:05Z", true, true)), L"24.12.2006 18:30:05");
    EXPECT_EQ(asText(readTime(L"2006;12,24 18:30:05", true, false)), L"24.12.2006 18:30:05");
    // Fields that are not reached keep the present moment's values.
    EXPECT_LT(daytime::diff_secs(readTime(L"", false, false).count(), daytime().count()), 60.0);
    // The third number is the year again, and the day stays today's.
    EXPECT_TRUE(asText(readTime(L"2006-1-2005T18:30:05", false, true)).endsWith(L".01.2005 18:30:05"));
    EXPECT_TRUE(time.timeFromStr(str(L"7:05")) && time.timeToStr(text) == L"07:05:00");
}

TEST(Daytime, HoldsNowAfterATextThatIsNoTime) {
    daytime time;
    for (const wchar_t* text : {L"65537.1.2007", L"1.65537.2007", L"1.1.67543", L"1.1.2007 -65535:00",
                                L"1.1.2007 25:00", L"1.1.1500", L"99999999999"}) {
        EXPECT_FALSE(time.timeFromStr(str(text)) || time.fromStr(str(text), false, false)) << text;
        EXPECT_EQ(asText(time), asText(daytime(time.count(), true)));
        EXPECT_LT(std::abs(daytime::diff_secs(time.count(), daytime().count())), 60.0);
    }
    EXPECT_EQ(asText(daytime(5, 3, 1500)), asText(daytime(5, 3, 0))) << "a year that cannot be counted";
}

TEST(Daytime, CountsDifferencesAndTheTimeBackTo1970) {
    const unsigned long long start = daytime(1, 1, 2007).count();
    const unsigned long long later = start + daytime::unitsPerDay * 3 / 2;
    EXPECT_TRUE(daytime::diff_days(start, later) == 1 && daytime::diff_days(later, start) == -1);
    EXPECT_TRUE(daytime::diff_secs(start, later) == 129600 && daytime(2, 1, 1970).timestamp() == -86400);
    daytime utc;
    utc.getUTC();
    daytime converted(utc);
    ASSERT_TRUE(converted.toLocal());
    EXPECT_NEAR(daytime::diff_secs(converted.count(), daytime().count()), 0.0, 60.0);
    EXPECT_TRUE(converted.toUTC() && converted.count() == utc.count());
}
