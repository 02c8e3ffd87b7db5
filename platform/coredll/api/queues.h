// Point-to-point message queues: named, shared by the processes of a device, read from one end and
// written at the other. A handle is either a read end or a write end, never both.

#ifndef ZELTO_PLATFORM_COREDLL_API_QUEUES_H
#define ZELTO_PLATFORM_COREDLL_API_QUEUES_H

#include "platform/coredll/api/base.h"

enum : DWORD {
    MSGQUEUE_NOPRECOMMIT = 0x1,   // queue option: take memory per message, not at creation
    MSGQUEUE_ALLOW_BROKEN = 0x2,  // queue option: keep working while the other side has nobody
    MSGQUEUE_MSGALERT = 0x1,      // message flag: read before all others; one such slot a queue
};

struct MSGQUEUEOPTIONS {
    DWORD dwSize;         // 20, checked
    DWORD dwFlags;        // the two queue options above
    DWORD dwMaxMessages;  // capacity in messages; 0 = no limit, implies NOPRECOMMIT
    DWORD cbMaxMessage;   // largest message in bytes, above 0
    BOOL bReadAccess;     // TRUE: this handle reads; FALSE: it writes
};
static_assert(sizeof(MSGQUEUEOPTIONS) == 20);

extern "C" {

// Creates the named queue or opens the existing one; a null name makes a queue of its own.
// Success always sets the last error: 0 for a new queue, 183 for an existing one, whose creator's
// flags, capacity and message size stay in force. Null on failure: 87 (options, or a name of 260
// units and more), 14 (no memory left for the messages), 8 (no free queue or handle).
HANDLE CreateMsgQueue(LPCWSTR name, const MSGQUEUEOPTIONS* options);

// Stores one message whole. Errors: 122 longer than cbMaxMessage, 1460 full for `timeout`,
// 233 nobody reads (never with ALLOW_BROKEN), 14 no memory (NOPRECOMMIT), 87 null buffer, size 0
// or an unknown flag, 6 not a write end.
BOOL WriteMsgQueue(HANDLE queue, const void* buffer, DWORD size, DWORD timeout, DWORD flags);

// Takes the first message, the alert before all others. `read` receives its length and `flags`
// (may be null) MSGALERT or 0. Errors: 122 the message was longer: its first `size` bytes are in
// the buffer and the rest is lost; 1460 empty for `timeout`; 233 empty and nobody writes (never
// with ALLOW_BROKEN); 87 null buffer or count, size 0; 6 not a read end. `read` is 0 on every
// failure but 122.
BOOL ReadMsgQueue(HANDLE queue, void* buffer, DWORD size, DWORD* read, DWORD timeout, DWORD* flags);

// Drops this end. The queue goes with its last handle; without ALLOW_BROKEN its messages go as
// soon as one side has nobody left. Errors: 6.
BOOL CloseMsgQueue(HANDLE queue);
}

#endif
