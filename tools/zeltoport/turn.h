// Runs of zeltoport on one device take turns: each is a client of its own, and two clients at once
// would meet in queues of the same names.

#ifndef ZELTO_TOOLS_ZELTOPORT_TURN_H
#define ZELTO_TOOLS_ZELTOPORT_TURN_H

#include "platform/coredll/coredll.h"
#include "platform/coredll/linux/device_admin.h"

namespace zelto::tools {

// How long a run that goes on leaves the device to others, in ms: longer than they take to look.
inline constexpr DWORD kTurnGap = 10;

// Held as long as the object lives, at most as long as the process.
// Thread safety: none; used by one thread.
class Turn {
  public:
    // Waits for it. Throws CommandError when the device cannot be used, or when other runs hold it
    // for longer than `patience` seconds.
    explicit Turn(double patience);

    // Whether others have waited for it long enough.
    bool IsLong() const;

  private:
    coredll::DeviceTurn turn_;
    DWORD since_;  // ms
};

// For a process that has no navigator's window yet. The navigator may be about to answer a run that
// has given up: this process takes queue names that none of its replies can go to, by counting on
// past them.
void PassLeftQueues();

// For a process in contact: waits until such a reply has gone out. Throws CommandError when the
// navigator does not come to it.
void AwaitLateReplies();

}  // namespace zelto::tools

#endif
