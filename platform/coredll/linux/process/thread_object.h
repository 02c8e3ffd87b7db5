// Waiting for a thread, for the families that wait on any handle.

#ifndef ZELTO_PLATFORM_COREDLL_LINUX_PROCESS_THREAD_OBJECT_H
#define ZELTO_PLATFORM_COREDLL_LINUX_PROCESS_THREAD_OBJECT_H

#include "platform/coredll/api/base.h"

namespace zelto::coredll {

// True when the thread behind a handle's word has ended within the time.
bool WaitForThread(uintptr_t word, DWORD timeout_ms);

}  // namespace zelto::coredll

#endif
