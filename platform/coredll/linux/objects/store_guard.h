// What happens when the store's file is cut short or removed while this process has it mapped.
//
// Touching a page that the file no longer has raises SIGBUS. A handler gives the process empty
// memory in the store's place and notes that the store is gone: every call then fails as it does
// without a device, and nobody ends. Faults elsewhere go on to whoever handled them before. The
// handler is the one thing that the layer changes for the whole process; it is there from the
// first connection on.

#ifndef ZELTO_PLATFORM_COREDLL_LINUX_OBJECTS_STORE_GUARD_H
#define ZELTO_PLATFORM_COREDLL_LINUX_OBJECTS_STORE_GUARD_H

#include <cstddef>

namespace zelto::coredll {

// Begins to guard a mapping of the open file; the descriptor stays the caller's, and open until
// the guard ends.
void GuardStore(void* memory, size_t size, int file);
void EndGuard();

// Whether the guarded store was found cut short or removed. Looks at the file itself now and then,
// so asking costs nothing to speak of. False without a guard. Any thread.
bool StoreIsGone();

}  // namespace zelto::coredll

#endif
