#include "common/sys/thread.h"

namespace zelto {

namespace {

constexpr DWORD kStackSize = 5000;
constexpr DWORD kNamingDelay = 10;  // ms; a debugger needs it to have seen the thread start
constexpr DWORD kNamingException = 0x406D1388;
constexpr uintptr_t kNamingRecordType = 0x1000;
constexpr DWORD kCallingThread = 0xFFFFFFFF;

constexpr int kPriorities[] = {
    THREAD_PRIORITY_IDLE,   THREAD_PRIORITY_LOWEST,       THREAD_PRIORITY_BELOW_NORMAL,
    THREAD_PRIORITY_NORMAL, THREAD_PRIORITY_ABOVE_NORMAL, THREAD_PRIORITY_HIGHEST,
};
constexpr int kLevels = sizeof(kPriorities) / sizeof(kPriorities[0]);

}  // namespace

Thread::Thread(const DString& name) : name_(name) {}

Thread::~Thread() = default;

int Thread::Start() {
    handle_ = CreateThread(nullptr, kStackSize, &Thread::Entry, this, 0, &id_);
    if (handle_ == nullptr)
        return 0;
    NameForDebugger(id_);
    return 1;
}

void Thread::SetPriority(int level) {
    if (handle_ == nullptr)
        return;
    int priority = GetThreadPriority(handle_);
    if (level >= 0 && level < kLevels)
        priority = kPriorities[level];
    SetThreadPriority(handle_, priority);
}

void Thread::NameForDebugger(DWORD id) const {
    Sleep(kNamingDelay);
    const uintptr_t arguments[] = {kNamingRecordType, reinterpret_cast<uintptr_t>(name_.c_str()),
                                   id, 0};
    RaiseException(kNamingException, 0, 4, arguments);
}

DWORD Thread::Entry(void* self) {
    Thread& thread = *static_cast<Thread*>(self);
    // Start may not have received the identifier yet.
    thread.NameForDebugger(kCallingThread);
    thread.running_.store(1, std::memory_order_relaxed);
    thread.Run();
    thread.running_.store(0, std::memory_order_release);
    return 1;
}

}  // namespace zelto
