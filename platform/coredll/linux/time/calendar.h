// The calendar: days and 100 ns ticks since 1601-01-01 00:00, which was a Monday.

#ifndef ZELTO_PLATFORM_COREDLL_LINUX_TIME_CALENDAR_H
#define ZELTO_PLATFORM_COREDLL_LINUX_TIME_CALENDAR_H

#include "platform/coredll/api/clock.h"
#include "platform/coredll/linux/base/ticks.h"

namespace zelto::coredll {

constexpr int kFirstYear = 1601;
constexpr int kLastYear = 30827;

struct Date {
    int year;
    int month;
    int day;
};

bool IsLeapYear(int year);
int DaysInMonth(int month, int year);  // month 1 to 12

// Any year, before 1601 too; the day may lie outside its month.
int64_t DaysFromDate(const Date& date);
Date DateFromDays(int64_t days);
int WeekdayOfDay(int64_t days);  // 0 = Sunday

// Whether hour, minute, second and millisecond are those of a time of day.
bool IsTimeOfDay(const SYSTEMTIME& time);
int64_t TicksOfDay(const SYSTEMTIME& time);

// False, with the result untouched, when the fields are no date and time.
bool TicksFromSystemTime(const SYSTEMTIME& time, int64_t& ticks);
SYSTEMTIME SystemTimeFromTicks(int64_t ticks);  // ticks >= 0

}  // namespace zelto::coredll

#endif
