#include "platform/coredll/linux/registry_file.h"

#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

#include "platform/coredll/linux/device.h"
#include "platform/coredll/linux/last_error.h"
#include "platform/coredll/linux/registry_text.h"
#include "platform/coredll/linux/unique_fd.h"

namespace zelto::coredll {
namespace {

// `mode` as in open(2). No link is followed, and a pipe is not waited for.
UniqueFd OpenInDevice(const std::string& path, int flags) {
    constexpr int kAlways = O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK;
    return UniqueFd(
        RetryInterrupted([&] { return open(path.c_str(), flags | kAlways, mode_t{0600}); }));
}

// 0 or an errno value.
int ReadWhole(int fd, std::string& text) {
    struct stat status {};
    if (fstat(fd, &status) != 0)
        return errno;
    if (!S_ISREG(status.st_mode))
        return EACCES;
    char buffer[16 * 1024];
    while (text.size() <= kMaxRegistryFileBytes) {
        const ssize_t got = RetryInterrupted([&] { return read(fd, buffer, sizeof buffer); });
        if (got <= 0)
            return got == 0 ? 0 : errno;
        text.append(buffer, static_cast<size_t>(got));
    }
    return 0;
}

DWORD LoadFrom(const std::string& path, Registry& registry, std::string& problem) {
    const UniqueFd file = OpenInDevice(path, O_RDONLY);
    std::string text;
    int failed = file.IsOpen() ? 0 : errno;
    if (failed == ENOENT)
        return ERROR_SUCCESS;
    if (failed == 0)
        failed = ReadWhole(file.Get(), text);
    if (failed != 0) {
        problem = std::strerror(failed);
        return ERROR_ACCESS_DENIED;
    }
    if (text.size() > kMaxRegistryFileBytes) {
        problem = "longer than 4 MiB";
        return ERROR_BADDB;
    }
    return ParseRegistry(text, registry, problem) ? ERROR_SUCCESS : ERROR_BADDB;
}

// 0 or an errno value.
int WriteAndSync(const std::string& path, const std::string& text) {
    const UniqueFd file = OpenInDevice(path, O_WRONLY | O_CREAT | O_TRUNC);
    if (!file.IsOpen())
        return errno;
    for (size_t done = 0; done < text.size();) {
        const ssize_t written = RetryInterrupted(
            [&] { return write(file.Get(), text.data() + done, text.size() - done); });
        if (written < 0)
            return errno;
        done += static_cast<size_t>(written);
    }
    return fsync(file.Get()) == 0 ? 0 : errno;
}

// Makes the new name outlive a power cut. Not every file system can; the file is whole anyway.
void SyncFolder(const std::string& folder) {
    const UniqueFd fd(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (fd.IsOpen())
        fsync(fd.Get());
}

DWORD Save(const std::string& path, const Registry& registry) {
    const std::string text = FormatRegistry(registry);
    if (text.size() > kMaxRegistryFileBytes)
        return ERROR_DISK_FULL;
    const std::string temporary = path + ".new";  // one writer at a time: a left one is replaced
    int failed = WriteAndSync(temporary, text);
    if (failed == 0 && rename(temporary.c_str(), path.c_str()) != 0)
        failed = errno;
    if (failed != 0)
        unlink(temporary.c_str());
    else
        SyncFolder(DevicePath());
    if (failed == 0)
        return ERROR_SUCCESS;
    return ErrorFromErrno(failed) == ERROR_DISK_FULL ? ERROR_DISK_FULL : ERROR_ACCESS_DENIED;
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
    const UniqueFd lock = OpenInDevice(path + ".lock", O_RDWR | O_CREAT);
    if (!lock.IsOpen() || RetryInterrupted([&] { return flock(lock.Get(), LOCK_EX); }) != 0)
        return ErrorFromErrno(errno) == ERROR_DISK_FULL ? ERROR_DISK_FULL : ERROR_ACCESS_DENIED;
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
