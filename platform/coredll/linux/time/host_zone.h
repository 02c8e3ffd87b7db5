// The host's time zone, which a fresh device takes over.

#ifndef ZELTO_PLATFORM_COREDLL_LINUX_TIME_HOST_ZONE_H
#define ZELTO_PLATFORM_COREDLL_LINUX_TIME_HOST_ZONE_H

#include <string_view>

#include "platform/coredll/api/clock.h"

namespace zelto::coredll {

// The rule that holds after the last transition of a compiled zone file (the format of RFC 9636),
// as ParsePosixZone takes it; empty when the file is not one or has no such rule.
std::string_view ZoneFileRule(std::string_view file);

// The zone that the environment variable TZ names (a name in the zone data, a file or a rule), else
// the host's own; UTC where there is neither. `year` is for rules that are not the same every year.
TIME_ZONE_INFORMATION HostZone(int year);

}  // namespace zelto::coredll

#endif
