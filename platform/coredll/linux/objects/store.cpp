#include "platform/coredll/linux/objects/store.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <mutex>
#include <pthread.h>
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/coredll/linux/base/device.h"
#include "platform/coredll/linux/objects/process_life.h"
#include "platform/coredll/linux/objects/store_repair.h"
#include "platform/coredll/linux/objects/waiting.h"

namespace zelto::coredll {
namespace {

constexpr uint32_t kLockWanted = 0x80000000;
constexpr int kLockSpins = 200;
constexpr int64_t kLockSleep = 5'000'000;  // ns between looks whether the owner lives

std::mutex g_connect_mutex;
std::atomic<Store*> g_store{nullptr};
std::atomic<ProcessToken> g_token{0};

uint32_t SlotOf(ProcessToken token) {
    return (token & 0xFF) - 1;
}

uint64_t StartTimeOf(const ProcessSlot& slot) {
    return slot.start_time[0] | uint64_t{slot.start_time[1]} << 32;
}

bool SlotLives(uint32_t index, const ProcessSlot& slot) {
    return ProcessLives(index, slot.pid, StartTimeOf(slot));
}

// Frees the slots of dead processes; the caller repairs when there was one. Lock held.
bool FreeDeadSlots(Store& store) {
    bool found = false;
    for (uint32_t i = 0; i < kMaxProcesses; ++i) {
        ProcessSlot& slot = store.processes[i];
        if (slot.state.load() != kLive || i == SlotOf(MyToken()) || SlotLives(i, slot))
            continue;
        slot.state.store(kFree);
        found = true;
    }
    return found;
}

// True when the owner seen was dead and the lock is now ours, the store repaired.
bool TakeOverLock(Store& store, uint32_t seen) {
    if (TokenLives(store, seen & kTokenMask))
        return false;
    if (!store.lock.compare_exchange_strong(seen, MyToken() | kLockWanted))
        return false;
    FreeDeadSlots(store);
    RepairStore(store);
    return true;
}

// ---- Connecting ---------------------------------------------------------------------------

std::string StoreRefusal(const std::string& path, const std::string& what) {
    return "The device's object store '" + path + "' " + what +
           ": stop the programs that use the device, remove the file and start them again.";
}

// An open, locked store file. The lock is given up explicitly: a mapping keeps the open file, and
// with it the lock, beyond its descriptor.
class StoreFile {
  public:
    explicit StoreFile(const std::string& path)
        : file_(open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600)) {
        while (file_ >= 0 && flock(file_, LOCK_EX) != 0 && errno == EINTR) {
        }
    }
    ~StoreFile() {
        if (file_ < 0)
            return;
        flock(file_, LOCK_UN);
        close(file_);
    }
    StoreFile(const StoreFile&) = delete;
    StoreFile& operator=(const StoreFile&) = delete;

    int Get() const { return file_; }

