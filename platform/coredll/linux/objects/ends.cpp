#include "platform/coredll/linux/objects/ends.h"

#include <algorithm>

#include "platform/coredll/linux/objects/process_table.h"

namespace zelto::coredll {

uint32_t AddEnd(Store& store, EndKind kind, uint32_t object) {
    uint32_t index = 0;
    while (index < kMaxEnds && store.ends[index].state.load() != kFree)
        ++index;
    if (index == kMaxEnds)
        return kNoEnd;
    EndSlot& end = store.ends[index];
    end.owner = MyToken();
    end.kind = kind;
    end.object = object;
    if (store.end_top <= index)
        store.end_top = index + 1;
    // Release: whoever finds the end live, after a kill even, finds it whole.
    end.state.store(kLive, std::memory_order_release);
    return index;
}

void DropEnd(Store& store, uint32_t end) {
    store.ends[end].state.store(kFree, std::memory_order_release);
    store.end_top = std::min(store.end_top, kMaxEnds);
    while (store.end_top > 0 && store.ends[store.end_top - 1].state.load() == kFree)
        --store.end_top;
}

EndSlot* MyEnd(Store& store, uintptr_t end, EndKind kind) {
    if (end >= kMaxEnds)
        return nullptr;
    EndSlot& slot = store.ends[end];
    const bool mine = slot.state.load() == kLive && slot.owner == MyToken() && slot.kind == kind;
    return mine && IsWhole(slot) ? &slot : nullptr;
}

bool IsWhole(const EndSlot& end) {
    switch (end.kind) {
        case EndKind::kReader:
        case EndKind::kWriter:
            return end.object < kMaxQueues;
        case EndKind::kEvent:
            return end.object < kMaxEvents;
    }
    return false;
}

}  // namespace zelto::coredll
