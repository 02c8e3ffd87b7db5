#include "platform/coredll/linux/objects/store_file.h"

#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <fstream>
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include "platform/coredll/linux/base/device.h"
#include "platform/coredll/linux/base/monotonic.h"
#include "platform/coredll/linux/objects/process_life.h"
#include "platform/coredll/linux/objects/store_guard.h"

namespace zelto::coredll {
namespace {

constexpr useconds_t kConnectPause = 2000;  // between attempts to lock the file
// One byte far behind the file's end: every user holds a shared lock on it.
constexpr off_t kUsersMark = off_t{1} << 40;

std::string Path() {
    return PrintablePath(DevicePath() + "/" + kStoreName);
}

std::string Refusal(const std::string& what) {
    return "The device's object store '" + Path() + "' " + what +
           ": stop the programs that use the device, remove the file and start them again.";
}

std::string Failure(const std::string& what) {
    return "The device's object store '" + Path() + "' " + what + ": " + std::strerror(errno) + ".";
}

// The process that has the file locked, as the host lists it: "1: FLOCK ADVISORY WRITE <pid>
// <major>:<minor>:<inode> ...". 0 when it cannot be told.
unsigned LockingProcess(int file) {
    struct stat status {};
    if (fstat(file, &status) != 0)
        return 0;
    char place[64];
    std::snprintf(place, sizeof place, "%02x:%02x:%ju", major(status.st_dev), minor(status.st_dev),
                  uintmax_t{status.st_ino});
    std::ifstream locks("/proc/locks");
    for (std::string line; std::getline(locks, line);) {
        unsigned pid = 0;
        char where[64] = "";
        if (std::sscanf(line.c_str(), "%*s FLOCK ADVISORY WRITE %u %63s", &pid, where) == 2 &&
            std::strcmp(where, place) == 0) {
            return pid;
        }
    }
    return 0;
}

// Whether the last wait for the file's lock was in vain: the next one is then but one attempt.
std::atomic<bool> g_waited_in_vain{false};

// Holds the file's lock while one process connects. Given up explicitly: a mapping keeps the open
// file, and with it the lock, beyond its descriptor.
class ConnectLock {
  public:
    explicit ConnectLock(int file) : file_(file) {
        const int64_t patience = g_waited_in_vain ? 0 : kConnectPatience;
        const int64_t end = MonotonicNanoseconds() + patience;
        while (!(held_ = flock(file_, LOCK_EX | LOCK_NB) == 0) && MonotonicNanoseconds() < end)
            usleep(kConnectPause);
        g_waited_in_vain = !held_;
    }
    ~ConnectLock() {
        if (held_)
            flock(file_, LOCK_UN);
    }
    ConnectLock(const ConnectLock&) = delete;
    ConnectLock& operator=(const ConnectLock&) = delete;

    bool IsHeld() const { return held_; }

