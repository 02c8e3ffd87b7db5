// Calendar moments and spans of time.

#ifndef ZELTO_COMMON_TIME_DATE_TIME_H
#define ZELTO_COMMON_TIME_DATE_TIME_H

#include <compare>
#include <cstdint>

namespace zelto {

// A signed span of seconds.
// Thread safety: a plain value.
struct DDuration {
    double seconds = 0.0;

    DDuration& operator+=(DDuration other) {
        seconds += other.seconds;
        return *this;
    }
    DDuration& operator-=(DDuration other) {
        seconds -= other.seconds;
        return *this;
    }
};

// A calendar date and time of day, of no particular clock; UniversalTime and LocalTime
// (device_clock.h) are its two flavours. Copying copies the six fields and never the flavour. All
// fields zero is the null value. The fields may hold anything; IsValid tells whether they make
// sense.
// Thread safety: a plain value.
struct DDateTime {
    int32_t day = 0;    // 1 to 31
    int32_t month = 0;  // 1 to 12
    int32_t year = 0;   // from 1900
    int32_t hour = 0;   // 0 to 23
    int32_t minute = 0;
    float seconds = 0.0F;  // 0 to 60 inclusive; milliseconds live in the fraction

    DDateTime() = default;
    DDateTime(int32_t day_, int32_t month_, int32_t year_, int32_t hour_ = 0, int32_t minute_ = 0,
              float seconds_ = 0.0F)
        : day(day_), month(month_), year(year_), hour(hour_), minute(minute_), seconds(seconds_) {}
    DDateTime(const DDateTime&) = default;
    DDateTime& operator=(const DDateTime&) = default;
    virtual ~DDateTime() = default;

    bool IsNull() const;   // seconds within a millisecond of 0 count as 0
    bool IsValid() const;  // every field in its range; the month's length is not looked at
    bool SameDay(const DDateTime& other) const;

    // Carries fields that are too large upward, from the seconds to the year, and negative hours
    // and days below 1 one step down; negative minutes and seconds stay. The days carry by the
    // length of the month they are found in. Safe for any field values: sums wrap modulo 2^32,
    // and seconds whose minutes do not fit 32 bits (or are no number) are left as they are.
    void Normalize();
};

// Years first, seconds last, seconds compared exactly.
bool operator==(const DDateTime& a, const DDateTime& b);
std::partial_ordering operator<=>(const DDateTime& a, const DDateTime& b);

// Every fourth year is a leap year, 1900 and 2100 included. -1 for a month outside 1 to 12.
int32_t DaysInMonth(int32_t month, int32_t year);

}  // namespace zelto

#endif
