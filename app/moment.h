/// @file
/// A moment as the application counts it.
#pragma once

#include <cstdint>

namespace app {

/// A moment on two clocks.
struct Moment {
    std::int64_t steady_ms = 0; ///< never goes back
    /// Local time of day with its date: milliseconds since the start of 1970, as if local time were UTC.
    std::int64_t timeOfDay_ms = 0;
};

/// A date and time of day.
struct Calendar {
    int year = 1970;
    int month = 1;
    int day = 1;
    int hour = 0;
    int minute = 0;
    int second = 0;
    int millisecond = 0;
};

/// What a `timeOfDay_ms` is in the calendar, and back.
Calendar calendarOf(std::int64_t timeOfDay_ms);
std::int64_t timeOfDay_ms(const Calendar& calendar);

} // namespace app
