// Message memory: messages of any length as chains of blocks. Call everything with the store's
// lock held. A block is named by its index + 1, 0 being none.

#ifndef ZELTO_PLATFORM_COREDLL_LINUX_OBJECTS_MESSAGE_POOL_H
#define ZELTO_PLATFORM_COREDLL_LINUX_OBJECTS_MESSAGE_POOL_H

#include "platform/coredll/linux/objects/store_layout.h"

namespace zelto::coredll {

// Blocks that a message of that size takes.
constexpr uint64_t BlocksFor(uint32_t size) {
    return (uint64_t{size} + kBlockBytes - 1) / kBlockBytes;
}

// A number from the store that names no block leads to some block, never out of the table.
inline Block& BlockAt(Store& store, uint32_t block) {
    static_assert((kBlockCount & (kBlockCount - 1)) == 0);
    return store.blocks[(block - 1) & (kBlockCount - 1)];
}

// Promises that many blocks to a queue: its messages then always find room. False when fewer are
// left. A NOPRECOMMIT queue commits for each message as it comes.
bool CommitBlocks(Store& store, uint64_t count);
void ReleaseBlocks(Store& store, uint64_t count);

// Copies a message into blocks; the caller has committed them. Size above 0. 0 when they are not
// there all the same, the store being damaged.
uint32_t StoreMessage(Store& store, const void* bytes, uint32_t size);

// Copies at most `size` bytes of a message out.
void CopyMessage(Store& store, uint32_t message, void* bytes, uint32_t size);

// Gives a message's blocks back.
void FreeMessage(Store& store, uint32_t message);

}  // namespace zelto::coredll

#endif
