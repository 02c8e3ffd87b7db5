#include "common/time/device_clock.h"

#include <cmath>
#include <limits>

#include "common/text/numbers.h"
#include "platform/coredll/coredll.h"

namespace zelto {
namespace {

// From the start of the system's calendar in 1601. The Linux layer has the same distance in
// ticks.h for itself: the system's headers name none, and they are all that this layer may see.
constexpr double kSecondsTo1970 = 11644473600.0;
constexpr double kMissingDate = 268435455.0;
constexpr uint32_t kSecondsPerDay = 86400;

double g_zone_offset = 0.0;

float Fraction(float seconds) {
    return seconds - std::trunc(seconds);
}

int32_t WholeMilliseconds(float seconds) {
    return WholePart(static_cast<double>(Fraction(seconds)) * 1000.0);
}

// False when a field does not even fit the record; the system call checks the rest.
bool FillSystemTime(const DDateTime& value, int32_t milliseconds, SYSTEMTIME& record) {
    if (std::isnan(value.seconds))
        return false;
    const int32_t fields[] = {value.year,  value.month,  value.day,
                              value.hour,  value.minute, WholePart(value.seconds),
                              milliseconds};
    for (const int32_t field : fields) {
        if (field < 0 || field > std::numeric_limits<WORD>::max())
            return false;
    }
    record = {
        static_cast<WORD>(fields[0]), static_cast<WORD>(fields[1]), 0,
        static_cast<WORD>(fields[2]), static_cast<WORD>(fields[3]), static_cast<WORD>(fields[4]),
        static_cast<WORD>(fields[5]), static_cast<WORD>(fields[6])};
    return true;
}

DDateTime FromSystemTime(const SYSTEMTIME& record) {
    return {record.wDay,    record.wMonth,
            record.wYear,   record.wHour,
            record.wMinute, static_cast<float>(record.wSecond + record.wMilliseconds / 1000.0)};
}

bool ToFileTime(const DDateTime& value, FILETIME& file_time) {
    SYSTEMTIME record;
    return FillSystemTime(value, 0, record) && SystemTimeToFileTime(&record, &file_time) != 0;
}

// 0 is Sunday, and the answer for what is no moment of the calendar.
int32_t Weekday(const DDateTime& value) {
    FILETIME file_time;
    SYSTEMTIME record;
    if (!ToFileTime(value, file_time) || FileTimeToSystemTime(&file_time, &record) == 0)
        return 0;
    return record.wDayOfWeek;
}

DDateTime LastSunday(DDateTime rule, int32_t year) {
    rule.year = year;
    rule.day = 1;
    rule.month += 1;
    if (rule.month == 13) {
        rule.month = 1;
        rule.year += 1;
    }
    rule -= Days(1);
    rule.day -= Weekday(rule);
    return rule;
}

DDateTime Transition(const SYSTEMTIME& rule, int32_t year) {
    const DDateTime moment = FromSystemTime(rule);
    return moment.year == 0 ? LastSunday(moment, year) : moment;
}

bool PeriodOf(const TIME_ZONE_INFORMATION& zone, int32_t year, DDateTime& begin, DDateTime& end) {
    if (zone.DaylightBias == 0) {
        begin = end = DDateTime();
        return false;
    }
    begin = Transition(zone.DaylightDate, year);
    end = Transition(zone.StandardDate, year);
    return true;
}

template <class SetClock>
bool SetTheClock(const DDateTime& value, SetClock set_clock) {
    SYSTEMTIME record;
    const bool set =
        FillSystemTime(value, WholeMilliseconds(value.seconds), record) && set_clock(&record) != 0;
    RefreshZoneOffset();
    return set;
}

}  // namespace

double ToSeconds(const DDateTime& value) {
    FILETIME file_time;
    if (!ToFileTime(value, file_time))
        return std::numeric_limits<double>::quiet_NaN();
    const uint64_t ticks =
        (static_cast<uint64_t>(file_time.dwHighDateTime) << 32) | file_time.dwLowDateTime;
    const double fraction = static_cast<double>(Fraction(value.seconds)) * 1000.0 / 1000.0;
    return static_cast<double>(ticks) / 1e7 + fraction - kSecondsTo1970;
}

DDateTime FromSeconds(double seconds) {
    constexpr double kTooLate = 9223372036854775808.0;
    const double ticks = (seconds + kSecondsTo1970) * 1000.0 * 1000.0 * 10.0;
    if (!(ticks >= 0 && ticks < kTooLate))
        return {};
    const auto count = static_cast<uint64_t>(ticks);
    const FILETIME file_time = {static_cast<DWORD>(count), static_cast<DWORD>(count >> 32)};
    SYSTEMTIME record;
    if (FileTimeToSystemTime(&file_time, &record) == 0)
        return {};
    return FromSystemTime(record);
}

DDateTime& operator+=(DDateTime& value, DDuration span) {
    value = FromSeconds(ToSeconds(value) + span.seconds);
    if (!value.IsNull())
        value.Normalize();
    return value;
}

DDateTime& operator-=(DDateTime& value, DDuration span) {
    return value += DDuration{-span.seconds};
}

DDateTime operator+(DDateTime value, DDuration span) {
    return value += span;
}

DDateTime operator-(DDateTime value, DDuration span) {
    return value -= span;
}

DDuration Difference(const DDateTime& a, const DDateTime& b) {
    if (a.IsNull())
        return {b.IsNull() ? 0.0 : -kMissingDate};
    if (b.IsNull())
        return {kMissingDate};
    return {ToSeconds(a) - ToSeconds(b)};
}

DDuration Days(int32_t days) {
    return {
        static_cast<double>(static_cast<int32_t>(static_cast<uint32_t>(days) * kSecondsPerDay))};
}

LocalTime::LocalTime(const UniversalTime& value) : LocalTime(value, ZoneOffset()) {}

LocalTime::LocalTime(const DDateTime& value, double offset)
    : DDateTime(value - DDuration{offset}) {}

DDateTime NowLocal() {
    SYSTEMTIME record = {};
    GetLocalTime(&record);
    return FromSystemTime(record);
}

UniversalTime NowUniversal() {
    SYSTEMTIME record = {};
    GetSystemTime(&record);
    return UniversalTime(FromSystemTime(record));
}

double NowSeconds() {
    return ToSeconds(NowUniversal());
}

bool SetLocalClock(const DDateTime& value) {
    return SetTheClock(value, SetLocalTime);
}

bool SetUniversalClock(const DDateTime& value) {
    return SetTheClock(value, SetSystemTime);
}

bool GetZone(double& offset, bool& daylight) {
    TIME_ZONE_INFORMATION zone = {};
    GetTimeZoneInformation(&zone);
    offset = zone.Bias * 60.0;
    daylight = zone.DaylightBias != 0;
    return true;
}

bool SetZoneOffset(double offset) {
    const double minutes = (offset > 0 ? offset + 0.5 : offset - 0.5) / 60;
    if (!(std::fabs(minutes) < std::numeric_limits<LONG>::max()))
        return false;
    SYSTEMTIME universal = {};
    GetSystemTime(&universal);
    TIME_ZONE_INFORMATION zone = {};
    GetTimeZoneInformation(&zone);
    zone.Bias = static_cast<LONG>(minutes);
    const bool set = SetTimeZoneInformation(&zone) != 0 && SetSystemTime(&universal) != 0;
    RefreshZoneOffset();
    return set;
}

bool DaylightPeriod(int32_t year, DDateTime& begin, DDateTime& end) {
    TIME_ZONE_INFORMATION zone = {};
    GetTimeZoneInformation(&zone);
    return PeriodOf(zone, year, begin, end);
}

void RefreshZoneOffset() {
    TIME_ZONE_INFORMATION zone = {};
    DWORD state = GetTimeZoneInformation(&zone);
    const DDateTime now = NowLocal();
    DDateTime begin;
    DDateTime end;
    if (PeriodOf(zone, now.year, begin, end))
        state = begin < now && now < end ? TIME_ZONE_ID_DAYLIGHT : TIME_ZONE_ID_STANDARD;
    g_zone_offset = zone.Bias * 60.0;
    if (state == TIME_ZONE_ID_DAYLIGHT)
        g_zone_offset += zone.DaylightBias * 60.0;
}

double ZoneOffset() {
    return g_zone_offset;
}

}  // namespace zelto
