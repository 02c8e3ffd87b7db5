// Waiting for a change that another process announces: a short spin, then a sleep.

#ifndef ZELTO_PLATFORM_COREDLL_LINUX_OBJECTS_WAITING_H
#define ZELTO_PLATFORM_COREDLL_LINUX_OBJECTS_WAITING_H

#include "platform/coredll/api/base.h"
#include "platform/coredll/linux/base/futex.h"

namespace zelto::coredll {

// The end of a call's time-out, from milliseconds; INFINITE has none.
class Deadline {
  public:
    explicit Deadline(DWORD milliseconds);
    bool Passed() const { return Left() <= 0; }
    int64_t Left() const;  // nanoseconds

  private:
    int64_t end_;
};

// Announces a change: everyone in AwaitChange on the word returns. Costs a system call only when
// somebody sleeps.
void AnnounceChange(WaitWord& word);

// Returns when the word's sequence is no longer `seen`, at the deadline, or after a quarter of a
// second: the announcer may have died before announcing, so the caller looks for itself and, where
// the life of others matters to it, checks that too. Safe from any thread.
void AwaitChange(WaitWord& word, uint32_t seen, const Deadline& deadline);

// Threads of this process now in AwaitChange.
uint32_t WaitingThreads();

// How long a wait may spin before it sleeps; 0 never spins. The default is 50 microseconds, or
// what the environment variable ZELTO_SPIN_US says, and always 0 on a host of one processor. Each
// thread adapts below the limit: waits that turn out long soon stop spinning.
constexpr int64_t kDefaultSpinMicroseconds = 50;
void SetSpinLimit(int64_t microseconds);

// Hint to the processor inside a spin loop.
void SpinPause();
// False with one processor, where spinning only keeps the other side from running.
bool SpinningHelps();

}  // namespace zelto::coredll

#endif