  private:
    int file_;
};

// The magic is written last, so a file without it was never used.
bool IsBlank(const Store& store) {
    return store.magic[0] == 0;
}

void FormatStore(Store& store, const std::string& boot_id) {
    std::strncpy(store.boot_id, boot_id.c_str(), sizeof store.boot_id - 1);
    store.size = sizeof(Store);
    store.version = kStoreVersion;
    uint32_t magic[2];
    std::memcpy(magic, kStoreMagic, sizeof magic);
    store.magic[1].store(magic[1], std::memory_order_release);
    store.magic[0].store(magic[0], std::memory_order_release);
}

// What is wrong with the file before it is mapped; "" when nothing is.
std::string CheckStoreFile(const StoreFile& file, const std::string& path) {
    struct stat status {};
    if (file.Get() < 0 || fstat(file.Get(), &status) != 0) {
        return "The device's object store '" + path +
               "' cannot be opened: " + std::strerror(errno) + ".";
    }
    if (!S_ISREG(status.st_mode))
        return StoreRefusal(path, "is not a file");
    if (status.st_uid != geteuid())
        return StoreRefusal(path, "belongs to another user");
    if ((status.st_mode & 0077) != 0)
        return StoreRefusal(path, "is open to other users");
    if (status.st_size == 0) {
        return ftruncate(file.Get(), sizeof(Store)) == 0
                   ? ""
                   : "The device's object store '" + path +
                         "' cannot be made: " + std::strerror(errno) + ".";
    }
    if (status.st_size < static_cast<off_t>(sizeof kStoreMagic)) {
        return StoreRefusal(path, "is cut short");
    }
    return "";
}

// What is wrong with the file's head; "" when nothing is.
std::string CheckStoreHead(const StoreFile& file, const std::string& path) {
    char magic[sizeof kStoreMagic] = {};
    uint32_t numbers[2] = {};
    struct stat status {};
    if (fstat(file.Get(), &status) != 0 ||
        pread(file.Get(), magic, sizeof magic, offsetof(Store, magic)) < 0 ||
        pread(file.Get(), numbers, sizeof numbers, offsetof(Store, version)) < 0) {
        return StoreRefusal(path, "cannot be read");
    }
    const char blank[sizeof(Word)] = {};
    const bool is_blank = std::memcmp(magic, blank, sizeof blank) == 0;
    if (!is_blank && std::memcmp(magic, kStoreMagic, sizeof magic) != 0) {
        return StoreRefusal(path, "was not made by this system");
    }
    if (!is_blank && numbers[0] != kStoreVersion) {
        return StoreRefusal(path, "is of another version (" + std::to_string(numbers[0]) +
                                      ", this is " + std::to_string(kStoreVersion) + ")");
    }
    if (status.st_size != static_cast<off_t>(sizeof(Store)) ||
        (!is_blank && numbers[1] != sizeof(Store))) {
        return StoreRefusal(path, "is cut short or of another size");
    }
    return "";
}

Store* MapStore(const StoreFile& file) {
    void* memory = mmap(nullptr, sizeof(Store), PROT_READ | PROT_WRITE, MAP_SHARED, file.Get(), 0);
    return memory == MAP_FAILED ? nullptr : static_cast<Store*>(memory);
}

// Takes a free slot, or that of a dead process: its token is then no longer current, so a repair
// frees what it held. 0 when all are taken. The store file is locked.
ProcessToken TakeProcessSlot(Store& store) {
    for (uint32_t i = 0; i < kMaxProcesses; ++i) {
        ProcessSlot& slot = store.processes[i];
        if (slot.state.load() == kLive && SlotLives(i, slot))
            continue;
        const uint64_t start = ProcessStartTime(static_cast<uint32_t>(getpid())).value_or(0);
        slot.state.store(kFree);
        slot.use.fetch_add(1);
        slot.pid = static_cast<uint32_t>(getpid());
        slot.start_time[0] = static_cast<uint32_t>(start);
        slot.start_time[1] = static_cast<uint32_t>(start >> 32);
        slot.state.store(kLive);
        return ((slot.use.load() << 8) | (i + 1)) & kTokenMask;
    }
    return 0;
}

void ForgetStoreInChild() {
    // The slot and the lock are the parent's. No mutex may be touched here: the thread that held
    // it at the fork does not exist in the child.
    g_token.store(0);
    if (Store* store = g_store.exchange(nullptr))
        munmap(store, sizeof(Store));
}

// Connects; returns what is in the way, "" when nothing was. g_connect_mutex held.
std::string Connect() {
    std::string why;
    if (!CheckDevice(&why))
        return why;
    const std::string path = DeviceFile("store");
    const StoreFile file(path);
    why = CheckStoreFile(file, path);
    if (why.empty())
        why = CheckStoreHead(file, path);
    if (!why.empty())
        return why;
    const std::string boot_id = HostBootId();
    Store* store = MapStore(file);
    if (store != nullptr && !IsBlank(*store) &&
        std::strncmp(store->boot_id, boot_id.c_str(), sizeof store->boot_id) != 0) {
        // Left from before the host started: none of its processes lives.
        munmap(store, sizeof(Store));
        const bool emptied =
            ftruncate(file.Get(), 0) == 0 && ftruncate(file.Get(), sizeof(Store)) == 0;
        store = emptied ? MapStore(file) : nullptr;
    }
    if (store == nullptr)
        return StoreRefusal(path, "cannot be mapped");
    if (IsBlank(*store))
        FormatStore(*store, boot_id);
    const ProcessToken token = TakeProcessSlot(*store);
    if (token == 0) {
        munmap(store, sizeof(Store));
        return "The device is full: " + std::to_string(kMaxProcesses) +
               " processes use it already; end one of them.";
    }
    g_token.store(token);
    {
        // Frees what dead processes hold, the former user of our slot among them.
        const StoreLock lock(*store);
        FreeDeadSlots(*store);
        RepairStore(*store);
    }
    static const int at_fork = pthread_atfork(nullptr, nullptr, ForgetStoreInChild);
    static_cast<void>(at_fork);
    g_store.store(store, std::memory_order_release);
    return "";
}

struct CloseStoreAtUnload {
    ~CloseStoreAtUnload() { CloseStore(); }
};
const CloseStoreAtUnload g_close_store_at_unload;

}  // namespace

