/// @file
/// A calendar time.
#pragma once

#include "marvo/core/platform.h"

namespace vcore {

class str;

/// A time kept twice, as broken-down fields and as a count of 100 ns since 1601-01-01 00:00. Holds local time
/// unless `getUTC` or `toUTC` made it UTC; it does not know which. A conversion that fails leaves the object
/// as it was; a text that cannot be read makes it now. Fields and count tell the same time, unless the caller
/// has changed one of them alone.
class MARVO_API daytime {
public:
    /// One second in units of the count.
    static constexpr unsigned long long unitsPerSecond = 10'000'000;
    /// One day in units of the count.
    static constexpr unsigned long long unitsPerDay = 864'000'000'000;

    /// Now, in local time.
    daytime();
    /// The given count. The fields are computed from it only with `update`; else they are 0.
    daytime(unsigned long long count, bool update);
    /// 00:00 of that day. A day outside 1 to 31, a month outside 1 to 12, a year of 0 and one that the count
    /// cannot express are replaced by today's.
    daytime(unsigned short day, unsigned short month, unsigned short year);
    /// The time that the text tells, day first; see `fromStr`.
    daytime(const wchar_t* text);
    /// The same time.
    daytime(const daytime&) = default;
    /// Takes over the same time.
    daytime& operator=(const daytime&) = default;

    /// The broken-down fields; after changing them, call `updateFileTime`.
    SYSTEMTIME& fields() { return fields_; }
    /// The broken-down fields.
    const SYSTEMTIME& fields() const { return fields_; }
    /// The count, in units of 100 ns.
    unsigned long long count() const;
    /// Replaces the count; to be followed by `update`.
    void setCount(unsigned long long count);

    /// Computes the fields from the count.
    bool update();
    /// Computes the count from the fields, then the fields from it (which sets the day of the week). Day and
    /// month are clamped to 1 to 31 and 1 to 12, and a day beyond the month's end becomes its last day. False
    /// when the system cannot express the time.
    bool updateFileTime();
    /// Converts from UTC to local time.
    bool toLocal();
    /// Converts from local time to UTC.
    bool toUTC();
    /// Sets the object to now, in UTC.
    daytime& getUTC();
    /// Sets the machine's clock from the fields, taken as UTC.
    bool setSystemTime() const;
    /// Sets the machine's clock from the count, taken as local time, plus the time since the tick count at
    /// which it was read (none when that is 0).
    bool setLocal(unsigned int tickAtReading) const;

    /// Writes day, month, year and time as in 05.03.2007 14:02:09 to `out` and returns it.
    str& toStr(str& out) const;
    /// Writes the time as in 14:02:09 to `out` and returns it.
    str& timeToStr(str& out) const;
    /// Writes the time as in 20070305_140209, fit for file names, to `out` and returns it.
    str& toStrShort(str& out) const;
    /// Reads a time: the numbers between the separators ":.,;- " are day, month, year, hour, minute, second
    /// and milliseconds; with `yearFirst` year, month and day come in that order; with `iso` "T" and "Z"
    /// separate, too. Fields that the text does not reach keep the present moment's values. Deliberately,
    /// `iso` alone takes the third number for the year again and keeps today's day: ISO order is asked for
    /// with both flags. False when a number is negative or above 65535 or the system cannot express the time;
    /// the object then holds the present moment, as for an empty text.
    bool fromStr(const str& text, bool yearFirst, bool iso);
    /// Reads hour, minute and second; the date is today's. An empty text means now. False, and now, as for
    /// `fromStr`.
    bool timeFromStr(const str& text);

    /// Seconds from this time back to 1970-01-01 00:00: negative for any later time, which callers rely on.
    long long timestamp() const;
    /// Whole days from `a` to `b`, both counts.
    static int diff_days(unsigned long long a, unsigned long long b);
    /// Seconds from `a` to `b`, both counts.
    static double diff_secs(unsigned long long a, unsigned long long b);

private:
    SYSTEMTIME fields_{};
    FILETIME count_{};
};

} // namespace vcore
