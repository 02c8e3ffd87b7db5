// Sleeping on a 32-bit word, in one process or between several.

#ifndef ZELTO_PLATFORM_COREDLL_LINUX_BASE_FUTEX_H
#define ZELTO_PLATFORM_COREDLL_LINUX_BASE_FUTEX_H

#include <atomic>
#include <cstdint>

namespace zelto::coredll {

// 32 bits, since wider atomics are not lock-free on every target, and a lock that lives in one
// process's memory would not hold for another.
using Word = std::atomic<uint32_t>;
static_assert(sizeof(Word) == 4);

// Changed at every event that someone may wait for; see objects/waiting.h.
struct WaitWord {
    Word sequence;
    Word sleepers;
};

// Sleeps while the word holds `expected`, at most `nanoseconds`. May return early for no reason.
void FutexWait(Word& word, uint32_t expected, int64_t nanoseconds);
void FutexWakeAll(Word& word);
void FutexWakeOne(Word& word);

}  // namespace zelto::coredll

#endif
