// The open handles to shared objects, as the store knows them: who holds which end of what.
//
// Call everything with the store's lock held.

#ifndef ZELTO_PLATFORM_COREDLL_LINUX_OBJECTS_ENDS_H
#define ZELTO_PLATFORM_COREDLL_LINUX_OBJECTS_ENDS_H

#include "platform/coredll/linux/objects/store_layout.h"

namespace zelto::coredll {

constexpr uint32_t kNoEnd = 0xFFFFFFFF;

// Adds an end of this process; kNoEnd when the table is full.
uint32_t AddEnd(Store& store, EndKind kind, uint32_t object);
void DropEnd(Store& store, uint32_t end);

// The end when it is open, of that kind and this process's own; else null.
EndSlot* MyEnd(Store& store, uintptr_t end, EndKind kind);

// Whether what an end says of itself can be: a known kind, an object within its table.
bool IsWhole(const EndSlot& end);

}  // namespace zelto::coredll

#endif
