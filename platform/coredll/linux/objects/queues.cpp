#include "platform/coredll/api/queues.h"

#include <algorithm>

#include "platform/coredll/linux/base/handle_table.h"
#include "platform/coredll/linux/base/last_error.h"
#include "platform/coredll/linux/objects/ends.h"
#include "platform/coredll/linux/objects/names.h"
#include "platform/coredll/linux/objects/queue_table.h"
#include "platform/coredll/linux/objects/store.h"
#include "platform/coredll/linux/objects/store_guard.h"
#include "platform/coredll/linux/objects/waiting.h"
#include "platform/coredll/linux/objects/witness_ring.h"

namespace zelto::coredll {
namespace {

struct OpenedEnd {
    uint32_t end = kNoEnd;
    DWORD error = ERROR_SUCCESS;  // of the failure, or 0 and 183 of a success
};

bool ValidOptions(const MSGQUEUEOPTIONS* options) {
    constexpr DWORD kKnownFlags = MSGQUEUE_NOPRECOMMIT | MSGQUEUE_ALLOW_BROKEN;
    return options != nullptr && options->dwSize == sizeof(MSGQUEUEOPTIONS) &&
           options->cbMaxMessage != 0 && (options->dwFlags & ~kKnownFlags) == 0;
}

// What happens to a queue that has no name is told of one with the name "".
void WitnessQueue(Store& store, const QueueSlot& queue, WitnessKind kind, uint32_t code = 0,
                  const void* bytes = nullptr, uint32_t size = 0) {
    Witness(store, {.kind = kind,
                    .code = code,
                    .name = queue.named != 0 ? NameOf(queue.name) : u"",
                    .bytes = bytes,
                    .size = size});
}

// A dead process on the side that is now being opened: its messages must not pass for ours.
bool SideHeldByDead(const Store& store, uint32_t queue, EndKind kind) {
    const EndSlot* top = store.ends + std::min(store.end_top, kMaxEnds);
    return std::any_of(store.ends, top, [&](const EndSlot& end) {
        return end.state.load() == kLive && end.object == queue && end.kind == kind &&
               !TokenLives(store, end.owner);
    });
}

// Opens or makes the queue; `dead` is set when dead processes are in the way and the attempt is
// worth repeating after a sweep.
OpenedEnd TryOpenEnd(Store& store, const ObjectName* name, const MSGQUEUEOPTIONS& options,
                     bool& dead) {
    const EndKind kind = options.bReadAccess != FALSE ? EndKind::kReader : EndKind::kWriter;
    const StoreLock lock(store);
    OpenedEnd result;
    if (!lock.IsHeld()) {
        result.error = kStoreBusy;
        return result;
    }
    uint32_t queue = name != nullptr ? FindQueue(store, *name) : kNoIndex;
    const bool existing = queue != kNoIndex;
    if (existing) {
        dead = SideHeldByDead(store, queue, kind);
        if (dead)
            return result;
    } else {
        queue = MakeQueue(store, options, name, result.error);
        dead = queue == kNoIndex;
        if (dead)
            return result;
    }
    result.end = AddEnd(store, kind, queue);
    if (result.end != kNoEnd) {
        AddSide(store.queues[queue], kind);
        WitnessQueue(store, store.queues[queue],
                     existing ? WitnessKind::kQueueOpened : WitnessKind::kQueueMade,
                     options.bReadAccess != FALSE ? 1 : 0);
        result.error = existing ? ERROR_ALREADY_EXISTS : ERROR_SUCCESS;
        return result;
    }
    if (!existing)
        DropQueue(store, store.queues[queue]);
    dead = true;
    result.error = ERROR_NOT_ENOUGH_MEMORY;
    return result;
}

OpenedEnd OpenEnd(Store& store, const ObjectName* name, const MSGQUEUEOPTIONS& options) {
    bool dead = false;
    OpenedEnd result = TryOpenEnd(store, name, options, dead);
    if (dead && SweepDeadProcesses(store))
        result = TryOpenEnd(store, name, options, dead);
    return result;
}

void CloseEnd(Store& store, uintptr_t end) {
    WaitWord* changed = nullptr;
    {
        const StoreLock lock(store);
        if (!lock.IsHeld())
            return;  // it goes with the process
        for (const EndKind kind : {EndKind::kReader, EndKind::kWriter}) {
            const EndSlot* slot = MyEnd(store, end, kind);
            if (slot == nullptr)
                continue;
            QueueSlot& queue = store.queues[slot->object];
            WitnessQueue(store, queue, WitnessKind::kQueueClosed, kind == EndKind::kReader ? 1 : 0);
            DropEnd(store, static_cast<uint32_t>(end));
            DropSide(store, queue, kind);
            changed = &queue.changed;
            break;
        }
    }
    if (changed != nullptr)
        AnnounceChange(*changed);
}

// What one look at a queue found.
enum class Look { kDone, kFailed, kWait };

struct LookResult {
    Look look = Look::kFailed;
    DWORD error = ERROR_INVALID_HANDLE;
    WaitWord* changed = nullptr;  // what to wait on, or what this look changed
    uint32_t seen = 0;
    bool needs_peer = false;  // the other side's death ends the wait
};

LookResult Failed(DWORD error) {
    return {Look::kFailed, error, nullptr, 0, false};
}

// The same where the queue is known. Lock held.
LookResult Refused(Store& store, const QueueSlot& queue, DWORD error, const void* bytes = nullptr,
                   uint32_t size = 0) {
    WitnessQueue(store, queue, WitnessKind::kRefused, error, bytes, size);
    return Failed(error);
}

// Why a look did not get the lock: the store is gone, and the handle with it, or somebody has it.
DWORD WithoutLock() {
    return StoreIsGone() ? DWORD{ERROR_INVALID_HANDLE} : kStoreBusy;
}

LookResult MustWait(QueueSlot& queue) {
    return {Look::kWait, ERROR_TIMEOUT, &queue.changed, queue.changed.sequence.load(),
            !AllowsBroken(queue)};
}

struct ReadRequest {
    void* buffer;
    DWORD size;
    DWORD* read;
    DWORD* flags;
};

LookResult LookForMessage(Store& store, uintptr_t end, const ReadRequest& request) {
    const StoreLock lock(store);
    if (!lock.IsHeld())
        return Failed(WithoutLock());
    const EndSlot* slot = MyEnd(store, end, EndKind::kReader);
    if (slot == nullptr)
        return Failed(ERROR_INVALID_HANDLE);
    QueueSlot& queue = store.queues[slot->object];
    if (queue.broken != 0 || (IsEmpty(queue) && !AllowsBroken(queue) && queue.writers == 0)) {
        return Refused(store, queue, ERROR_PIPE_NOT_CONNECTED);
    }
    if (IsEmpty(queue))
        return MustWait(queue);
    bool alert = false;
    const uint32_t full_size = PopMessage(store, queue, request.buffer, request.size, alert);
    *request.read = std::min(full_size, request.size);
    if (request.flags != nullptr)
        *request.flags = alert ? DWORD{MSGQUEUE_MSGALERT} : 0;
    const bool cut = full_size > request.size;
    WitnessQueue(store, queue, WitnessKind::kRead, cut ? DWORD{ERROR_INSUFFICIENT_BUFFER} : 0,
                 request.buffer, *request.read);
    return {cut ? Look::kFailed : Look::kDone, ERROR_INSUFFICIENT_BUFFER, &queue.changed, 0, false};
}

struct WriteRequest {
    const void* buffer;
    DWORD size;
    DWORD flags;
};

LookResult LookForRoom(Store& store, uintptr_t end, const WriteRequest& request) {
    const StoreLock lock(store);
    if (!lock.IsHeld())
        return Failed(WithoutLock());
    const EndSlot* slot = MyEnd(store, end, EndKind::kWriter);
    if (slot == nullptr)
        return Failed(ERROR_INVALID_HANDLE);
    QueueSlot& queue = store.queues[slot->object];
    // Nothing to store is no failure: a caller that only announces itself again passes no bytes.
    if (request.buffer == nullptr)
        return {Look::kDone, ERROR_SUCCESS, nullptr, 0, false};
    if (request.size > queue.message_bytes)
        return Refused(store, queue, ERROR_INSUFFICIENT_BUFFER, request.buffer, request.size);
    if (queue.broken != 0 || (!AllowsBroken(queue) && queue.readers == 0)) {
        return Refused(store, queue, ERROR_PIPE_NOT_CONNECTED, request.buffer, request.size);
    }
    const bool alert = request.flags == MSGQUEUE_MSGALERT;
    if (IsFull(queue) && !(alert && queue.alert.load() == 0))
        return MustWait(queue);
    if (!PushMessage(store, queue, request.buffer, request.size, alert)) {
        return Refused(store, queue, ERROR_OUTOFMEMORY, request.buffer, request.size);
    }
    WitnessQueue(store, queue, WitnessKind::kWritten, 0, request.buffer, request.size);
    return {Look::kDone, ERROR_SUCCESS, &queue.changed, 0, false};
}

// Whoever has waited in vain records that, and who of the others is dead or stopped.
void WitnessTimeout(Store& store, uintptr_t end, EndKind kind, DWORD timeout) {
    if (!IsWitnessed(store) || timeout == 0)
        return;
    SweepDeadProcesses(store);
    const StoreLock lock(store);
    const EndSlot* slot = lock.IsHeld() ? MyEnd(store, end, kind) : nullptr;
    if (slot == nullptr)
        return;
    WitnessStopped(store);
    WitnessQueue(store, store.queues[slot->object], WitnessKind::kTimedOut, timeout);
}

// Looks until done, failed or out of time.
template <class LookFunction>
BOOL LookOrWait(Store& store, uintptr_t end, EndKind kind, DWORD timeout, LookFunction look) {
    const Deadline deadline(timeout);
    for (;;) {
        const LookResult result = look();
        if (result.look != Look::kWait) {
            if (result.changed != nullptr)
                AnnounceChange(*result.changed);
            return result.look == Look::kDone ? TRUE : Fail(result.error);
        }
        if (deadline.Passed()) {
            WitnessTimeout(store, end, kind, timeout);
            return Fail(ERROR_TIMEOUT);
        }
        AwaitChange(*result.changed, result.seen, deadline);
        const bool unchanged = result.changed->sequence.load() == result.seen;
        if (unchanged && result.needs_peer)
            SweepDeadProcesses(store);
    }
}

}  // namespace

void CloseQueueWord(uintptr_t word) {
    if (Store* store = OpenStore())
        CloseEnd(*store, word);
}

}  // namespace zelto::coredll

