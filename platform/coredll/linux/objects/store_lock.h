// The one lock on the store's tables.

#ifndef ZELTO_PLATFORM_COREDLL_LINUX_OBJECTS_STORE_LOCK_H
#define ZELTO_PLATFORM_COREDLL_LINUX_OBJECTS_STORE_LOCK_H

#include <string>

#include "platform/coredll/linux/objects/store_layout.h"

namespace zelto::coredll {

// What a call fails with that does not get the lock: another process was stopped while it held it.
constexpr DWORD kStoreBusy = ERROR_BUSY;

// How long the lock is waited for. It is held for table operations only, never over a wait or a
// notification, so whoever has it this long is stopped. As long as that holder has it, later waits
// of this process are short.
constexpr int64_t kLockPatience = 2'000'000'000;  // ns
constexpr int64_t kStuckPatience = 20'000'000;    // ns

// Holds the store's lock, unless it was not to be had in time or the store is gone: ask IsHeld
// before anything else. A lock whose owner died is taken over and the store repaired.
class StoreLock {
  public:
    explicit StoreLock(Store& store);
    ~StoreLock();
    StoreLock(const StoreLock&) = delete;
    StoreLock& operator=(const StoreLock&) = delete;

    bool IsHeld() const { return held_; }

  private:
    Store& store_;
    bool held_;
};

// Frees what dead processes hold; true when there was one. Takes the lock.
bool SweepDeadProcesses(Store& store);

// Who has the lock and what to do about it, as a sentence. Needs no lock.
std::string LockHolderInWords(const Store& store);

}  // namespace zelto::coredll

#endif
