// Makes the store whole again after a process died.

#ifndef ZELTO_PLATFORM_COREDLL_LINUX_OBJECTS_STORE_REPAIR_H
#define ZELTO_PLATFORM_COREDLL_LINUX_OBJECTS_STORE_REPAIR_H

#include "platform/coredll/linux/objects/store_layout.h"

namespace zelto::coredll {

// Drops the windows and open ends of processes that are no longer there, then the queues and
// events that nobody holds, and works out every derived field anew: message counts, tails, the
// free list, the marks. Whatever holds an impossible number (an index beyond its table, a chain
// that does not end, a text without an end) is dropped, too: a process that went wrong may have
// written anything. May be cut short and run again. Call with the lock held, after the slots of
// dead processes were freed; wakes all who wait.
void RepairStore(Store& store);

}  // namespace zelto::coredll

#endif