  private:
    int file_;
    bool held_ = false;
};

std::string BusyInWords(int file) {
    const unsigned pid = LockingProcess(file);
    const std::string who = pid == 0 ? "A process" : "Process " + std::to_string(pid);
    const std::string name = pid == 0 ? "PID" : std::to_string(pid);
    return who +
           " began to connect to the device's object store and does not go on: let it go on "
           "(kill -CONT " +
           name + ") or end it (kill -KILL " + name + ").";
}

bool SetUsersMark(int file, short kind) {
    struct flock mark {};
    mark.l_type = kind;
    mark.l_whence = SEEK_SET;
    mark.l_start = kUsersMark;
    mark.l_len = 1;
    return fcntl(file, F_OFD_SETLK, &mark) == 0;
}

// What is wrong with the file itself, whoever uses it; "" when nothing is.
std::string CheckFile(int file, struct stat& status) {
    if (file < 0 || fstat(file, &status) != 0)
        return Failure("cannot be opened");
    if (!S_ISREG(status.st_mode))
        return Refusal("is not a file");
    if (status.st_uid != geteuid())
        return Refusal("belongs to another user");
    return (status.st_mode & 0077) != 0 ? Refusal("is open to other users") : "";
}

struct Head {
    char magic[sizeof kStoreMagic] = {};
    uint32_t version = 0;
    uint32_t size = 0;
    char boot_id[sizeof Store::boot_id] = {};
    uint32_t pid_namespace[2] = {};
};
static_assert(offsetof(Store, boot_id) == offsetof(Head, boot_id) &&
              offsetof(Store, pid_namespace) == offsetof(Head, pid_namespace));

void SplitNamespace(uint32_t (&words)[2]) {
    const uint64_t id = HostPidNamespace();
    words[0] = static_cast<uint32_t>(id);
    words[1] = static_cast<uint32_t>(id >> 32);
}

// The magic is written last, so a head without it is of a file that was never used.
bool IsBlank(const Head& head) {
    return head.magic[0] == 0;
}

// What is wrong with what the file holds, as a part of a sentence; "" when it can be used as it
// stands.
std::string CheckHead(const Head& head, off_t file_size) {
    uint32_t here[2];
    SplitNamespace(here);
    if (IsBlank(head))
        return "is not finished";
    if (head.version != kStoreVersion)
        return "is of another version (" + std::to_string(head.version) + ", this is " +
               std::to_string(kStoreVersion) + ")";
    if (file_size != off_t{sizeof(Store)} || head.size != sizeof(Store))
        return "is cut short or of another size";
    if (HostBootId() != std::string(head.boot_id, strnlen(head.boot_id, sizeof head.boot_id)))
        return "is from before the host started";
    if (std::memcmp(head.pid_namespace, here, sizeof here) != 0)
        return "is used from another process-id namespace (a container), where processes have "
               "other numbers; use one device on one side only";
    return "";
}

// Empties the file and reserves all of it, so that no later write to the mapping lacks a block.
std::string MakeAnew(int file) {
    if (ftruncate(file, 0) != 0)
        return Failure("cannot be made");
    errno = posix_fallocate(file, 0, sizeof(Store));
    if (errno == 0)
        return "";
    std::string problem = Failure("cannot be made");
    if (errno == ENOSPC || errno == EDQUOT || errno == EFBIG)
        problem = "There is no room for the device's object store '" + Path() + "', " +
                  std::to_string((sizeof(Store) >> 10) + 1) + " KiB: make room and try again.";
    (void)!ftruncate(file, 0);  // the next one makes it anew in any case
    return problem;
}

void Format(Store& store) {
    const std::string boot_id = HostBootId();
    std::strncpy(store.boot_id, boot_id.c_str(), sizeof store.boot_id - 1);
    SplitNamespace(store.pid_namespace);
    store.size = sizeof(Store);
    store.version = kStoreVersion;
    uint32_t magic[2];
    std::memcpy(magic, kStoreMagic, sizeof magic);
    // Release: the magic makes the head above it good, the first word of it last.
    store.magic[1].store(magic[1], std::memory_order_release);
    store.magic[0].store(magic[0], std::memory_order_release);
}

// What is wrong with this machine: words that several processes use must need no lock of one of
// them. Asked here, since a compiler for several machines cannot know.
std::string CheckMachine() {
    if (Word().is_lock_free())
        return "";
    return "This machine changes no 32-bit word without a lock, which processes cannot share: the "
           "device's object store cannot be used on it.";
}

// Brings the file into a form that can be mapped; `fresh` when it was made anew. Locked.
std::string Settle(int file, off_t size, bool& fresh) {
    Head head;
    const ssize_t got = pread(file, &head, sizeof head, 0);
    if (got < 0)
        return Failure("cannot be read");
    if (!IsBlank(head) && std::memcmp(head.magic, kStoreMagic, sizeof head.magic) != 0)
        return Refusal("was not made by this system");
    const std::string problem = CheckHead(head, size);
    if (problem.empty())
        return "";
    // Nobody has it: the exclusive mark is to be had. It stays so until it is made shared, and
    // nobody asks for it meanwhile, since the file is locked.
    if (!SetUsersMark(file, F_WRLCK))
        return Refusal(problem);
    fresh = true;
    return MakeAnew(file);
}

}  // namespace

void UnmapStore(Store* store) {
    munmap(store, sizeof(Store));
}

std::string OpenStoreFile(MappedStore& mapped, std::string (*join)(Store& store)) {
    std::string problem = CheckMachine();
    if (!problem.empty())
        return problem;
    const UniqueFd device = OpenDevice(&problem);
    if (!device.IsOpen())
        return problem;
    UniqueFd file(openat(device.Get(), kStoreName,
                         O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK, 0600));
    struct stat status {};
    problem = CheckFile(file.Get(), status);
    if (!problem.empty())
        return problem;
    const ConnectLock lock(file.Get());
    if (!lock.IsHeld())
        return BusyInWords(file.Get());
    bool fresh = false;
    if (fstat(file.Get(), &status) != 0 || status.st_nlink == 0)
        return "The device's object store was removed at this very moment: try again.";
    problem = Settle(file.Get(), status.st_size, fresh);
    if (!problem.empty())
        return problem;
    void* memory = mmap(nullptr, sizeof(Store), PROT_READ | PROT_WRITE, MAP_SHARED, file.Get(), 0);
    if (memory == MAP_FAILED)
        return Failure("cannot be mapped");
    auto* store = static_cast<Store*>(memory);
    GuardStore(memory, sizeof(Store), file.Get());
    if (fresh)
        Format(*store);
    SetUsersMark(file.Get(), F_RDLCK);
    problem = join(*store);
    if (!problem.empty()) {
        EndGuard();
        UnmapStore(store);
        return problem;
    }
    mapped = MappedStore{store, std::move(file)};
    return "";
}

}  // namespace zelto::coredll
