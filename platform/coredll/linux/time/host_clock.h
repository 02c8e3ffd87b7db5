// The host's clocks. Nothing else reads its time of day, so that a test which brings its own
// implementation of this header decides what time it is.

#ifndef ZELTO_PLATFORM_COREDLL_LINUX_TIME_HOST_CLOCK_H
#define ZELTO_PLATFORM_COREDLL_LINUX_TIME_HOST_CLOCK_H

#include <cstdint>

namespace zelto::coredll {

// The time of day: ticks of 100 ns since 1601-01-01 00:00 UTC.
int64_t HostFileTime();

}  // namespace zelto::coredll

#endif
