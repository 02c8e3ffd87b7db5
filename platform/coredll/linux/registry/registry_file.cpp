#include "platform/coredll/linux/registry/registry_file.h"

#include <cerrno>
#include <cstring>
#include <sys/stat.h>

#include "platform/coredll/linux/base/device.h"
#include "platform/coredll/linux/base/last_error.h"
#include "platform/coredll/linux/base/small_file.h"
#include "platform/coredll/linux/registry/registry_text.h"

namespace zelto::coredll {
namespace {

DWORD LoadFrom(const std::string& path, Registry& registry, std::string& problem) {
    std::string text;
    const int failed = ReadSmallFile(path, kMaxRegistryFileBytes, Links::kRefused, text);
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

// What writing fails with: 112 or 5.
DWORD WriteError(int failed) {
    return ErrorFromErrno(failed) == ERROR_DISK_FULL ? ERROR_DISK_FULL : ERROR_ACCESS_DENIED;
}

DWORD Save(const std::string& path, const Registry& registry) {
    const std::string text = FormatRegistry(registry);
    if (text.size() > kMaxRegistryFileBytes)
        return ERROR_DISK_FULL;
    const int failed = ReplaceSmallFile(path, text);
    return failed == 0 ? DWORD{ERROR_SUCCESS} : WriteError(failed);
}

bool DeviceIsMissing() {
    const std::string path = DevicePath();
    struct stat status {};
    return path.empty() || (lstat(path.c_str(), &status) != 0 && errno == ENOENT);
}

}  // namespace

DWORD LoadRegistry(Registry& registry) {
    const std::string path = DeviceFile("registry");
    if (path.empty())
        return DeviceIsMissing() ? ERROR_SUCCESS : ERROR_ACCESS_DENIED;
    std::string problem;
    return LoadFrom(path, registry, problem);
}

DWORD UpdateRegistry(const std::function<DWORD(Registry& registry, bool& changed)>& change) {
    const std::string path = DeviceFile("registry");
    if (path.empty())
        return ERROR_ACCESS_DENIED;
    const FileLock lock(path);
    if (!lock.IsHeld())
        return WriteError(errno);
    Registry registry;
    std::string problem;
    DWORD error = LoadFrom(path, registry, problem);
    bool changed = false;
    if (error == ERROR_SUCCESS)
        error = change(registry, changed);
    return error == ERROR_SUCCESS && changed ? Save(path, registry) : error;
}

std::string RegistryProblem() {
    std::string why;
    if (!CheckDevice(&why))
        return why;
    const std::string path = DeviceFile("registry");
    Registry registry;
    std::string problem;
    if (LoadFrom(path, registry, problem) == ERROR_SUCCESS)
        return "";
    return "Registry file '" + path + "', " + problem +
           ": repair it, or move it away to start anew.";
}

}  // namespace zelto::coredll
