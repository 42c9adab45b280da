/* clock.cpp - see clock.h. */
#include "solver/report/clock.h"

#include "solver/report/streams.h"

std::string clock_text(int64_t unix_ms)
{
    using namespace std::chrono;
    const sys_time<milliseconds> when{milliseconds(unix_ms)};
    const sys_days day = floor<days>(when);
    const year_month_day date(day);
    const hh_mm_ss<milliseconds> time(when - day);
    return text_format("%04d-%02u-%02uT%02d:%02d:%02d.%03dZ", static_cast<int>(date.year()),
                       static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()),
                       static_cast<int>(time.hours().count()), static_cast<int>(time.minutes().count()),
                       static_cast<int>(time.seconds().count()), static_cast<int>(time.subseconds().count()));
}
