// What a time zone's record says about a moment.

#ifndef ZELTO_PLATFORM_COREDLL_LINUX_TIME_ZONE_RULE_H
#define ZELTO_PLATFORM_COREDLL_LINUX_TIME_ZONE_RULE_H

#include "platform/coredll/api/clock.h"

namespace zelto::coredll {

struct ZoneState {
    DWORD id;      // TIME_ZONE_ID_...
    int64_t bias;  // minutes: UTC = local + bias
};

// Biases of at most a day either way; transitions in both places or in none, each of them a date
// or one of the weekdays of a month, with a time of day.
bool IsValidZone(const TIME_ZONE_INFORMATION& zone);

// The zone is valid. Ticks are UTC. Without transitions the zone's own bias holds, of unknown
// kind; where the two fall together, the one to standard time decides.
ZoneState ZoneStateAt(const TIME_ZONE_INFORMATION& zone, int64_t ticks);

}  // namespace zelto::coredll

#endif
