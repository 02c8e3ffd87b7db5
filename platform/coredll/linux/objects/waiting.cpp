#include "platform/coredll/linux/objects/waiting.h"

#include <algorithm>
#include <cstdlib>
#include <limits>
#include <sched.h>
#include <unistd.h>

#include "platform/coredll/linux/base/monotonic.h"
#include "platform/coredll/linux/base/time_scale.h"

namespace zelto::coredll {
namespace {

constexpr int64_t kLongestSleep = 250'000'000;  // ns
constexpr DWORD kLongestFiniteTimeout = 0x7FFFFFFF;
constexpr int kPausesPerLook = 16;

int ProcessorCount() {
    cpu_set_t set;
    CPU_ZERO(&set);
    return sched_getaffinity(0, sizeof set, &set) == 0 ? CPU_COUNT(&set) : 1;
}

// A process that is kept on one processor waits for others that may well be on another one, so the
// host's processors count, not its own.
bool OthersRunBeside() {
    static const bool beside = sysconf(_SC_NPROCESSORS_ONLN) > 1;
    return beside;
}

int64_t InitialSpinLimit() {
    if (!OthersRunBeside())
        return 0;
    const char* text = std::getenv("ZELTO_SPIN_US");
    const int64_t microseconds =
        text != nullptr && *text != '\0' ? std::atoll(text) : kDefaultSpinMicroseconds;
    return std::clamp<int64_t>(microseconds, 0, 1000) * 1000;
}

std::atomic<int64_t>& SpinLimit() {
    static std::atomic<int64_t> limit{InitialSpinLimit()};
    return limit;
}

// Nanoseconds this thread spins next time; below 0 until its first wait.
thread_local int64_t t_spin = -1;

std::atomic<uint32_t> g_waiting_threads{0};

struct CountedWait {
    CountedWait() { g_waiting_threads.fetch_add(1, std::memory_order_relaxed); }
    ~CountedWait() { g_waiting_threads.fetch_sub(1, std::memory_order_relaxed); }
    CountedWait(const CountedWait&) = delete;
    CountedWait& operator=(const CountedWait&) = delete;
};

// True when the change came while spinning. Yields at each look: the announcer may share our
// processor, and gets on only then.
bool SpinForChange(const Word& sequence, uint32_t seen, int64_t end) {
    while (sequence.load(std::memory_order_acquire) == seen) {
        if (MonotonicNanoseconds() >= end)
            return false;
        sched_yield();
        for (int i = 0; i < kPausesPerLook && sequence.load() == seen; ++i)
            SpinPause();
    }
    return true;
}

constexpr uint32_t kProbeEvery = 32;
thread_local uint32_t t_waits = 0;

// How long to spin now. A spin that caught its change is allowed the whole limit again, one that
// did not half of what it had: the other side is slow. Now and then the whole limit is tried again.
int64_t NextSpin(int64_t limit) {
    const bool probe = t_spin < 0 || t_spin > limit || ++t_waits % kProbeEvery == 0;
    if (probe)
        t_spin = limit;
    return t_spin;
}

}  // namespace

Deadline::Deadline(DWORD milliseconds) {
    if (milliseconds == INFINITE) {
        end_ = std::numeric_limits<int64_t>::max();
    } else if (milliseconds == 0) {
        end_ = 0;
    } else {
        end_ = MonotonicNanoseconds() + ScaledWait(std::min(milliseconds, kLongestFiniteTimeout));
    }
}

int64_t Deadline::Left() const {
    if (end_ == 0 || end_ == std::numeric_limits<int64_t>::max())
        return end_;
    return end_ - MonotonicNanoseconds();
}

void AnnounceChange(WaitWord& word) {
    // Sequentially consistent, as the sleeper's side below: of the two, "changed" and "somebody
    // sleeps", each side writes one and then reads the other, and one of them must see.
    word.sequence.fetch_add(1);
    if (word.sleepers.load() != 0 && word.sleepers.exchange(0) != 0)
        FutexWakeAll(word.sequence);
}

void AwaitChange(WaitWord& word, uint32_t seen, const Deadline& deadline) {
    const CountedWait counted;
    const int64_t limit = SpinLimit().load(std::memory_order_relaxed);
    const int64_t spin = NextSpin(limit);
    if (spin > 0) {
        const int64_t end = MonotonicNanoseconds() + std::min(spin, deadline.Left());
        const bool caught = SpinForChange(word.sequence, seen, end);
        t_spin = caught ? limit : spin / 2;
        if (caught)
            return;
    }
    // Also without a spin: an announcer that shares our processor gets on now, and a wake-up is
    // saved.
    sched_yield();
    if (word.sequence.load() != seen)
        return;
    const int64_t sleep = std::min(deadline.Left(), kLongestSleep);
    if (sleep > 0) {
        word.sleepers.store(1);
        FutexWait(word.sequence, seen, sleep);
    }
}

uint32_t WaitingThreads() {
    return g_waiting_threads.load();
}

void SetSpinLimit(int64_t microseconds) {
    SpinLimit().store(OthersRunBeside() ? microseconds * 1000 : 0);
}

void SpinPause() {
#if defined(__x86_64__) || defined(__i386__)
    __builtin_ia32_pause();
#elif defined(__aarch64__) || (defined(__arm__) && __ARM_ARCH >= 7)
    asm volatile("yield");
#endif
}

bool SpinningHelps() {
    static const bool helps = ProcessorCount() > 1;
    return helps;
}

}  // namespace zelto::coredll
