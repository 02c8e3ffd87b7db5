// Dates of the standard library's calendar, and how a failed check shows one.

#ifndef ZELTO_TESTS_TIME_DATE_SUPPORT_H
#define ZELTO_TESTS_TIME_DATE_SUPPORT_H

#include <chrono>
#include <ostream>

#include "common/time/date_time.h"

namespace zelto {

inline void PrintTo(const DDateTime& value, std::ostream* out) {
    *out << value.year << '-' << value.month << '-' << value.day << ' ' << value.hour << ':'
         << value.minute << ':' << value.seconds;
}

inline DDateTime OnDay(std::chrono::sys_days day, int32_t second_of_day, float fraction) {
    const std::chrono::year_month_day date(day);
    return {static_cast<int32_t>(static_cast<unsigned>(date.day())),
            static_cast<int32_t>(static_cast<unsigned>(date.month())),
            static_cast<int>(date.year()),
            second_of_day / 3600,
            second_of_day / 60 % 60,
            static_cast<float>(second_of_day % 60) + fraction};
}

}  // namespace zelto

#endif
