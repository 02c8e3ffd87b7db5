#include "platform/coredll/api/clock.h"

#include <algorithm>

#include "platform/coredll/linux/base/last_error.h"
#include "platform/coredll/linux/base/monotonic.h"
#include "platform/coredll/linux/time/calendar.h"
#include "platform/coredll/linux/time/device_settings.h"
#include "platform/coredll/linux/time/host_clock.h"
#include "platform/coredll/linux/time/host_zone.h"
#include "platform/coredll/linux/time/zone_rule.h"

namespace zelto::coredll {
namespace {

// The sum of two counts of ticks, within what the calendar knows.
int64_t AddTicks(int64_t a, int64_t b) {
    if (b > 0 && a > kMaxTicks - b)
        return kMaxTicks;
    return std::max(int64_t{0}, a + b);
}

// The device's time and zone, read together.
struct DeviceTime {
    int64_t universal;
    TIME_ZONE_INFORMATION zone;
    ZoneState state;
};

DeviceTime ReadDeviceTime() {
    const ClockSettings settings = ReadClockSettings();
    DeviceTime time{};
    time.universal = AddTicks(HostFileTime(), settings.offset);
    time.zone = settings.zone ? *settings.zone : HostZone(time.universal);
    time.state = ZoneStateAt(time.zone, time.universal);
    return time;
}

// A device that cannot be written is told as 5, whatever hinders it, as the calls state.
BOOL Stored(DWORD error) {
    return error == ERROR_SUCCESS ? TRUE : Fail(ERROR_ACCESS_DENIED);
}

BOOL SetUniversal(int64_t ticks) {
    return Stored(StoreClockOffset(ticks - HostFileTime()));
}

}  // namespace
}  // namespace zelto::coredll

using namespace zelto::coredll;

DWORD GetTickCount() {
    constexpr int64_t kNanosecondsPerMillisecond = 1'000'000;
    return static_cast<DWORD>(MonotonicNanoseconds() / kNanosecondsPerMillisecond);
}

void GetSystemTime(SYSTEMTIME* time) {
    *time = SystemTimeFromTicks(AddTicks(HostFileTime(), ReadClockOffset()));
}

void GetLocalTime(SYSTEMTIME* time) {
    const DeviceTime now = ReadDeviceTime();
    *time = SystemTimeFromTicks(AddTicks(now.universal, -now.state.bias * kTicksPerMinute));
}

BOOL SetSystemTime(const SYSTEMTIME* time) {
    int64_t ticks = 0;
    if (time == nullptr || !TicksFromSystemTime(*time, ticks))
        return Fail(ERROR_INVALID_PARAMETER);
    return SetUniversal(ticks);
}

BOOL SetLocalTime(const SYSTEMTIME* time) {
    int64_t ticks = 0;
    if (time == nullptr || !TicksFromSystemTime(*time, ticks))
        return Fail(ERROR_INVALID_PARAMETER);
    ticks += ReadDeviceTime().state.bias * kTicksPerMinute;
    return ticks < 0 ? Fail(ERROR_INVALID_PARAMETER) : SetUniversal(ticks);
}

BOOL SystemTimeToFileTime(const SYSTEMTIME* time, FILETIME* result) {
    int64_t ticks = 0;
    if (time == nullptr || result == nullptr || !TicksFromSystemTime(*time, ticks))
        return Fail(ERROR_INVALID_PARAMETER);
    result->dwLowDateTime = static_cast<DWORD>(ticks);
    result->dwHighDateTime = static_cast<DWORD>(ticks >> 32);
    return TRUE;
}

BOOL FileTimeToSystemTime(const FILETIME* time, SYSTEMTIME* result) {
    if (time == nullptr || result == nullptr || time->dwHighDateTime >= 0x80000000u)
        return Fail(ERROR_INVALID_PARAMETER);
    *result = SystemTimeFromTicks(int64_t{time->dwHighDateTime} << 32 | time->dwLowDateTime);
    return TRUE;
}

DWORD GetTimeZoneInformation(TIME_ZONE_INFORMATION* zone) {
    if (zone == nullptr)
        return Fail(ERROR_INVALID_PARAMETER, DWORD{TIME_ZONE_ID_UNKNOWN});
    const DeviceTime now = ReadDeviceTime();
    *zone = now.zone;
    return now.state.id;
}

BOOL SetTimeZoneInformation(const TIME_ZONE_INFORMATION* zone) {
    if (zone == nullptr || !IsValidZone(*zone))
        return Fail(ERROR_INVALID_PARAMETER);
    return Stored(StoreZone(*zone));
}
