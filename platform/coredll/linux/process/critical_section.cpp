#include <memory>
#include <mutex>
#include <new>

#include "platform/coredll/api/threads.h"

namespace {

static_assert(sizeof(std::recursive_mutex) <= sizeof(CRITICAL_SECTION::storage));
static_assert(alignof(std::recursive_mutex) <= alignof(CRITICAL_SECTION));

std::recursive_mutex& LockIn(CRITICAL_SECTION* section) {
    return *std::launder(reinterpret_cast<std::recursive_mutex*>(section->storage));
}

}  // namespace

void InitializeCriticalSection(CRITICAL_SECTION* section) {
    ::new (static_cast<void*>(section->storage)) std::recursive_mutex;
}

void DeleteCriticalSection(CRITICAL_SECTION* section) {
    std::destroy_at(&LockIn(section));
}

void EnterCriticalSection(CRITICAL_SECTION* section) {
    LockIn(section).lock();
}

BOOL TryEnterCriticalSection(CRITICAL_SECTION* section) {
    return LockIn(section).try_lock() ? TRUE : FALSE;
}

void LeaveCriticalSection(CRITICAL_SECTION* section) {
    LockIn(section).unlock();
}
