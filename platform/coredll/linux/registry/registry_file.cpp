#include "platform/coredll/linux/registry/registry_file.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>

#include "platform/coredll/linux/base/device.h"
#include "platform/coredll/linux/base/last_error.h"
#include "platform/coredll/linux/base/small_file.h"
#include "platform/coredll/linux/objects/registry_changes.h"
#include "platform/coredll/linux/registry/registry_text.h"

namespace zelto::coredll {
namespace {

constexpr const char* kName = "registry";

DWORD LoadFrom(const UniqueFd& device, Registry& registry, std::string& problem,
               RegistrySource& source) {
    std::string text;
    int failed = OpenSmallFile(device, kName, source.file, source.status);
    if (failed == 0)
        failed = ReadSmallFile(source.file, kMaxRegistryFileBytes, text);
    if (failed == ENOENT)
        return ERROR_SUCCESS;
    if (failed == EFBIG) {
        problem = "longer than 4 MiB";
        return ERROR_BADDB;
    }
    if (failed != 0) {
        problem = std::strerror(failed);
        return ERROR_ACCESS_DENIED;
    }
    return ParseRegistry(text, registry, problem) ? ERROR_SUCCESS : ERROR_BADDB;
}

// What writing fails with: 112, 170 or 5.
DWORD WriteError(int failed) {
    if (failed == EBUSY)
        return ERROR_BUSY;
    return ErrorFromErrno(failed) == ERROR_DISK_FULL ? ERROR_DISK_FULL : ERROR_ACCESS_DENIED;
}

DWORD Save(const UniqueFd& device, const Registry& registry) {
    const std::string text = FormatRegistry(registry);
    if (text.size() > kMaxRegistryFileBytes)
        return ERROR_DISK_FULL;
    const int failed = ReplaceSmallFile(device, kName, text);
    CountRegistryChange(device);
    return failed == 0 ? DWORD{ERROR_SUCCESS} : WriteError(failed);
}

}  // namespace

DWORD LoadRegistry(Registry& registry, RegistrySource& source) {
    const UniqueFd device = OpenDevice(nullptr);
    if (!device.IsOpen())
        return errno == ENOENT || DevicePath().empty() ? ERROR_SUCCESS : ERROR_ACCESS_DENIED;
    std::string problem;
    return LoadFrom(device, registry, problem, source);
}

bool IsRegistryFile(const struct stat& status) {
    const UniqueFd device = OpenDevice(nullptr);
    struct stat now {};
    return device.IsOpen() && fstatat(device.Get(), kName, &now, AT_SYMLINK_NOFOLLOW) == 0 &&
           now.st_dev == status.st_dev && now.st_ino == status.st_ino;
}

DWORD UpdateRegistry(const std::function<DWORD(Registry& registry, bool& changed)>& change) {
    const UniqueFd device = OpenDevice(nullptr);
    if (!device.IsOpen())
        return ERROR_ACCESS_DENIED;
    const FileLock lock(device, kName);
    if (!lock.IsHeld())
        return WriteError(errno);
    Registry registry;
    std::string problem;
    RegistrySource source;
    DWORD error = LoadFrom(device, registry, problem, source);
    bool changed = false;
    if (error == ERROR_SUCCESS)
        error = change(registry, changed);
    return error == ERROR_SUCCESS && changed ? Save(device, registry) : error;
}

std::string RegistryProblem() {
    std::string why;
    const UniqueFd device = OpenDevice(&why);
    if (!device.IsOpen())
        return why;
    Registry registry;
    std::string problem;
    RegistrySource source;
    if (LoadFrom(device, registry, problem, source) == ERROR_SUCCESS)
        return "";
    return "Registry file '" + PrintablePath(DevicePath() + "/" + kName) + "', " + problem +
           ": repair it, or move it away to start anew.";
}

}  // namespace zelto::coredll
