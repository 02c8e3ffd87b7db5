// The host's clock for waits: never set, shared by all processes of the host.

#ifndef ZELTO_PLATFORM_COREDLL_LINUX_BASE_MONOTONIC_H
#define ZELTO_PLATFORM_COREDLL_LINUX_BASE_MONOTONIC_H

#include <cstdint>
#include <time.h>

namespace zelto::coredll {

// Nanoseconds since some moment before the host's programs began.
inline int64_t MonotonicNanoseconds() {
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return int64_t{now.tv_sec} * 1'000'000'000 + now.tv_nsec;
}

// The same to some milliseconds, several times as fast: for looking whether it is time again.
inline int64_t CoarseNanoseconds() {
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC_COARSE, &now);
    return int64_t{now.tv_sec} * 1'000'000'000 + now.tv_nsec;
}

}  // namespace zelto::coredll

#endif
