// Events and waiting.

#ifndef ZELTO_PLATFORM_COREDLL_API_EVENTS_H
#define ZELTO_PLATFORM_COREDLL_API_EVENTS_H

#include "platform/coredll/api/base.h"

enum : DWORD {
    EVENT_RESET = 2,
    EVENT_SET = 3,

    WAIT_OBJECT_0 = 0,
    WAIT_TIMEOUT = 258,
    WAIT_FAILED = 0xFFFFFFFF,
};

extern "C" {

// Creates an event, or opens the existing one of that name (then `manual_reset` and `initial` are
// ignored). A null name makes an event of this process alone. Success always sets the last error:
// 0 new, 183 existing. Null on failure: 87 (name of 260 units and more, or with a backslash), 8.
HANDLE CreateEventW(SECURITY_ATTRIBUTES* security, BOOL manual_reset, BOOL initial, LPCWSTR name);

// EVENT_SET releases one waiter (auto-reset) or all until reset (manual); sets do not add up.
// Errors: 6, 87 for another operation.
BOOL EventModify(HANDLE event, DWORD operation);

// Waits on an event (an auto-reset one is consumed) or on a thread's end. WAIT_OBJECT_0,
// WAIT_TIMEOUT, or WAIT_FAILED with last error 6. Time-outs from 0x80000000 up, INFINITE apart,
// count as 0x7FFFFFFF.
DWORD WaitForSingleObject(HANDLE handle, DWORD timeout);
}

#endif
