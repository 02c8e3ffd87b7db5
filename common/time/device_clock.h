// Dates as counts of seconds, arithmetic through them, the device's clock and its time zone.

#ifndef ZELTO_COMMON_TIME_DEVICE_CLOCK_H
#define ZELTO_COMMON_TIME_DEVICE_CLOCK_H

#include <cstdint>

#include "common/time/date_time.h"

namespace zelto {

// Seconds since 1970-01-01 00:00:00 of the same clock as the value: no zone is applied. The range
// is that of the system's calendar, 1601 to 30827, with real century leap years; a value that is
// no moment of it (the null value, 31 February, second 60) gives a not-a-number.
// Thread safety: any thread.
double ToSeconds(const DDateTime& value);

// The way back, cut to milliseconds. A count before 1601, after 30827 or not a number gives the
// null value.
// Thread safety: any thread.
DDateTime FromSeconds(double seconds);

// Through the seconds count; what has none (see above) becomes the null value.
DDateTime& operator+=(DDateTime& value, DDuration span);
DDateTime& operator-=(DDateTime& value, DDuration span);
DDateTime operator+(DDateTime value, DDuration span);
DDateTime operator-(DDateTime value, DDuration span);

// From b to a. A null value on one side only gives the marker -268435455 (a) or +268435455 (b)
// seconds, null on both sides 0.
DDuration Difference(const DDateTime& a, const DDateTime& b);

// Counted in 32-bit seconds: beyond 24855 days the count wraps.
DDuration Days(int32_t days);

// Universal time.
// Thread safety: a plain value.
struct UniversalTime : DDateTime {
    UniversalTime() = default;
    explicit UniversalTime(double count) : DDateTime(FromSeconds(count)) {}
    explicit UniversalTime(const DDateTime& value) : DDateTime(value) {}
};

// Local time: universal time less an offset in seconds, ZoneOffset() unless it is given.
// Thread safety: a plain value; the constructor without an offset reads ZoneOffset().
struct LocalTime : DDateTime {
    explicit LocalTime(const UniversalTime& value);
    LocalTime(const DDateTime& value, double offset);
};

// The device's clock, to the millisecond.
// Thread safety: any thread.
DDateTime NowLocal();
UniversalTime NowUniversal();
double NowSeconds();  // of universal time

// Set the device's clock, then refresh the zone offset. False: the value is no moment that the
// clock accepts, or the device refused; the clock is as it was.
bool SetLocalClock(const DDateTime& value);
bool SetUniversalClock(const DDateTime& value);

// The zone's bias without daylight, in seconds (universal less local), and whether the zone has
// daylight saving at all. Always true.
bool GetZone(double& offset, bool& daylight);

// Sets the bias to the nearest minute of an offset in seconds; universal time stays, local time
// moves. Then refreshes the zone offset. False: the offset does not fit, or the device refused.
bool SetZoneOffset(double offset);

// When daylight saving begins and ends in local time, each read on the clock that it ends. A
// yearly rule means the last Sunday of its month in `year`, whichever weekday and week it names; a
// rule for one year only is taken as it is. False: the zone has no daylight saving, and both are
// null.
bool DaylightPeriod(int32_t year, DDateTime& begin, DDateTime& end);

// Recomputes ZoneOffset() from the zone and the local clock. Daylight saving is in force strictly
// between the two moments above: it is for zones whose daylight period lies within one year, and
// holds on through the hour that the clock repeats at its end.
void RefreshZoneOffset();

// Universal time less local time in seconds, as of the last refresh; 0.0 before the first.
// Thread safety: one unsynchronised value for the process; threads that change the zone serialise.
double ZoneOffset();

}  // namespace zelto

#endif
