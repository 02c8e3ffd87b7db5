#include "tests/soak/disk_model.h"

#include <fcntl.h>
#include <filesystem>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace zelto::soak {
namespace {

// The name that a call makes; "" for other calls.
std::string NameMade(const TracedCall& call) {
    switch (call.number) {
        case SYS_openat:
            return (call.arguments[2] & O_CREAT) != 0 ? call.Path(1, 0) : "";
        case SYS_renameat:
        case SYS_renameat2:
        case SYS_linkat:
            return call.Path(3, 2);
#ifdef SYS_open
        case SYS_open:
            return (call.arguments[1] & O_CREAT) != 0 ? call.Path(0) : "";
        case SYS_rename:
        case SYS_link:
            return call.Path(1);
#endif
        default:
            return "";
    }
}

bool Truncates(const TracedCall& call) {
#ifdef SYS_open
    if (call.number == SYS_open)
        return (call.arguments[1] & O_TRUNC) != 0;
#endif
    return call.number == SYS_openat && (call.arguments[2] & O_TRUNC) != 0;
}

std::string OpenFile(const TracedCall& call, uint64_t descriptor) {
    return "/proc/" + std::to_string(call.process) + "/fd/" + std::to_string(descriptor);
}

}  // namespace

void DiskModel::Before(const TracedCall& call) {
    const std::string name = NameMade(call);
    target_existed_ = !name.empty() && access(name.c_str(), F_OK) == 0;
}

void DiskModel::After(const TracedCall& call, int64_t result) {
    if (result < 0)
        return;
    switch (call.number) {
        case SYS_write:
        case SYS_writev:
        case SYS_pwrite64:
        case SYS_ftruncate:
        case SYS_sendfile:
            return Wrote(call, call.arguments[0]);
        case SYS_copy_file_range:
            return Wrote(call, call.arguments[2]);
        case SYS_fsync:
        case SYS_fdatasync:
            return Synced(call);
        default:
            break;
    }
    if (Truncates(call))
        Wrote(call, static_cast<uint64_t>(result));
    const std::string name = NameMade(call);
    if (!name.empty() && !target_existed_)
        unsynced_names_.insert(name);
}

bool DiskModel::Keeps(const std::string& path) const {
    struct stat status {};
    return stat(path.c_str(), &status) == 0 && !unsynced_files_.contains(status.st_ino) &&
           !unsynced_names_.contains(path);
}

void DiskModel::Wrote(const TracedCall& call, uint64_t descriptor) {
    struct stat status {};
    if (stat(OpenFile(call, descriptor).c_str(), &status) == 0 && S_ISREG(status.st_mode))
        unsynced_files_.insert(status.st_ino);
}

void DiskModel::Synced(const TracedCall& call) {
    struct stat status {};
    if (stat(OpenFile(call, call.arguments[0]).c_str(), &status) != 0)
        return;
    unsynced_files_.erase(status.st_ino);
    const std::string folder = call.OpenPath(static_cast<int64_t>(call.arguments[0]));
    std::erase_if(unsynced_names_, [&](const std::string& name) {
        return S_ISDIR(status.st_mode) && std::filesystem::path(name).parent_path() == folder;
    });
}

}  // namespace zelto::soak
