// Critical sections and threads.

#ifndef ZELTO_PLATFORM_COREDLL_API_THREADS_H
#define ZELTO_PLATFORM_COREDLL_API_THREADS_H

#include "platform/coredll/api/base.h"

// Room for the host's recursive lock; opaque.
struct CRITICAL_SECTION {
    alignas(8) unsigned char storage[64];
};

typedef DWORD (*LPTHREAD_START_ROUTINE)(void* parameter);

enum : int {
    THREAD_PRIORITY_TIME_CRITICAL = 0,
    THREAD_PRIORITY_HIGHEST = 1,
    THREAD_PRIORITY_ABOVE_NORMAL = 2,
    THREAD_PRIORITY_NORMAL = 3,
    THREAD_PRIORITY_BELOW_NORMAL = 4,
    THREAD_PRIORITY_LOWEST = 5,
    THREAD_PRIORITY_ABOVE_IDLE = 6,
    THREAD_PRIORITY_IDLE = 7,
    THREAD_PRIORITY_ERROR_RETURN = 0x7FFFFFFF,
};

enum : DWORD { STACK_SIZE_PARAM_IS_A_RESERVATION = 0x00010000 };

extern "C" {

// Recursive for the owner, one Leave per Enter; of one process. Not to be copied or moved.
void InitializeCriticalSection(CRITICAL_SECTION* section);
void DeleteCriticalSection(CRITICAL_SECTION* section);
void EnterCriticalSection(CRITICAL_SECTION* section);
BOOL TryEnterCriticalSection(CRITICAL_SECTION* section);  // 0: another thread owns it
void LeaveCriticalSection(CRITICAL_SECTION* section);

// Starts a thread. The stack size is a hint of the device and ignored, as is the one flag that says
// what it means; other flags: 87.
// Null on failure: 87 null start address, 8. The handle is closed with CloseHandle; the thread
// goes on without it.
HANDLE CreateThread(SECURITY_ATTRIBUTES* security, DWORD stack_size, LPTHREAD_START_ROUTINE start,
                    void* parameter, DWORD flags, DWORD* thread_id);

// The thread's base priority, 0 (most urgent) to 7; 3 for a new thread.
// THREAD_PRIORITY_ERROR_RETURN with 6 for a bad handle.
int GetThreadPriority(HANDLE thread);

// Errors: 6, 87 out of range. Recorded; below normal the host's scheduler is told, too, counting
// from what the process has and where the user may.
BOOL SetThreadPriority(HANDLE thread, int priority);

// Only the thread-naming exception 0x406D1388 is known: it names the thread whose id is the third
// argument (0xFFFFFFFF: the caller). Arguments: 0x1000, address of the name, thread id, flags.
// Unlike on the device it returns to the caller; any other code ends the process.
void RaiseException(DWORD code, DWORD flags, DWORD count, const uintptr_t* arguments);
}

#endif
