#include "platform/coredll/linux/objects/message_pool.h"

#include <algorithm>
#include <cstring>

namespace zelto::coredll {
namespace {

uint32_t TakeBlock(Store& store) {
    if (store.free_block == 0)
        return ++store.fresh_block;
    const uint32_t block = store.free_block;
    store.free_block = BlockAt(store, block).next;
    return block;
}

}  // namespace

bool CommitBlocks(Store& store, uint64_t count) {
    if (count > kBlockCount - store.committed_blocks)
        return false;
    store.committed_blocks += static_cast<uint32_t>(count);
    return true;
}

void ReleaseBlocks(Store& store, uint64_t count) {
    store.committed_blocks -= static_cast<uint32_t>(count);
}

uint32_t StoreMessage(Store& store, const void* bytes, uint32_t size) {
    const auto* from = static_cast<const unsigned char*>(bytes);
    const uint32_t first = TakeBlock(store);
    BlockAt(store, first).size = size;
    BlockAt(store, first).next_message.store(0, std::memory_order_relaxed);
    for (uint32_t block = first;;) {
        const uint32_t part = std::min(size, kBlockBytes);
        std::memcpy(BlockAt(store, block).bytes, from, part);
        from += part;
        size -= part;
        const uint32_t next = size == 0 ? 0 : TakeBlock(store);
        BlockAt(store, block).next = next;
        if (next == 0)
            return first;
        block = next;
    }
}

void CopyMessage(Store& store, uint32_t message, void* bytes, uint32_t size) {
    auto* to = static_cast<unsigned char*>(bytes);
    size = std::min(size, BlockAt(store, message).size);
    for (uint32_t block = message; size != 0; block = BlockAt(store, block).next) {
        const uint32_t part = std::min(size, kBlockBytes);
        std::memcpy(to, BlockAt(store, block).bytes, part);
        to += part;
        size -= part;
    }
}

void FreeMessage(Store& store, uint32_t message) {
    uint32_t last = message;
    while (BlockAt(store, last).next != 0)
        last = BlockAt(store, last).next;
    BlockAt(store, last).next = store.free_block;
    store.free_block = message;
}

}  // namespace zelto::coredll
