#include "platform/coredll/linux/time/host_clock.h"

#include <time.h>

#include "platform/coredll/linux/time/calendar.h"

namespace zelto::coredll {

int64_t HostFileTime() {
    constexpr int64_t kTicksTo1970 = 116'444'736'000'000'000;
    constexpr int64_t kNanosecondsPerTick = 100;
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    return kTicksTo1970 + int64_t{now.tv_sec} * kTicksPerSecond + now.tv_nsec / kNanosecondsPerTick;
}

}  // namespace zelto::coredll
