#include "platform/coredll/linux/futex.h"

#include <climits>
#include <linux/futex.h>
#include <sys/syscall.h>
#include <time.h>
#include <unistd.h>

namespace zelto::coredll {
namespace {

constexpr int64_t kNanosecondsPerSecond = 1'000'000'000;

}  // namespace

int64_t MonotonicNanoseconds() {
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return int64_t{now.tv_sec} * kNanosecondsPerSecond + now.tv_nsec;
}

void FutexWait(Word& word, uint32_t expected, int64_t nanoseconds) {
    timespec time{};
    time.tv_sec = static_cast<time_t>(nanoseconds / kNanosecondsPerSecond);
    time.tv_nsec = static_cast<long>(nanoseconds % kNanosecondsPerSecond);
    syscall(SYS_futex, &word, FUTEX_WAIT, expected, &time, nullptr, 0);
}

void FutexWakeAll(Word& word) {
    syscall(SYS_futex, &word, FUTEX_WAKE, INT_MAX, nullptr, nullptr, 0);
}

void FutexWakeOne(Word& word) {
    syscall(SYS_futex, &word, FUTEX_WAKE, 1, nullptr, nullptr, 0);
}

}  // namespace zelto::coredll
