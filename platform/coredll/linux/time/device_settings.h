// What the device keeps about its clock, shared by its processes: values of its registry.
//
// Under HKEY_LOCAL_MACHINE\Time, both of type REG_BINARY with numbers in little-endian order:
//   HostOffset           8 bytes: device time = host time + this many ticks of 100 ns
//   TimeZoneInformation  172 bytes: the record TIME_ZONE_INFORMATION
// A value that is not there, or not of this form, counts as none: no offset, the host's zone.

#ifndef ZELTO_PLATFORM_COREDLL_LINUX_TIME_DEVICE_SETTINGS_H
#define ZELTO_PLATFORM_COREDLL_LINUX_TIME_DEVICE_SETTINGS_H

#include <optional>

#include "platform/coredll/api/clock.h"

namespace zelto::coredll {

struct ClockSettings {
    int64_t offset = 0;                         // ticks: device = host + offset
    std::optional<TIME_ZONE_INFORMATION> zone;  // valid; none: the host's
};

// No offset and no zone where there is no device, or no good registry in it.
ClockSettings ReadClockSettings();
int64_t ReadClockOffset();  // alone

// Each stores one of the two and leaves the other alone; one writer at a time, over all processes.
// Result: 0, else what writing the registry failed with.
DWORD StoreClockOffset(int64_t ticks);
DWORD StoreZone(const TIME_ZONE_INFORMATION& zone);

}  // namespace zelto::coredll

#endif
