// The system as ZeltoPORT sees it: the documented coredll calls, under their documented names.
//
// This header and the families it gathers are the whole contract between the portable code and
// the platform. Linux gets its implementation from linux/; a test may link another one in its
// place; on the device the system's own headers stand here.
//
// Conventions, for every call unless it says otherwise:
//  1. BOOL results: nonzero is success. On failure GetLastError() of the calling thread tells why;
//     on success the last error is left alone.
//  2. Registry calls return the error number itself and do not touch the last error.
//  3. Text is UTF-16 in WCHAR units, NUL-terminated. Sizes say whether they count units or bytes.
//  4. The caller owns every buffer it passes; no call keeps a pointer after it returned.
//  5. Time-outs are milliseconds; 0 polls, INFINITE waits for ever.
//  6. Calls may be made from any thread; one handle may be used by several threads, but closing it
//     while another thread uses it is undefined.
//  7. Names with a scope (queues, events, window classes) are shared by all processes of one
//     device; see docs/device-layer.md for what a device is.

#ifndef ZELTO_PLATFORM_COREDLL_COREDLL_H
#define ZELTO_PLATFORM_COREDLL_COREDLL_H

#include "platform/coredll/api/base.h"
#include "platform/coredll/api/clock.h"
#include "platform/coredll/api/crt.h"
#include "platform/coredll/api/events.h"
#include "platform/coredll/api/files.h"
#include "platform/coredll/api/nls.h"
#include "platform/coredll/api/process.h"
#include "platform/coredll/api/queues.h"
#include "platform/coredll/api/registry.h"
#include "platform/coredll/api/threads.h"
#include "platform/coredll/api/windows.h"

#endif
