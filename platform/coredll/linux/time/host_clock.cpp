// Alone, so that tests put a clock of their own in its place.

#include "platform/coredll/linux/time/host_clock.h"

#include <time.h>

#include "platform/coredll/linux/base/ticks.h"

namespace zelto::coredll {

int64_t HostFileTime() {
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    return TicksFromHost(now.tv_sec, now.tv_nsec);
}

}  // namespace zelto::coredll
