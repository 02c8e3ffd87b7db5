#include "common/time/date_time.h"

#include <cmath>

namespace zelto {
namespace {

// Sums of fields wrap modulo 2^32 instead of being undefined.
void WrapAdd(int32_t& field, int32_t amount) {
    field = static_cast<int32_t>(static_cast<uint32_t>(field) + static_cast<uint32_t>(amount));
}

void CarrySeconds(DDateTime& value) {
    if (!(value.seconds >= 60.0F))
        return;
    const float minutes = std::trunc(value.seconds / 60.0F);
    if (minutes >= 2147483648.0F)
        return;
    WrapAdd(value.minute, static_cast<int32_t>(minutes));
    value.seconds -= minutes * 60.0F;
}

void CarryMinutesAndHours(DDateTime& value) {
    if (value.minute >= 60) {
        WrapAdd(value.hour, value.minute / 60);
        value.minute %= 60;
    }
    if (value.hour >= 24) {
        WrapAdd(value.day, value.hour / 24);
        value.hour %= 24;
    }
    if (value.hour < 0) {
        WrapAdd(value.day, value.hour / 24);
        value.hour %= 24;
        WrapAdd(value.day, -1);
        value.hour += 24;
    }
}

void CarryDays(DDateTime& value) {
    // -1 for a month that does not exist: the carry then runs backward, one month a day.
    const int32_t length = DaysInMonth(value.month, value.year);
    if (value.day >= length + 1) {
        WrapAdd(value.month, (value.day - 1) / length);
        value.day = (value.day - 1) % length + 1;
    }
    if (value.day < 1) {
        WrapAdd(value.month, -1);
        if (value.month == 0) {
            value.month = 12;
            WrapAdd(value.year, -1);
        }
        WrapAdd(value.day, DaysInMonth(value.month, value.year));
    }
}

void CarryMonths(DDateTime& value) {
    if (value.month >= 13) {
        WrapAdd(value.year, (value.month - 1) / 12);
        value.month = (value.month - 1) % 12 + 1;
    }
}

}  // namespace

bool DDateTime::IsNull() const {
    return hour == 0 && minute == 0 && day == 0 && month == 0 && year == 0 &&
           std::fabs(static_cast<double>(seconds)) < 0.001;
}

bool DDateTime::IsValid() const {
    return hour >= 0 && hour <= 23 && minute >= 0 && minute <= 59 && seconds >= 0.0F &&
           seconds <= 60.0F && day >= 1 && day <= 31 && month >= 1 && month <= 12 && year >= 1900;
}

bool DDateTime::SameDay(const DDateTime& other) const {
    return day == other.day && month == other.month && year == other.year;
}

void DDateTime::Normalize() {
    CarrySeconds(*this);
    CarryMinutesAndHours(*this);
    CarryDays(*this);
    CarryMonths(*this);
}

bool operator==(const DDateTime& a, const DDateTime& b) {
    return std::is_eq(a <=> b);
}

std::partial_ordering operator<=>(const DDateTime& a, const DDateTime& b) {
    if (a.year != b.year)
        return a.year <=> b.year;
    if (a.month != b.month)
        return a.month <=> b.month;
    if (a.day != b.day)
        return a.day <=> b.day;
    if (a.hour != b.hour)
        return a.hour <=> b.hour;
    if (a.minute != b.minute)
        return a.minute <=> b.minute;
    return a.seconds <=> b.seconds;
}

int32_t DaysInMonth(int32_t month, int32_t year) {
    switch (month) {
        case 2:
            return year % 4 == 0 ? 29 : 28;
        case 4:
        case 6:
        case 9:
        case 11:
            return 30;
        default:
            return month >= 1 && month <= 12 ? 31 : -1;
    }
}

}  // namespace zelto
