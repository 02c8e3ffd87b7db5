// Lock, scoped holder and event over the system's critical sections and events.

#ifndef ZELTO_COMMON_SYS_SYNC_H
#define ZELTO_COMMON_SYS_SYNC_H

#include "platform/coredll/coredll.h"

namespace zelto {

// A recursive lock between the threads of this process.
// Thread safety: every member may be called from any thread; Leave only by the owner.
class Lock {
  public:
    Lock();
    ~Lock();
    Lock(const Lock&) = delete;
    Lock& operator=(const Lock&) = delete;

    void Enter();
    bool TryEnter();  // false: another thread owns it
    void Leave();

  private:
    CRITICAL_SECTION section_;
};

// Leaves a lock at the end of a scope. A null lock makes every member a no-op that succeeds.
// A holder releases at most once and is of no further use then: it has forgotten its lock.
// Thread safety: none; each thread has its own holder on the shared lock.
class LockHolder {
  public:
    LockHolder(Lock* lock, bool lock_now);
    ~LockHolder();
    LockHolder(const LockHolder&) = delete;
    LockHolder& operator=(const LockHolder&) = delete;

    void Acquire();
    bool TryAcquire();
    void Release();

  private:
    Lock* lock_;
};

// An unnamed auto-reset event, not signalled at first. Closed by its destructor at the latest.
// Thread safety: Set and Wait from any thread; Close only when nobody else uses the event.
class Event {
  public:
    Event();
    ~Event();
    Event(const Event&) = delete;
    Event& operator=(const Event&) = delete;

    // Two names of one operation: lets one waiter through. False on a closed event.
    bool Set();
    bool Signal() { return Set(); }

    // Milliseconds. The system's raw result: WAIT_OBJECT_0, WAIT_TIMEOUT or WAIT_FAILED.
    DWORD Wait(DWORD timeout);

    bool Close();  // false when the event was closed before

  private:
    HANDLE handle_;
};

// The lock that file-system work is serialised on: null until the library's start-up has set it
// and again after its unload, which a LockHolder takes for no lock at all.
Lock*& FileSystemLock();

}  // namespace zelto

#endif
