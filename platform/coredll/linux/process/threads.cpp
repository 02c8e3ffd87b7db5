#include "platform/coredll/api/threads.h"

#include <atomic>
#include <mutex>
#include <new>
#include <pthread.h>
#include <sys/resource.h>
#include <unistd.h>

#include "platform/coredll/linux/base/handle_table.h"
#include "platform/coredll/linux/base/last_error.h"
#include "platform/coredll/linux/objects/waiting.h"
#include "platform/coredll/linux/process/thread_object.h"

namespace zelto::coredll {
namespace {

enum : uint32_t { kStarting, kRunning, kEnded };

// A thread behind a handle. The thread and the handle own it together: the last one frees it.
struct Thread {
    LPTHREAD_START_ROUTINE start;
    void* parameter;
    pthread_t host{};       // the handle's side joins or detaches it
    DWORD id = 0;           // set before kRunning
    Word state{kStarting};  // kEnded is stored under the mutex
    std::atomic<int> owners{2};

    std::mutex mutex{};
    int priority = THREAD_PRIORITY_NORMAL;  // guarded by mutex, as the next
    bool joined = false;
};

Thread* ThreadOfWord(uintptr_t word) {
    return reinterpret_cast<Thread*>(word);
}

void Release(Thread* thread) {
    if (thread->owners.fetch_sub(1) == 1)
        delete thread;
}

void* RunThread(void* argument) {
    auto* thread = static_cast<Thread*>(argument);
    thread->id = static_cast<DWORD>(gettid());
    thread->state.store(kRunning);
    FutexWakeAll(thread->state);
    thread->start(thread->parameter);
    {
        const std::lock_guard lock(thread->mutex);
        thread->state.store(kEnded);
    }
    FutexWakeAll(thread->state);
    Release(thread);
    return nullptr;
}

// How much nicer than its process a thread of each priority is. None is less nice: raising is not
// every user's right, and would put the whole host behind one device.
constexpr int kNicer[] = {0, 0, 0, 0, 5, 10, 15, 19};

void TellHost(DWORD thread_id, int priority) {
    const int process = getpriority(PRIO_PROCESS, static_cast<id_t>(getpid()));
    setpriority(PRIO_PROCESS, thread_id, process + kNicer[priority]);  // the host cuts at 19
}

// The thread was found by a handle that stays open during the call.
Thread* ThreadOfHandle(HANDLE handle) {
    uintptr_t word = 0;
    return LookUpHandle(handle, HandleKind::kThread, word) ? ThreadOfWord(word) : nullptr;
}

}  // namespace

bool WaitForThread(uintptr_t word, DWORD timeout_ms) {
    Thread& thread = *ThreadOfWord(word);
    const Deadline deadline(timeout_ms);
    for (uint32_t state = thread.state.load(); state != kEnded; state = thread.state.load()) {
        if (deadline.Passed())
            return false;
        FutexWait(thread.state, state, deadline.Left());
    }
    // Its last instructions are this library's, which the waiter may be about to unload.
    const std::lock_guard lock(thread.mutex);
    if (!thread.joined)
        pthread_join(thread.host, nullptr);
    thread.joined = true;
    return true;
}

void CloseThreadWord(uintptr_t word) {
    Thread* thread = ThreadOfWord(word);
    if (!thread->joined)
        pthread_detach(thread->host);
    Release(thread);
}

}  // namespace zelto::coredll

using namespace zelto::coredll;

HANDLE CreateThread(SECURITY_ATTRIBUTES*, DWORD, LPTHREAD_START_ROUTINE start, void* parameter,
                    DWORD flags, DWORD* thread_id) {
    if (start == nullptr || (flags & ~STACK_SIZE_PARAM_IS_A_RESERVATION) != 0)
        return Fail(ERROR_INVALID_PARAMETER, HANDLE{});
    auto* thread = new (std::nothrow) Thread{start, parameter};
    if (thread == nullptr)
        return Fail(ERROR_NOT_ENOUGH_MEMORY, HANDLE{});
    const auto word = reinterpret_cast<uintptr_t>(thread);
    const HANDLE handle = MakeHandle(HandleKind::kThread, word);
    if (handle == nullptr || pthread_create(&thread->host, nullptr, RunThread, thread) != 0) {
        uintptr_t taken = 0;
        TakeHandle(handle, HandleKind::kThread, taken);
        delete thread;
        return Fail(ERROR_NOT_ENOUGH_MEMORY, HANDLE{});
    }
    while (thread->state.load() == kStarting)  // it tells its id
        FutexWait(thread->state, kStarting, Deadline(INFINITE).Left());
    if (thread_id != nullptr)
        *thread_id = thread->id;
    return handle;
}

int GetThreadPriority(HANDLE handle) {
    Thread* thread = ThreadOfHandle(handle);
    if (thread == nullptr)
        return Fail(ERROR_INVALID_HANDLE, int{THREAD_PRIORITY_ERROR_RETURN});
    const std::lock_guard lock(thread->mutex);
    return thread->priority;
}

BOOL SetThreadPriority(HANDLE handle, int priority) {
    Thread* thread = ThreadOfHandle(handle);
    if (thread == nullptr)
        return Fail(ERROR_INVALID_HANDLE);
    if (priority < THREAD_PRIORITY_TIME_CRITICAL || priority > THREAD_PRIORITY_IDLE)
        return Fail(ERROR_INVALID_PARAMETER);
    const std::lock_guard lock(thread->mutex);
    thread->priority = priority;
    if (thread->state.load() != kEnded)  // its id is still its own
        TellHost(thread->id, priority);
    return TRUE;
}
