// EventModify, which the device has and the desktop parts in two.

#include "platform/coredll/coredll.h"

BOOL EventModify(HANDLE event, DWORD operation) {
    switch (operation) {
        case EVENT_SET:
            return SetEvent(event);
        case EVENT_RESET:
            return ResetEvent(event);
        default:
            SetLastError(ERROR_INVALID_PARAMETER);
            return FALSE;
    }
}
