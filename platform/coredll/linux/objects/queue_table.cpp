#include "platform/coredll/linux/objects/queue_table.h"

#include <algorithm>
#include <cstring>

#include "platform/coredll/linux/objects/message_pool.h"
#include "platform/coredll/linux/objects/names.h"

namespace zelto::coredll {
namespace {

void DropMessages(Store& store, QueueSlot& queue) {
    char nothing = 0;
    bool alert = false;
    while (!IsEmpty(queue))
        PopMessage(store, queue, &nothing, 0, alert);
}

void Unlink(Store& store, QueueSlot& queue) {
    queue.state.store(kFree, std::memory_order_release);
    store.queue_top = std::min(store.queue_top, kMaxQueues);
    while (store.queue_top > 0 && store.queues[store.queue_top - 1].state.load() == kFree) {
        --store.queue_top;
    }
}

}  // namespace

uint64_t CommittedAtCreation(const QueueSlot& queue) {
    if (queue.max_messages == 0 || (queue.flags & MSGQUEUE_NOPRECOMMIT) != 0)
        return 0;
    // One more for the alert.
    return (uint64_t{queue.max_messages} + 1) * BlocksFor(queue.message_bytes);
}

uint32_t FindQueue(const Store& store, const ObjectName& name) {
    for (uint32_t i = 0; i < std::min(store.queue_top, kMaxQueues); ++i) {
        const QueueSlot& queue = store.queues[i];
        if (queue.state.load() == kLive && queue.named != 0 && queue.broken == 0 &&
            SameName(queue.name, name)) {
            return i;
        }
    }
    return kNoIndex;
}

uint32_t MakeQueue(Store& store, const MSGQUEUEOPTIONS& options, const ObjectName* name,
                   DWORD& error) {
    uint32_t index = 0;
    while (index < kMaxQueues && store.queues[index].state.load() != kFree)
        ++index;
    if (index == kMaxQueues) {
        error = ERROR_NOT_ENOUGH_MEMORY;
        return kNoIndex;
    }
    QueueSlot& queue = store.queues[index];
    queue.flags = options.dwFlags;
    queue.max_messages = options.dwMaxMessages;
    queue.message_bytes = options.cbMaxMessage;
    if (!CommitBlocks(store, CommittedAtCreation(queue))) {
        error = ERROR_OUTOFMEMORY;
        return kNoIndex;
    }
    queue.head.store(0);
    queue.alert.store(0);
    queue.tail = queue.count = queue.readers = queue.writers = 0;
    queue.had_readers = queue.had_writers = queue.broken = 0;
    queue.named = name != nullptr ? 1 : 0;
    if (name != nullptr)
        CopyName(queue.name, *name);
    if (store.queue_top <= index)
        store.queue_top = index + 1;
    // Release: whoever finds the queue live, after a kill even, finds it whole.
    queue.state.store(kLive, std::memory_order_release);
    return index;
}

void AddSide(QueueSlot& queue, EndKind kind) {
    if (kind == EndKind::kReader) {
        ++queue.readers;
        queue.had_readers = 1;
    } else {
        ++queue.writers;
        queue.had_writers = 1;
    }
}

void DropSide(Store& store, QueueSlot& queue, EndKind kind) {
    const uint32_t left = kind == EndKind::kReader ? --queue.readers : --queue.writers;
    if (queue.readers == 0 && queue.writers == 0) {
        DropQueue(store, queue);
    } else if (left == 0 && !AllowsBroken(queue)) {
        queue.broken = 1;
        DropMessages(store, queue);
    }
}

void DropQueue(Store& store, QueueSlot& queue) {
    DropMessages(store, queue);
    ReleaseBlocks(store, CommittedAtCreation(queue));
    Unlink(store, queue);
}

bool PushMessage(Store& store, QueueSlot& queue, const void* bytes, uint32_t size, bool alert) {
    if (CommittedAtCreation(queue) == 0 && !CommitBlocks(store, BlocksFor(size)))
        return false;
    const uint32_t message = StoreMessage(store, bytes, size);
    if (message == 0)
        return false;
    if (alert && queue.alert.load() == 0) {
        queue.alert.store(message, std::memory_order_release);
        return true;
    }
    Word& link = queue.head.load() == 0 ? queue.head : BlockAt(store, queue.tail).next_message;
    // Release: a message is linked when it is whole, so a kill loses it or keeps all of it.
    link.store(message, std::memory_order_release);
    queue.tail = message;
    ++queue.count;
    return true;
}

uint32_t PopMessage(Store& store, QueueSlot& queue, void* bytes, uint32_t size, bool& alert) {
    alert = queue.alert.load() != 0;
    const uint32_t message = alert ? queue.alert.load() : queue.head.load();
    Block& first = BlockAt(store, message);
    CopyMessage(store, message, bytes, size);
    if (alert) {
        queue.alert.store(0, std::memory_order_release);
    } else {
        queue.head.store(first.next_message.load(), std::memory_order_release);
        --queue.count;
    }
    const uint32_t full_size = first.size;
    if (CommittedAtCreation(queue) == 0)
        ReleaseBlocks(store, BlocksFor(full_size));
    FreeMessage(store, message);
    return full_size;
}

}  // namespace zelto::coredll
