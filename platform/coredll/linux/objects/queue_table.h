// The queues in the store, below the calls: look-up, making, dropping, messages in order. Call
// everything with the store's lock held.

#ifndef ZELTO_PLATFORM_COREDLL_LINUX_OBJECTS_QUEUE_TABLE_H
#define ZELTO_PLATFORM_COREDLL_LINUX_OBJECTS_QUEUE_TABLE_H

#include "platform/coredll/api/queues.h"
#include "platform/coredll/linux/objects/store_layout.h"

namespace zelto::coredll {

constexpr uint32_t kNoIndex = 0xFFFFFFFF;

// The live queue of that name, or kNoIndex. A queue that lost a side is not found any more.
uint32_t FindQueue(const Store& store, const ObjectName& name);

// A new queue; `name` null for one without. kNoIndex with `error` 8 or 14 when there is no room.
uint32_t MakeQueue(Store& store, const MSGQUEUEOPTIONS& options, const ObjectName* name,
                   DWORD& error);

// One side of a queue gained or lost a handle. Losing may drop the messages or the queue.
void AddSide(QueueSlot& queue, EndKind kind);
void DropSide(Store& store, QueueSlot& queue, EndKind kind);

// Frees the queue's messages and slot.
void DropQueue(Store& store, QueueSlot& queue);

// Appends a message, or stores the alert when its place is free. False when the memory is used up.
bool PushMessage(Store& store, QueueSlot& queue, const void* bytes, uint32_t size, bool alert);

// Takes the first message into the buffer and gives its full size; the queue is not empty.
uint32_t PopMessage(Store& store, QueueSlot& queue, void* bytes, uint32_t size, bool& alert);

inline bool IsEmpty(const QueueSlot& queue) {
    return queue.head.load() == 0 && queue.alert.load() == 0;
}
inline bool IsFull(const QueueSlot& queue) {
    return queue.max_messages != 0 && queue.count >= queue.max_messages;
}
inline bool AllowsBroken(const QueueSlot& queue) {
    return (queue.flags & MSGQUEUE_ALLOW_BROKEN) != 0;
}

// Blocks a queue commits when it is made; 0 for a NOPRECOMMIT one.
uint64_t CommittedAtCreation(const QueueSlot& queue);

}  // namespace zelto::coredll

#endif
