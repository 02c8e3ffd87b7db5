// Waiting on a handle of any kind that can be waited on; above events and threads, which know
// nothing of each other.

#include "platform/coredll/api/events.h"
#include "platform/coredll/linux/base/handle_table.h"
#include "platform/coredll/linux/base/last_error.h"
#include "platform/coredll/linux/objects/events.h"
#include "platform/coredll/linux/process/thread_object.h"

using namespace zelto::coredll;

DWORD WaitForSingleObject(HANDLE handle, DWORD timeout) {
    uintptr_t word = 0;
    if (LookUpHandle(handle, HandleKind::kThread, word))
        return WaitForThread(word, timeout) ? DWORD{WAIT_OBJECT_0} : DWORD{WAIT_TIMEOUT};
    if (LookUpHandle(handle, HandleKind::kEvent, word))
        return WaitForEventWord(word, timeout);
    return Fail(ERROR_INVALID_HANDLE, DWORD{WAIT_FAILED});
}
