// Basic types, error numbers, the last error and handles: the system's own. The families of the
// contract that this system lacks (queues) are declared on them as they stand.

#ifndef ZELTO_PLATFORM_COREDLL_API_BASE_H
#define ZELTO_PLATFORM_COREDLL_API_BASE_H

#ifndef UNICODE
#define UNICODE
#endif
#ifndef WIN32_LEAN_AND_MEAN
#define WIN32_LEAN_AND_MEAN
#endif
#ifndef NOMINMAX
#define NOMINMAX
#endif

// The second needs the first.
// clang-format off
#include <windows.h>
#include <shellapi.h>
// clang-format on

#endif
