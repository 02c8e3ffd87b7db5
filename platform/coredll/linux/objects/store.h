// This process's connection to the object store of its device, and the lock on the store.

#ifndef ZELTO_PLATFORM_COREDLL_LINUX_OBJECTS_STORE_H
#define ZELTO_PLATFORM_COREDLL_LINUX_OBJECTS_STORE_H

#include <string>

#include "platform/coredll/linux/objects/store_layout.h"

namespace zelto::coredll {

// The store of the device that ZELTO_DEVICE names at the first call; null when there is no usable
// device or store. Any thread. The first success maps the store and takes a process slot; a child
// made by fork gets its own at its first call, and its parent's handles mean nothing to it.
Store* OpenStore();

// Why OpenStore fails, as a sentence that says what to do; "" when it succeeds.
std::string StoreProblem();

// This process's token, 0 when not connected.
ProcessToken MyToken();

// Gives up all that this process holds in the store, and the mapping. No other thread may be in a
// call. Happens by itself when the process ends or the library is unloaded.
void CloseStore();

// Holds the store's lock. Held for table operations only, never over a wait or a notification. A
// lock whose owner died is taken over and the store repaired.
class StoreLock {
  public:
    explicit StoreLock(Store& store);
    ~StoreLock();
    StoreLock(const StoreLock&) = delete;
    StoreLock& operator=(const StoreLock&) = delete;

  private:
    Store& store_;
};

// Whether the process behind a token lives and still has its slot. Needs no lock.
bool TokenLives(const Store& store, ProcessToken token);

// Frees what dead processes hold; true when there was one. Takes the lock.
bool SweepDeadProcesses(Store& store);

}  // namespace zelto::coredll

#endif
