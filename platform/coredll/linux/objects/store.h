// This process's connection to the object store of its device.

#ifndef ZELTO_PLATFORM_COREDLL_LINUX_OBJECTS_STORE_H
#define ZELTO_PLATFORM_COREDLL_LINUX_OBJECTS_STORE_H

#include <string>

#include "platform/coredll/linux/objects/process_table.h"
#include "platform/coredll/linux/objects/store_lock.h"

namespace zelto::coredll {

// The store of the device that ZELTO_DEVICE names at the first call; null when there is no usable
// device or store, and from then on when the store was cut short or removed in use. Any thread.
// The first success maps the store and takes a process slot; a child made by fork gets its own at
// its first call, and its parent's handles mean nothing to it.
Store* OpenStore();

// The store if it is that of the device of this path and this process is connected to it; else
// null. Never connects, and does not look whether the store was removed meanwhile.
Store* ConnectedStore(const std::string& device);

// Why OpenStore fails, as a sentence that says what to do; "" when it succeeds.
std::string StoreProblem();

// Gives up all that this process holds in the store, and the mapping. No other thread may be in a
// call. Happens by itself when the process ends or the library is unloaded.
void CloseStore();

}  // namespace zelto::coredll

#endif
