#include "common/sys/sync.h"

#include <utility>

namespace zelto {

Lock::Lock() {
    InitializeCriticalSection(&section_);
}

Lock::~Lock() {
    DeleteCriticalSection(&section_);
}

void Lock::Enter() {
    EnterCriticalSection(&section_);
}

bool Lock::TryEnter() {
    return TryEnterCriticalSection(&section_) != 0;
}

void Lock::Leave() {
    LeaveCriticalSection(&section_);
}

LockHolder::LockHolder(Lock* lock, bool lock_now) : lock_(lock) {
    if (lock_now)
        Acquire();
}

LockHolder::~LockHolder() {
    Release();
}

void LockHolder::Acquire() {
    if (lock_ != nullptr)
        lock_->Enter();
}

bool LockHolder::TryAcquire() {
    return lock_ == nullptr || lock_->TryEnter();
}

void LockHolder::Release() {
    if (Lock* lock = std::exchange(lock_, nullptr))
        lock->Leave();
}

Event::Event() : handle_(CreateEventW(nullptr, FALSE, FALSE, nullptr)) {}

Event::~Event() {
    Close();
}

bool Event::Set() {
    return EventModify(handle_, EVENT_SET) != 0;
}

DWORD Event::Wait(DWORD timeout) {
    return WaitForSingleObject(handle_, timeout);
}

bool Event::Close() {
    HANDLE handle = std::exchange(handle_, nullptr);
    return handle != nullptr && CloseHandle(handle) != 0;
}

Lock*& FileSystemLock() {
    static Lock* lock = nullptr;
    return lock;
}

}  // namespace zelto
