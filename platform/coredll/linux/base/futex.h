// Sleeping on a 32-bit word, in one process or between several.

#ifndef ZELTO_PLATFORM_COREDLL_LINUX_BASE_FUTEX_H
#define ZELTO_PLATFORM_COREDLL_LINUX_BASE_FUTEX_H

#include <cstdint>

#include "platform/coredll/linux/objects/store_layout.h"

namespace zelto::coredll {

int64_t MonotonicNanoseconds();

// Sleeps while the word holds `expected`, at most `nanoseconds`. May return early for no reason.
void FutexWait(Word& word, uint32_t expected, int64_t nanoseconds);
void FutexWakeAll(Word& word);
void FutexWakeOne(Word& word);

}  // namespace zelto::coredll

#endif
