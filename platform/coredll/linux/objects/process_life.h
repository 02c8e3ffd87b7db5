// Whether another process still lives: told by its process id together with its start time, so
// that a reused id is not taken for the old process. A killed process counts as gone at once, also
// while its parent has not asked for its result yet.

#ifndef ZELTO_PLATFORM_COREDLL_LINUX_OBJECTS_PROCESS_LIFE_H
#define ZELTO_PLATFORM_COREDLL_LINUX_OBJECTS_PROCESS_LIFE_H

#include <cstdint>
#include <optional>
#include <string>

namespace zelto::coredll {

// Clock ticks between the host's boot and the start of the process; nothing when there is no such
// process or it has ended.
std::optional<uint64_t> ProcessStartTime(uint32_t pid);

// Whether it was stopped (by a signal, or for a debugger) and does not go on by itself.
bool ProcessIsStopped(uint32_t pid);

// Watches processes by `key`, a small number the caller gives each (below kMaxWatched). The first
// question about a (key, pid, start) triple opens a descriptor where the host can, and later ones
// cost one system call. Safe from any thread.
constexpr uint32_t kMaxWatched = 64;
bool ProcessLives(uint32_t key, uint32_t pid, uint64_t start_time);

// Closes all descriptors.
void StopWatchingProcesses();

// Number of the process-id namespace that this process lives in: process ids of another one mean
// other processes. 0 when the host does not say.
uint64_t HostPidNamespace();

// Text that differs from one boot of the host to the next; "" when the host does not say.
std::string HostBootId();

}  // namespace zelto::coredll

#endif
