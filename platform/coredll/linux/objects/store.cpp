#include "platform/coredll/linux/objects/store.h"

#include <errno.h>
#include <mutex>
#include <pthread.h>

#include "platform/coredll/linux/base/device.h"
#include "platform/coredll/linux/base/paths.h"
#include "platform/coredll/linux/objects/process_life.h"
#include "platform/coredll/linux/objects/store_file.h"
#include "platform/coredll/linux/objects/store_guard.h"
#include "platform/coredll/linux/objects/store_repair.h"
#include "platform/coredll/linux/objects/waiting.h"
#include "platform/coredll/linux/objects/witness_ring.h"

namespace zelto::coredll {
namespace {

std::mutex g_connect_mutex;
// Written under the mutex with release, so that whoever reads it with acquire finds the token, the
// guard and the mapping behind it.
std::atomic<Store*> g_store{nullptr};
int g_file = -1;       // of the store; guarded by the mutex
std::string g_device;  // whose store it is; written before g_store, and read behind it

// Takes a slot and frees what dead processes hold, the former user of our slot among them.
std::string Join(Store& store) {
    if (!TakeProcessSlot(store))
        return "The device is full: " + std::to_string(kMaxProcesses) +
               " processes use it already; end one of them.";
    const StoreLock lock(store);
    if (!lock.IsHeld()) {
        std::string problem = LockHolderInWords(store);
        LeaveProcessSlot(store, kSlotUnswept);
        return problem;
    }
    FreeDeadSlots(store);
    RepairStore(store);
    Witness(store,
            {.kind = WitnessKind::kProcessJoined, .name = WideName(program_invocation_short_name)});
    return "";
}

void ForgetStoreInChild() {
    // The slot and the lock are the parent's. No mutex may be touched here: the thread that held
    // it at the fork does not exist in the child.
    Store* store = g_store.exchange(nullptr);
    if (store == nullptr)
        return;
    ForgetProcessSlot();
    EndGuard();
    UnmapStore(store);
    UniqueFd(std::exchange(g_file, -1)).Reset(-1);
}

// Connects; returns what is in the way, "" when nothing was. g_connect_mutex held.
std::string Connect() {
    MappedStore mapped;
    g_device = DevicePath();
    std::string problem = OpenStoreFile(mapped, Join);
    if (!problem.empty())
        return problem;
    static const int at_fork = pthread_atfork(nullptr, nullptr, ForgetStoreInChild);
    static_cast<void>(at_fork);
    g_file = mapped.file.Release();
    g_store.store(mapped.store, std::memory_order_release);
    return "";
}

struct CloseStoreAtUnload {
    ~CloseStoreAtUnload() { CloseStore(); }
};
const CloseStoreAtUnload g_close_store_at_unload;

}  // namespace

Store* OpenStore() {
    Store* store = g_store.load(std::memory_order_acquire);
    if (store == nullptr) {
        StoreProblem();
        store = g_store.load(std::memory_order_acquire);
    }
    return store == nullptr || StoreIsGone() ? nullptr : store;
}

Store* ConnectedStore(const std::string& device) {
    Store* store = g_store.load(std::memory_order_acquire);
    return store == nullptr || device != g_device ? nullptr : store;
}

std::string StoreProblem() {
    const std::lock_guard lock(g_connect_mutex);
    if (g_store.load() == nullptr)
        return Connect();
    return StoreIsGone() ? "The device's object store was cut short or removed while this program "
                           "used it: end the programs that use the device and start them again."
                         : "";
}

void CloseStore() {
    const std::lock_guard connect_lock(g_connect_mutex);
    Store* store = g_store.exchange(nullptr);
    if (store == nullptr)
        return;
    {
        // Without the lock the slot stays taken: whoever comes next finds this process dead, and
        // frees what it held.
        const StoreLock lock(*store);
        if (lock.IsHeld()) {
            Witness(*store, {.kind = WitnessKind::kProcessLeft});
            LeaveProcessSlot(*store, kSlotFree);
            RepairStore(*store);
        }
    }
    ForgetProcessSlot();
    // A thread that still waits at the end of the process must find the memory it looks at.
    if (WaitingThreads() == 0) {
        EndGuard();
        UnmapStore(store);
        UniqueFd(std::exchange(g_file, -1)).Reset(-1);
    }
    StopWatchingProcesses();
}

}  // namespace zelto::coredll
