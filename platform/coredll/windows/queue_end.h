// One open end of a message queue, and the system objects that its ends share by name: a section
// with the ring, a mutex around it, and two semaphores that wake whoever waits.
//
// An end is known to be there by an event that it keeps open and nobody waits on: the system closes
// it with the process, however that ends, so no count has to be mended.

#ifndef ZELTO_PLATFORM_COREDLL_WINDOWS_QUEUE_END_H
#define ZELTO_PLATFORM_COREDLL_WINDOWS_QUEUE_END_H

#include <memory>
#include <string>

#include "platform/coredll/windows/queue_ring.h"

namespace zelto::coredll {

struct HandleCloser {
    using pointer = HANDLE;
    void operator()(HANDLE handle) const { CloseHandle(handle); }
};
using UniqueHandle = std::unique_ptr<void, HandleCloser>;

struct ViewCloser {
    void operator()(void* view) const { UnmapViewOfFile(view); }
};
using UniqueView = std::unique_ptr<void, ViewCloser>;

// The queue's mutex for a scope. A dead owner's counts as ours; waiting for a live one has an end.
class QueueLock {
  public:
    explicit QueueLock(const UniqueHandle& mutex);
    ~QueueLock();
    QueueLock(const QueueLock&) = delete;
    QueueLock& operator=(const QueueLock&) = delete;

    bool IsHeld() const { return held_; }

  private:
    HANDLE mutex_;
    bool held_;
};

// Thread safety: Lock and Await from any thread, the rest by who holds the lock.
class QueueEnd {
  public:
    // Makes the named queue or opens the existing one. `error` is 0 for a new queue and 183 for an
    // existing one; null with the error of CreateMsgQueue.
    static std::unique_ptr<QueueEnd> Open(const std::wstring& name, const MSGQUEUEOPTIONS& options,
                                          DWORD& error);
    ~QueueEnd();
    QueueEnd(const QueueEnd&) = delete;
    QueueEnd& operator=(const QueueEnd&) = delete;

    const UniqueHandle& Mutex() const { return mutex_; }
    QueueRing& Ring() { return ring_; }
    Side MySide() const { return side_; }

    // Whether the queue came to its end because a side left. Notices that a process died.
    bool IsBroken();

    // Whether somebody holds an end of that side.
    bool IsThere(Side side) const;

    // Wakes one waiter of each side that may go on now; it passes that on in its turn.
    void AnnounceChange() const;

    // Waits for a change, at most `timeout` ms. May return early.
    void AwaitChange(DWORD timeout) const;

  private:
    QueueEnd(const std::wstring& name, Side side) : name_(name), side_(side) {}
    bool OpenObjects();
    bool MapSection(uint64_t bytes);
    bool Join(const MSGQUEUEOPTIONS& options, DWORD& error);
    std::wstring PresenceName(Side side) const;

    const std::wstring name_;
    const Side side_;
    uint32_t incarnation_ = 0;
    UniqueHandle mutex_;
    UniqueHandle section_;
    UniqueHandle readable_;
    UniqueHandle writable_;
    UniqueHandle presence_;
    UniqueView view_;
    QueueRing ring_;
};

}  // namespace zelto::coredll

#endif
