// How fast the waits of this layer run: the environment variable ZELTO_TIME_SCALE, 1 to 1000,
// divides every time-out and every Sleep, so that a test sees what comes of 500 ms in 10. Clocks
// are not touched. Read once a process; anything else there counts as 1.

#ifndef ZELTO_PLATFORM_COREDLL_LINUX_BASE_TIME_SCALE_H
#define ZELTO_PLATFORM_COREDLL_LINUX_BASE_TIME_SCALE_H

#include <cstdint>

namespace zelto::coredll {

constexpr int kMaxTimeScale = 1000;
int TimeScale();

// What a wait of so many milliseconds takes, in nanoseconds.
int64_t ScaledWait(uint32_t milliseconds);

}  // namespace zelto::coredll

#endif
