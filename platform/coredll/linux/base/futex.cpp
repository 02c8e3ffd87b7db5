#include "platform/coredll/linux/base/futex.h"

#include <climits>
#include <linux/futex.h>
#include <sys/syscall.h>
#include <time.h>
#include <unistd.h>

namespace zelto::coredll {
namespace {

constexpr int64_t kNanosecondsPerSecond = 1'000'000'000;

// The call that takes timespec as this host's C library has it: where longs have 32 bits and times
// 64, that is a call of its own.
#ifdef SYS_futex_time64
constexpr long kFutex = sizeof(time_t) > sizeof(long) ? SYS_futex_time64 : SYS_futex;
#else
constexpr long kFutex = SYS_futex;
#endif

}  // namespace

void FutexWait(Word& word, uint32_t expected, int64_t nanoseconds) {
    timespec time{};
    time.tv_sec = static_cast<time_t>(nanoseconds / kNanosecondsPerSecond);
    time.tv_nsec = static_cast<long>(nanoseconds % kNanosecondsPerSecond);
    syscall(kFutex, &word, FUTEX_WAIT, expected, &time, nullptr, 0);
}

void FutexWakeAll(Word& word) {
    syscall(kFutex, &word, FUTEX_WAKE, INT_MAX, nullptr, nullptr, 0);
}

void FutexWakeOne(Word& word) {
    syscall(kFutex, &word, FUTEX_WAKE, 1, nullptr, nullptr, 0);
}

}  // namespace zelto::coredll
