// The device's clock and time zone. Setting them never touches the host: the clock is the host's
// plus an offset, the zone a record, both kept in the device and seen by all its processes.

#ifndef ZELTO_PLATFORM_COREDLL_API_CLOCK_H
#define ZELTO_PLATFORM_COREDLL_API_CLOCK_H

#include "platform/coredll/api/base.h"

struct SYSTEMTIME {
    WORD wYear;  // 1601 to 30827
    WORD wMonth;
    WORD wDayOfWeek;  // 0 = Sunday; ignored on the way in
    WORD wDay;
    WORD wHour;
    WORD wMinute;
    WORD wSecond;
    WORD wMilliseconds;
};
static_assert(sizeof(SYSTEMTIME) == 16);

// Units of 100 ns since 1601-01-01 00:00 UTC, in two halves.
struct FILETIME {
    DWORD dwLowDateTime;
    DWORD dwHighDateTime;
};

// Biases are minutes: UTC = local + Bias + (StandardBias or DaylightBias). A transition with year
// 0 is yearly: wDay is which wDayOfWeek of the month, 5 the last. Month 0 in both: none.
struct TIME_ZONE_INFORMATION {
    LONG Bias;
    WCHAR StandardName[32];
    SYSTEMTIME StandardDate;  // the switch to standard, in daylight time
    LONG StandardBias;
    WCHAR DaylightName[32];
    SYSTEMTIME DaylightDate;  // the switch to daylight, in standard time
    LONG DaylightBias;
};
static_assert(sizeof(TIME_ZONE_INFORMATION) == 172);

enum : DWORD { TIME_ZONE_ID_UNKNOWN = 0, TIME_ZONE_ID_STANDARD = 1, TIME_ZONE_ID_DAYLIGHT = 2 };

extern "C" {

DWORD GetTickCount();  // ms since boot, time asleep not counted; wraps after 49.7 days

void GetSystemTime(SYSTEMTIME* time);
void GetLocalTime(SYSTEMTIME* time);

// Errors: 87 not a valid date and time (the clock is unchanged), 5 the device cannot be written.
BOOL SetSystemTime(const SYSTEMTIME* time);
BOOL SetLocalTime(const SYSTEMTIME* time);

BOOL SystemTimeToFileTime(const SYSTEMTIME* time, FILETIME* result);  // 87
BOOL FileTimeToSystemTime(const FILETIME* time, SYSTEMTIME* result);  // 87 from 2^63 up

// A fresh device takes its zone from the host. The result is which bias is in force.
DWORD GetTimeZoneInformation(TIME_ZONE_INFORMATION* zone);
BOOL SetTimeZoneInformation(const TIME_ZONE_INFORMATION* zone);  // 87, 5
}

#endif