Store* OpenStore() {
    Store* store = g_store.load(std::memory_order_acquire);
    if (store != nullptr)
        return store;
    StoreProblem();
    return g_store.load(std::memory_order_acquire);
}

std::string StoreProblem() {
    const std::lock_guard lock(g_connect_mutex);
    return g_store.load() != nullptr ? "" : Connect();
}

ProcessToken MyToken() {
    return g_token.load(std::memory_order_relaxed);
}

void CloseStore() {
    const std::lock_guard connect_lock(g_connect_mutex);
    Store* store = g_store.exchange(nullptr);
    if (store == nullptr)
        return;
    {
        const StoreLock lock(*store);
        store->processes[SlotOf(MyToken())].state.store(kFree);
        RepairStore(*store);
    }
    g_token.store(0);
    // A thread that still waits at the end of the process must find the memory it looks at.
    if (WaitingThreads() == 0)
        munmap(store, sizeof(Store));
    StopWatchingProcesses();
}

StoreLock::StoreLock(Store& store) : store_(store) {
    const uint32_t mine = MyToken();
    const int spins = SpinningHelps() ? kLockSpins : 0;
    for (int i = 0; i <= spins; ++i) {
        uint32_t free = 0;
        if (store.lock.load(std::memory_order_relaxed) == 0 &&
            store.lock.compare_exchange_weak(free, mine, std::memory_order_acquire)) {
            return;
        }
        SpinPause();
    }
    // From here on the lock is taken with the wanted bit, since others may sleep for it too.
    for (;;) {
        uint32_t seen = store.lock.load();
        if (seen == 0) {
            if (store.lock.compare_exchange_strong(seen, mine | kLockWanted))
                return;
            continue;
        }
        if ((seen & kLockWanted) == 0 &&
            !store.lock.compare_exchange_strong(seen, seen | kLockWanted)) {
            continue;
        }
        const int64_t start = MonotonicNanoseconds();
        FutexWait(store.lock, seen | kLockWanted, kLockSleep);
        if (MonotonicNanoseconds() - start < kLockSleep)
            continue;
        seen = store.lock.load();
        if (seen != 0 && TakeOverLock(store, seen))
            return;
    }
}

StoreLock::~StoreLock() {
    if ((store_.lock.exchange(0, std::memory_order_release) & kLockWanted) != 0) {
        FutexWakeOne(store_.lock);
    }
}

bool TokenLives(const Store& store, ProcessToken token) {
    if (token == MyToken())
        return true;
    if (!TokenIsCurrent(store, token))
        return false;
    const uint32_t index = SlotOf(token);
    return SlotLives(index, store.processes[index]);
}

bool SweepDeadProcesses(Store& store) {
    const StoreLock lock(store);
    if (!FreeDeadSlots(store))
        return false;
    RepairStore(store);
    return true;
}

}  // namespace zelto::coredll
