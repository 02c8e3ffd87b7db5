// The system's unit of time: ticks of 100 ns, counted from 1601-01-01 00:00 UTC.

#ifndef ZELTO_PLATFORM_COREDLL_LINUX_BASE_TICKS_H
#define ZELTO_PLATFORM_COREDLL_LINUX_BASE_TICKS_H

#include <cstdint>
#include <limits>

namespace zelto::coredll {

constexpr int64_t kTicksPerMillisecond = 10'000;
constexpr int64_t kTicksPerSecond = 1'000 * kTicksPerMillisecond;
constexpr int64_t kTicksPerMinute = 60 * kTicksPerSecond;
constexpr int64_t kTicksPerDay = 1'440 * kTicksPerMinute;
constexpr int64_t kNanosecondsPerTick = 100;
constexpr int64_t kMaxTicks = std::numeric_limits<int64_t>::max();

// The host counts seconds from 1970-01-01 00:00 UTC.
constexpr int64_t kSecondsTo1970 = 11'644'473'600;

constexpr int64_t TicksFromHost(int64_t seconds, int64_t nanoseconds = 0) {
    return (seconds + kSecondsTo1970) * kTicksPerSecond + nanoseconds / kNanosecondsPerTick;
}
constexpr int64_t HostSeconds(int64_t ticks) {
    return ticks / kTicksPerSecond - kSecondsTo1970;
}

}  // namespace zelto::coredll

#endif
