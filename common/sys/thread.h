// A thread whose body a derived class supplies.

#ifndef ZELTO_COMMON_SYS_THREAD_H
#define ZELTO_COMMON_SYS_THREAD_H

#include <atomic>
#include <cstdint>

#include "common/text/dstring.h"
#include "platform/coredll/coredll.h"

namespace zelto {

// The object must outlive its thread: wait until Running() is false or on Handle().
// Thread safety: Running from any thread, the rest by the thread that owns the object.
class Thread {
  public:
    explicit Thread(const DString& name);
    virtual ~Thread();  // neither ends the thread nor closes its handle
    Thread(const Thread&) = delete;
    Thread& operator=(const Thread&) = delete;

    // The thread's body. Its result is not passed on: the thread always ends with 1.
    virtual int Run() = 0;

    // Starts the thread and names it for debuggers, which takes 10 ms. 1, or 0: no thread made.
    int Start();

    // 1 from construction on until the body has returned, started or not.
    int Running() const { return running_.load(std::memory_order_acquire); }

    // 0 idle, 1 lowest, 2 below normal, 3 normal, 4 above normal, 5 highest; any other level
    // leaves the priority as it is. Without a thread nothing is done.
    void SetPriority(int level);

    // Null until started. For waiting; who wants it closed closes it.
    HANDLE Handle() const { return handle_; }

  private:
    static DWORD Entry(void* self);
    void NameForDebugger(DWORD id) const;

    DString name_;
    HANDLE handle_ = nullptr;
    DWORD id_ = 0;
    std::atomic<int32_t> running_{1};
};

}  // namespace zelto

#endif
