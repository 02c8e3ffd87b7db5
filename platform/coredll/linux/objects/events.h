// Waiting for an event by the word behind its handle, for the call that waits on any handle.

#ifndef ZELTO_PLATFORM_COREDLL_LINUX_OBJECTS_EVENTS_H
#define ZELTO_PLATFORM_COREDLL_LINUX_OBJECTS_EVENTS_H

#include "platform/coredll/api/base.h"

namespace zelto::coredll {

// 0 signalled (an auto-reset event is then taken), 258 not in time, WAIT_FAILED with 6 when the
// event is no longer there.
DWORD WaitForEventWord(uintptr_t word, DWORD timeout_ms);

}  // namespace zelto::coredll

#endif
