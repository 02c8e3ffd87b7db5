#include "platform/coredll/linux/objects/store_repair.h"

#include <algorithm>
#include <bitset>

#include "platform/coredll/linux/objects/ends.h"
#include "platform/coredll/linux/objects/message_pool.h"
#include "platform/coredll/linux/objects/names.h"
#include "platform/coredll/linux/objects/process_table.h"
#include "platform/coredll/linux/objects/queue_table.h"
#include "platform/coredll/linux/objects/waiting.h"

namespace zelto::coredll {
namespace {

using BlockSet = std::bitset<kBlockCount + 1>;

void DropStaleOwners(Store& store) {
    for (EndSlot& end : store.ends) {
        if (end.state.load() != kFree && (!TokenIsCurrent(store, end.owner) || !IsWhole(end)))
            end.state.store(kFree);
    }
    for (WindowSlot& window : store.windows) {
        if (window.state.load() != kFree && !TokenIsCurrent(store, window.owner))
            window.state.store(kFree);
        window.class_name[kMaxWindowText] = 0;
        window.title[kMaxWindowText] = 0;
        if (window.posted.load() - window.taken.load() > kMaxPostedMessages)
            window.taken.store(window.posted.load());
    }
}

void CountSides(Store& store) {
    for (QueueSlot& queue : store.queues)
        queue.readers = queue.writers = 0;
    store.end_top = 0;
    for (uint32_t i = 0; i < kMaxEnds; ++i) {
        const EndSlot& end = store.ends[i];
        if (end.state.load() == kFree)
            continue;
        store.end_top = i + 1;
        if (end.kind != EndKind::kEvent)
            AddSide(store.queues[end.object], end.kind);
    }
}

bool LostASide(const QueueSlot& queue) {
    return !AllowsBroken(queue) && ((queue.had_readers != 0 && queue.readers == 0) ||
                                    (queue.had_writers != 0 && queue.writers == 0));
}

// Marks a message's blocks; false when they are not a whole message of this queue.
bool MarkMessage(Store& store, const QueueSlot& queue, uint32_t message, BlockSet& used) {
    if (message > store.fresh_block)
        return false;
    const uint32_t size = BlockAt(store, message).size;
    if (size == 0 || size > queue.message_bytes)
        return false;
    uint32_t block = message;
    for (uint64_t left = BlocksFor(size); left != 0; --left) {
        if (block == 0 || block > store.fresh_block || used[block])
            return false;
        used.set(block);
        block = BlockAt(store, block).next;
    }
    return block == 0;
}

void RebuildQueue(Store& store, QueueSlot& queue, BlockSet& used) {
    uint64_t committed = CommittedAtCreation(queue);
    const bool per_message = committed == 0;
    if (queue.alert.load() != 0 && !MarkMessage(store, queue, queue.alert.load(), used)) {
        queue.alert.store(0);
    }
    queue.count = 0;
    queue.tail = 0;
    for (Word* link = &queue.head; link->load() != 0;) {
        const uint32_t message = link->load();
        if (!MarkMessage(store, queue, message, used)) {
            link->store(0);
            break;
        }
        if (per_message)
            committed += BlocksFor(BlockAt(store, message).size);
        queue.tail = message;
        ++queue.count;
        link = &BlockAt(store, message).next_message;
    }
    if (per_message && queue.alert.load() != 0) {
        committed += BlocksFor(BlockAt(store, queue.alert.load()).size);
    }
    store.committed_blocks += static_cast<uint32_t>(committed);
}

// Whether the queue's own numbers can be: it holds no more than there is, and has a name that ends.
bool IsWhole(const QueueSlot& queue, uint32_t committed_before) {
    return committed_before + CommittedAtCreation(queue) <= kBlockCount && IsWholeName(queue.name);
}

void RebuildQueues(Store& store, BlockSet& used) {
    store.committed_blocks = 0;
    store.queue_top = 0;
    for (uint32_t i = 0; i < kMaxQueues; ++i) {
        QueueSlot& queue = store.queues[i];
        if (queue.state.load() == kFree)
            continue;
        if ((queue.readers == 0 && queue.writers == 0) || !IsWhole(queue, store.committed_blocks)) {
            queue.state.store(kFree);
            continue;
        }
        if (LostASide(queue)) {
            queue.broken = 1;
            queue.head.store(0);
            queue.alert.store(0);
        }
        store.queue_top = i + 1;
        RebuildQueue(store, queue, used);
    }
}

void RebuildFreeList(Store& store, const BlockSet& used) {
    store.free_block = 0;
    for (uint32_t block = store.fresh_block; block != 0; --block) {
        if (used[block])
            continue;
        BlockAt(store, block).next = store.free_block;
        store.free_block = block;
    }
}

// Ends of queues that the rebuilding dropped.
void DropEndsOfNothing(Store& store) {
    for (EndSlot& end : store.ends) {
        if (end.state.load() != kFree && end.kind != EndKind::kEvent &&
            store.queues[end.object].state.load() == kFree)
            end.state.store(kFree);
    }
}

void DropUnheldEvents(Store& store) {
    std::bitset<kMaxEvents> held;
    for (const EndSlot& end : store.ends) {
        if (end.state.load() != kFree && end.kind == EndKind::kEvent)
            held.set(end.object);
    }
    for (uint32_t i = 0; i < kMaxEvents; ++i) {
        if (!held[i] || !IsWholeName(store.events[i].name))
            store.events[i].state.store(kFree);
    }
}

void WakeEverybody(Store& store) {
    for (ProcessSlot& process : store.processes)
        AnnounceChange(process.messages);
    for (QueueSlot& queue : store.queues)
        AnnounceChange(queue.changed);
    for (EventSlot& event : store.events)
        AnnounceChange(event.event.changed);
}

}  // namespace

void RepairStore(Store& store) {
    BlockSet used;
    store.fresh_block = std::min(store.fresh_block, kBlockCount);
    DropStaleOwners(store);
    CountSides(store);
    RebuildQueues(store, used);
    DropEndsOfNothing(store);
    RebuildFreeList(store, used);
    DropUnheldEvents(store);
    WakeEverybody(store);
}

}  // namespace zelto::coredll