using namespace zelto::coredll;

HANDLE CreateMsgQueue(LPCWSTR name, const MSGQUEUEOPTIONS* options) {
    ObjectName object_name;
    if (!ValidOptions(options) || (name != nullptr && !MakeName(object_name, name))) {
        return Fail(ERROR_INVALID_PARAMETER, HANDLE{});
    }
    Store* store = OpenStore();
    if (store == nullptr)
        return Fail(ERROR_ACCESS_DENIED, HANDLE{});
    const OpenedEnd opened = OpenEnd(*store, name != nullptr ? &object_name : nullptr, *options);
    if (opened.end == kNoEnd)
        return Fail(opened.error, HANDLE{});
    const HANDLE handle = MakeHandle(HandleKind::kQueue, opened.end);
    if (handle == nullptr) {
        CloseEnd(*store, opened.end);
        return Fail(ERROR_NOT_ENOUGH_MEMORY, HANDLE{});
    }
    return Succeed(opened.error, handle);
}

BOOL WriteMsgQueue(HANDLE queue, const void* buffer, DWORD size, DWORD timeout, DWORD flags) {
    uintptr_t end = 0;
    Store* store = OpenStore();
    if (store == nullptr || !LookUpHandle(queue, HandleKind::kQueue, end)) {
        return Fail(ERROR_INVALID_HANDLE);
    }
    const bool known_flags = flags == 0 || flags == MSGQUEUE_MSGALERT;
    if (!known_flags || (buffer != nullptr && size == 0))
        return Fail(ERROR_INVALID_PARAMETER);
    const WriteRequest request{buffer, size, flags};
    return LookOrWait(*store, end, EndKind::kWriter, timeout,
                      [&] { return LookForRoom(*store, end, request); });
}

BOOL ReadMsgQueue(HANDLE queue, void* buffer, DWORD size, DWORD* read, DWORD timeout,
                  DWORD* flags) {
    if (read != nullptr)
        *read = 0;
    uintptr_t end = 0;
    Store* store = OpenStore();
    if (store == nullptr || !LookUpHandle(queue, HandleKind::kQueue, end)) {
        return Fail(ERROR_INVALID_HANDLE);
    }
    if (buffer == nullptr || size == 0 || read == nullptr)
        return Fail(ERROR_INVALID_PARAMETER);
    const ReadRequest request{buffer, size, read, flags};
    return LookOrWait(*store, end, EndKind::kReader, timeout,
                      [&] { return LookForMessage(*store, end, request); });
}

BOOL CloseMsgQueue(HANDLE queue) {
    uintptr_t end = 0;
    if (!TakeHandle(queue, HandleKind::kQueue, end))
        return Fail(ERROR_INVALID_HANDLE);
    CloseQueueWord(end);
    return TRUE;
}
