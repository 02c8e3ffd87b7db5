#include "platform/coredll/linux/objects/store_lock.h"

#include "platform/coredll/linux/base/monotonic.h"
#include "platform/coredll/linux/objects/process_table.h"
#include "platform/coredll/linux/objects/store_guard.h"
#include "platform/coredll/linux/objects/store_repair.h"
#include "platform/coredll/linux/objects/waiting.h"

namespace zelto::coredll {
namespace {

constexpr uint32_t kLockWanted = 0x80000000;
constexpr int kLockSpins = 200;
constexpr int64_t kLockSleep = 5'000'000;  // ns between looks whether the owner lives

// The owner for which this process has waited in vain; nobody's word when there is none. Without
// order: a thread that learns it late waits longer, no more.
std::atomic<uint32_t> g_stuck_owner{0};

ProcessToken OwnerOf(uint32_t lock_word) {
    return ProcessToken::FromWord(lock_word);
}

bool TakeFree(Store& store, uint32_t mine) {
    uint32_t free = 0;
    // Acquire, here and in every exchange below that takes the lock: what the last owner wrote
    // before its release is seen after it.
    return store.lock.load(std::memory_order_relaxed) == 0 &&
           store.lock.compare_exchange_weak(free, mine, std::memory_order_acquire);
}

bool TakeBySpinning(Store& store, uint32_t mine) {
    const int spins = SpinningHelps() ? kLockSpins : 0;
    for (int i = 0; i <= spins; ++i) {
        if (TakeFree(store, mine))
            return true;
        SpinPause();
    }
    return false;
}

// True when the owner seen was dead and the lock is now ours, the store repaired.
bool TakeOver(Store& store, uint32_t seen) {
    if (TokenLives(store, OwnerOf(seen)))
        return false;
    if (!store.lock.compare_exchange_strong(seen, MyToken().Word() | kLockWanted))
        return false;
    FreeDeadSlots(store);
    RepairStore(store);
    return true;
}

// One attempt that ends with the lock, or with a sleep. It takes the lock with the wanted bit,
// since others may sleep for it too. Sequentially consistent: the bit must be there before the
// owner's release looks for it.
bool TakeOrSleep(Store& store, uint32_t mine) {
    uint32_t seen = store.lock.load();
    if (seen == 0)
        return store.lock.compare_exchange_strong(seen, mine | kLockWanted);
    if ((seen & kLockWanted) == 0 && !store.lock.compare_exchange_strong(seen, seen | kLockWanted))
        return false;
    const int64_t start = MonotonicNanoseconds();
    FutexWait(store.lock, seen | kLockWanted, kLockSleep);
    if (MonotonicNanoseconds() - start < kLockSleep)
        return false;
    seen = store.lock.load();
    return seen != 0 && TakeOver(store, seen);
}

bool Take(Store& store) {
    const uint32_t mine = MyToken().Word();
    if (mine == 0 || StoreIsGone())
        return false;
    if (TakeBySpinning(store, mine))
        return true;
    const uint32_t owner = OwnerOf(store.lock.load()).Word();
    const bool stuck = owner != 0 && owner == g_stuck_owner.load(std::memory_order_relaxed);
    const int64_t end = MonotonicNanoseconds() + (stuck ? kStuckPatience : kLockPatience);
    while (!TakeOrSleep(store, mine)) {
        if (StoreIsGone())
            return false;
        if (MonotonicNanoseconds() > end) {
            g_stuck_owner.store(OwnerOf(store.lock.load()).Word(), std::memory_order_relaxed);
            return false;
        }
    }
    g_stuck_owner.store(0, std::memory_order_relaxed);
    return true;
}

}  // namespace

StoreLock::StoreLock(Store& store) : store_(store), held_(Take(store)) {}

StoreLock::~StoreLock() {
    // Release: the next owner sees what this one wrote.
    if (held_ && (store_.lock.exchange(0, std::memory_order_release) & kLockWanted) != 0)
        FutexWakeOne(store_.lock);
}

bool SweepDeadProcesses(Store& store) {
    const StoreLock lock(store);
    if (!lock.IsHeld() || !FreeDeadSlots(store))
        return false;
    RepairStore(store);
    return true;
}

std::string LockHolderInWords(const Store& store) {
    const ProcessSlot* holder = ProcessOf(store, OwnerOf(store.lock.load()));
    const std::string pid = holder == nullptr ? "?" : std::to_string(holder->pid);
    return "Process " + pid +
           " has the lock on the device's object store and does not go on: let it go on "
           "(kill -CONT " +
           pid + ") or end it (kill -KILL " + pid + ").";
}

}  // namespace zelto::coredll
