#include "platform/coredll/linux/objects/message_pool.h"

#include <algorithm>
#include <cstring>

namespace zelto::coredll {
namespace {

// 0 when there is none.
uint32_t TakeBlock(Store& store) {
    const uint32_t block = store.free_block;
    if (block == 0)
        return store.fresh_block < kBlockCount ? ++store.fresh_block : 0;
    if (block > kBlockCount)
        return 0;
    store.free_block = BlockAt(store, block).next;
    return block;
}

}  // namespace

bool CommitBlocks(Store& store, uint64_t count) {
    if (count > kBlockCount || store.committed_blocks > kBlockCount - count)
        return false;
    store.committed_blocks += static_cast<uint32_t>(count);
    return true;
}

void ReleaseBlocks(Store& store, uint64_t count) {
    store.committed_blocks -=
        static_cast<uint32_t>(std::min<uint64_t>(count, store.committed_blocks));
}

uint32_t StoreMessage(Store& store, const void* bytes, uint32_t size) {
    const auto* from = static_cast<const unsigned char*>(bytes);
    const uint32_t first = TakeBlock(store);
    if (first == 0)
        return 0;
    BlockAt(store, first).size = size;
    // Without order: the release that links the message into its queue comes after it.
    BlockAt(store, first).next_message.store(0, std::memory_order_relaxed);
    for (uint32_t block = first;;) {
        const uint32_t part = std::min(size, kBlockBytes);
        std::memcpy(BlockAt(store, block).bytes, from, part);
        from += part;
        size -= part;
        const uint32_t next = size == 0 ? 0 : TakeBlock(store);
        BlockAt(store, block).next = next;
        if (next == 0)
            return size == 0 ? first : 0;
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
    for (uint32_t left = kBlockCount; BlockAt(store, last).next != 0 && left != 0; --left)
        last = BlockAt(store, last).next;
    BlockAt(store, last).next = store.free_block;
    store.free_block = message;
}

}  // namespace zelto::coredll
