#include "platform/coredll/linux/objects/process_life.h"

#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <mutex>
#include <poll.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include "platform/coredll/linux/base/unique_fd.h"

namespace zelto::coredll {
namespace {

struct Watched {
    uint32_t pid = 0;
    uint64_t start_time = 0;
    int descriptor = -1;  // a plain number, so that the table is there while globals are destroyed
};

std::mutex g_mutex;
Watched g_watched[kMaxWatched];  // guarded by g_mutex

// Reads a small file of the host whole; "" when it cannot be read.
std::string ReadHostFile(const char* path) {
    const UniqueFd file(open(path, O_RDONLY | O_CLOEXEC));
    char text[1024];
    const ssize_t size = file.IsOpen() ? read(file.Get(), text, sizeof text) : 0;
    return size > 0 ? std::string(text, static_cast<size_t>(size)) : "";
}

// What the host says of a process; false when there is none of that number, or it has ended.
// The main thread's file says the same as the process's own. User-mode emulators make up the
// latter, with another start time, for the process that reads about itself.
bool ReadHostStatus(uint32_t pid, char& state, unsigned long long& start) {
    char path[48];
    std::snprintf(path, sizeof path, "/proc/%u/task/%u/stat", pid, pid);
    const std::string text = ReadHostFile(path);
    // The name in brackets may hold anything; state is the first field after it, the start time
    // the twentieth (proc(5): fields 3 and 22).
    const size_t name_end = text.rfind(')');
    if (name_end == std::string::npos)
        return false;
    return std::sscanf(text.c_str() + name_end + 1,
                       " %c %*s %*s %*s %*s %*s %*s %*s %*s %*s %*s %*s %*s %*s %*s %*s %*s %*s "
                       "%*s %llu",
                       &state, &start) == 2 &&
           state != 'Z' && state != 'X' && state != 'x';
}

bool SameProcess(uint32_t pid, uint64_t start_time) {
    const std::optional<uint64_t> now = ProcessStartTime(pid);
    return now.has_value() && *now == start_time;
}

UniqueFd OpenProcess(uint32_t pid) {
#ifdef SYS_pidfd_open
    return UniqueFd(static_cast<int>(syscall(SYS_pidfd_open, pid, 0)));
#else
    static_cast<void>(pid);
    return {};
#endif
}

bool HasEnded(int descriptor) {
    pollfd question{descriptor, POLLIN, 0};
    return poll(&question, 1, 0) > 0;
}

void Forget(Watched& watched) {
    UniqueFd(watched.descriptor).Reset(-1);
    watched = Watched{};
}

}  // namespace

std::optional<uint64_t> ProcessStartTime(uint32_t pid) {
    char state = 0;
    unsigned long long start = 0;
    return ReadHostStatus(pid, state, start) ? std::optional<uint64_t>(start) : std::nullopt;
}

bool ProcessIsStopped(uint32_t pid) {
    char state = 0;
    unsigned long long start = 0;
    return ReadHostStatus(pid, state, start) && (state == 'T' || state == 't');
}

bool ProcessLives(uint32_t key, uint32_t pid, uint64_t start_time) {
    const std::lock_guard lock(g_mutex);
    Watched& watched = g_watched[key];
    if (watched.descriptor >= 0 && watched.pid == pid && watched.start_time == start_time)
        return !HasEnded(watched.descriptor);
    Forget(watched);
    UniqueFd descriptor = OpenProcess(pid);
    // The start time is read after the descriptor is there: the two are then of one process.
    if (!SameProcess(pid, start_time))
        return false;
    watched = Watched{pid, start_time, descriptor.Release()};
    return true;
}

void StopWatchingProcesses() {
    const std::lock_guard lock(g_mutex);
    for (Watched& watched : g_watched)
        Forget(watched);
}

uint64_t HostPidNamespace() {
    struct stat status {};
    return stat("/proc/self/ns/pid", &status) == 0 ? uint64_t{status.st_ino} : 0;
}

std::string HostBootId() {
    std::string id = ReadHostFile("/proc/sys/kernel/random/boot_id");
    id.resize(std::strcspn(id.c_str(), "\n"));
    return id;
}

}  // namespace zelto::coredll
