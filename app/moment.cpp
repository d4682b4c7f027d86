#include "app/moment.h"

#include <chrono>

namespace app {

using namespace std::chrono;

Calendar calendarOf(std::int64_t timeOfDay_ms) {
    const sys_time<milliseconds> time{milliseconds(timeOfDay_ms)};
    const sys_days day = floor<days>(time);
    const year_month_day date(day);
    const hh_mm_ss<milliseconds> clock(time - day);
    return {static_cast<int>(date.year()),
            static_cast<int>(static_cast<unsigned>(date.month())),
            static_cast<int>(static_cast<unsigned>(date.day())),
            static_cast<int>(clock.hours().count()),
            static_cast<int>(clock.minutes().count()),
            static_cast<int>(clock.seconds().count()),
            static_cast<int>(clock.subseconds().count())};
}

std::int64_t timeOfDay_ms(const Calendar& calendar) {
    const sys_days day = year(calendar.year) / month(static_cast<unsigned>(calendar.month)) / calendar.day;
    return milliseconds(day.time_since_epoch() + hours(calendar.hour) + minutes(calendar.minute) +
                        seconds(calendar.second) + milliseconds(calendar.millisecond))
        .count();
}

} // namespace app
