// Time zones in the host's one-line form, such as "CET-1CEST,M3.5.0,M10.5.0/3".

#ifndef ZELTO_PLATFORM_COREDLL_LINUX_TIME_POSIX_ZONE_H
#define ZELTO_PLATFORM_COREDLL_LINUX_TIME_POSIX_ZONE_H

#include <string_view>

#include "platform/coredll/api/clock.h"

namespace zelto::coredll {

// The zone's record; false, with the zone untouched, when the text has another form.
// A transition on a weekday of a month becomes a yearly rule ("24:00" as 23:59:59.999, the last
// that a rule can say). Where either of the two has no such form, because it counts days of the
// year or falls on another day than its weekday, both become the dates that they have in `year`.
// Of the zone's two times, the one further ahead is daylight time.
bool ParsePosixZone(std::string_view text, int year, TIME_ZONE_INFORMATION& zone);

}  // namespace zelto::coredll

#endif
