// The contract on Windows: the system's own headers, and what they lack. A compiler that looks into
// this folder first finds this header in the place of the contract of the same name.
//
// Calls that the two systems share behave as Windows documents them; its numbers are the desktop's
// where they differ from the device's (SW_RESTORE, thread priorities).

#ifndef ZELTO_PLATFORM_COREDLL_COREDLL_H
#define ZELTO_PLATFORM_COREDLL_COREDLL_H

#include <cstdarg>
#include <cstdio>
#include <cwchar>

#include "platform/coredll/api/base.h"
#include "platform/coredll/api/queues.h"

// Operations of EventModify.
enum : DWORD { EVENT_RESET = 2, EVENT_SET = 3 };

extern "C" {

// The one call behind SetEvent and ResetEvent on the device. Errors: 6, 87 for another operation.
BOOL EventModify(HANDLE event, DWORD operation);
}

// The loader calls a library's DllMain by itself.
inline constexpr bool kLoaderCallsDllMain = true;

#endif
