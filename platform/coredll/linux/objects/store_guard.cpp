#include "platform/coredll/linux/objects/store_guard.h"

#include <atomic>
#include <cstdint>
#include <signal.h>
#include <sys/mman.h>
#include <sys/stat.h>

#include "platform/coredll/linux/base/monotonic.h"

namespace zelto::coredll {
namespace {

constexpr int64_t kBetweenLooks = 100'000'000;  // ns

// Read in a signal handler and by every thread; lock-free on all targets. A guard is set up before
// the store is handed to other threads, so no order is needed beyond that of the hand-over.
std::atomic<uintptr_t> g_memory{0};
std::atomic<size_t> g_size{0};
std::atomic<int> g_file{-1};
std::atomic<bool> g_gone{false};
std::atomic<uint64_t> g_next_look{0};

struct sigaction g_former {};

void PassOn(int signal, siginfo_t* info, void* context) {
    if ((g_former.sa_flags & SA_SIGINFO) != 0) {
        g_former.sa_sigaction(signal, info, context);
    } else if (g_former.sa_handler == SIG_DFL || g_former.sa_handler == SIG_IGN) {
        // The fault happens again when the handler returns, and then ends the process.
        sigaction(SIGBUS, &g_former, nullptr);
    } else {
        g_former.sa_handler(signal);
    }
}

void OnBusError(int signal, siginfo_t* info, void* context) {
    const uintptr_t memory = g_memory.load(std::memory_order_relaxed);
    const size_t size = g_size.load(std::memory_order_relaxed);
    const uintptr_t place = reinterpret_cast<uintptr_t>(info->si_addr) - memory;
    if (memory == 0 || place >= size) {
        PassOn(signal, info, context);
        return;
    }
    g_gone.store(true);
    const void* empty = mmap(reinterpret_cast<void*>(memory), size, PROT_READ | PROT_WRITE,
                             MAP_PRIVATE | MAP_ANONYMOUS | MAP_FIXED, -1, 0);
    if (empty == MAP_FAILED)
        PassOn(signal, info, context);
}

void InstallHandlerOnce() {
    static const bool installed = [] {
        struct sigaction action {};
        action.sa_sigaction = OnBusError;
        action.sa_flags = SA_SIGINFO | SA_NODEFER | SA_ONSTACK;
        sigemptyset(&action.sa_mask);
        return sigaction(SIGBUS, &action, &g_former) == 0;
    }();
    static_cast<void>(installed);
}

bool FileIsWhole() {
    struct stat status {};
    return fstat(g_file.load(std::memory_order_relaxed), &status) == 0 && status.st_nlink != 0 &&
           static_cast<uint64_t>(status.st_size) >= g_size.load(std::memory_order_relaxed);
}

}  // namespace

void GuardStore(void* memory, size_t size, int file) {
    g_gone.store(false);
    g_file.store(file);
    g_size.store(size);
    g_memory.store(reinterpret_cast<uintptr_t>(memory));
    InstallHandlerOnce();
}

void EndGuard() {
    g_memory.store(0);
    g_file.store(-1);
    g_gone.store(false);
}

bool StoreIsGone() {
    if (g_gone.load(std::memory_order_relaxed))
        return true;
    if (g_memory.load(std::memory_order_relaxed) == 0)
        return false;
    const auto now = static_cast<uint64_t>(CoarseNanoseconds());
    if (now < g_next_look.load(std::memory_order_relaxed))
        return false;
    g_next_look.store(now + kBetweenLooks, std::memory_order_relaxed);
    if (!FileIsWhole())
        g_gone.store(true);
    return g_gone.load();
}

}  // namespace zelto::coredll
