#include "platform/coredll/linux/time/calendar.h"

namespace zelto::coredll {
namespace {

constexpr int64_t kDaysPer400Years = 146'097;
constexpr int64_t kDaysPer100Years = 36'524;
constexpr int64_t kDaysPer4Years = 1'461;

constexpr int64_t FloorDivide(int64_t value, int64_t divisor) {
    return value / divisor - (value % divisor < 0 ? 1 : 0);
}

// The days of an ordinary year before each month.
constexpr int kDaysBefore[] = {0, 31, 59, 90, 120, 151, 181, 212, 243, 273, 304, 334, 365};

int DaysBeforeMonth(int month, int year) {
    return kDaysBefore[month - 1] + (month > 2 && IsLeapYear(year) ? 1 : 0);
}

template <class Field>
WORD AsWord(Field value) {
    return static_cast<WORD>(value);
}

}  // namespace

bool IsLeapYear(int year) {
    return year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
}

int DaysInMonth(int month, int year) {
    return DaysBeforeMonth(month + 1, year) - DaysBeforeMonth(month, year);
}

int64_t DaysFromDate(const Date& date) {
    const int64_t years = int64_t{date.year} - kFirstYear;
    return years * 365 + FloorDivide(years, 4) - FloorDivide(years, 100) + FloorDivide(years, 400) +
           DaysBeforeMonth(date.month, date.year) + date.day - 1;
}

Date DateFromDays(int64_t days) {
    const int64_t era = FloorDivide(days, kDaysPer400Years);
    int64_t rest = days - era * kDaysPer400Years;
    // The last day of a leap year that ends a period belongs to that period's last part.
    const int64_t century = rest == kDaysPer400Years - 1 ? 3 : rest / kDaysPer100Years;
    rest -= century * kDaysPer100Years;
    const int64_t four = rest / kDaysPer4Years;
    rest -= four * kDaysPer4Years;
    const int64_t single = rest == kDaysPer4Years - 1 ? 3 : rest / 365;
    rest -= single * 365;

    Date date{};
    date.year = static_cast<int>(kFirstYear + era * 400 + century * 100 + four * 4 + single);
    date.month = static_cast<int>(rest / 32) + 1;  // never too late, at most one too early
    if (date.month < 12 && rest >= DaysBeforeMonth(date.month + 1, date.year))
        ++date.month;
    date.day = static_cast<int>(rest) - DaysBeforeMonth(date.month, date.year) + 1;
    return date;
}

int WeekdayOfDay(int64_t days) {
    return static_cast<int>(days + 1 - FloorDivide(days + 1, 7) * 7);
}

bool IsTimeOfDay(const SYSTEMTIME& time) {
    return time.wHour < 24 && time.wMinute < 60 && time.wSecond < 60 && time.wMilliseconds < 1000;
}

int64_t TicksOfDay(const SYSTEMTIME& time) {
    const int64_t minutes = int64_t{time.wHour} * 60 + time.wMinute;
    return minutes * kTicksPerMinute + int64_t{time.wSecond} * kTicksPerSecond +
           int64_t{time.wMilliseconds} * kTicksPerMillisecond;
}

bool TicksFromSystemTime(const SYSTEMTIME& time, int64_t& ticks) {
    if (time.wYear < kFirstYear || time.wYear > kLastYear || time.wMonth < 1 || time.wMonth > 12)
        return false;
    if (time.wDay < 1 || time.wDay > DaysInMonth(time.wMonth, time.wYear) || !IsTimeOfDay(time))
        return false;
    ticks = DaysFromDate({time.wYear, time.wMonth, time.wDay}) * kTicksPerDay + TicksOfDay(time);
    return true;
}

SYSTEMTIME SystemTimeFromTicks(int64_t ticks) {
    const int64_t days = ticks / kTicksPerDay;
    const int64_t milliseconds = ticks % kTicksPerDay / kTicksPerMillisecond;
    const int64_t seconds = milliseconds / 1000;
    const Date date = DateFromDays(days);
    SYSTEMTIME time{};
    time.wYear = AsWord(date.year);
    time.wMonth = AsWord(date.month);
    time.wDayOfWeek = AsWord(WeekdayOfDay(days));
    time.wDay = AsWord(date.day);
    time.wHour = AsWord(seconds / 3600);
    time.wMinute = AsWord(seconds / 60 % 60);
    time.wSecond = AsWord(seconds % 60);
    time.wMilliseconds = AsWord(milliseconds % 1000);
    return time;
}

}  // namespace zelto::coredll
