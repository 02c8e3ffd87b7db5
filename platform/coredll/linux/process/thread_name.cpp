// RaiseException: the exception that names a thread.

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <string>
#include <unistd.h>

#include "platform/coredll/api/threads.h"
#include "platform/coredll/linux/base/unique_fd.h"

namespace {

constexpr DWORD kThreadNaming = 0x406D1388;
constexpr uintptr_t kNamingRecord = 0x1000;
constexpr DWORD kThisThread = 0xFFFFFFFF;
constexpr size_t kHostNameBytes = 15;  // longer names are cut

// Through the process's own thread list, where an id that is nobody's is no file.
void NameThread(DWORD id, const char* name) {
    const DWORD thread = id == kThisThread ? static_cast<DWORD>(gettid()) : id;
    const std::string path = "/proc/self/task/" + std::to_string(thread) + "/comm";
    const zelto::coredll::UniqueFd file(open(path.c_str(), O_WRONLY | O_CLOEXEC));
    if (!file.IsOpen())
        return;
    const ssize_t written = write(file.Get(), name, strnlen(name, kHostNameBytes));
    static_cast<void>(written);  // a name is a courtesy to whoever debugs
}

}  // namespace

void RaiseException(DWORD code, DWORD /*flags*/, DWORD count, const uintptr_t* arguments) {
    if (code != kThreadNaming) {
        std::fprintf(stderr, "Exception 0x%08X was raised and nobody handles it.\n", code);
        std::abort();
    }
    if (count < 3 || arguments == nullptr || arguments[0] != kNamingRecord)
        return;
    const auto* name = reinterpret_cast<const char*>(arguments[1]);
    if (name != nullptr)
        NameThread(static_cast<DWORD>(arguments[2]), name);
}
