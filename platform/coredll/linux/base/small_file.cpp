#include "platform/coredll/linux/base/small_file.h"

#include <cstdio>
#include <fcntl.h>
#include <sys/file.h>

#include "platform/coredll/linux/base/monotonic.h"

namespace zelto::coredll {
namespace {

constexpr useconds_t kLockPause = 500;  // between attempts to lock

// A pipe in the file's place is not waited for.
UniqueFd Open(const UniqueFd& folder, const std::string& name, int flags) {
    constexpr int kAlways = O_CLOEXEC | O_NONBLOCK | O_NOCTTY | O_NOFOLLOW;
    constexpr mode_t kPrivate = 0600;
    return UniqueFd(RetryInterrupted(
        [&] { return openat(folder.Get(), name.c_str(), flags | kAlways, kPrivate); }));
}

int WriteAndSync(const UniqueFd& folder, const std::string& name, std::string_view text) {
    const UniqueFd file = Open(folder, name, O_WRONLY | O_CREAT | O_TRUNC);
    if (!file.IsOpen())
        return errno;
    while (!text.empty()) {
        const ssize_t written =
            RetryInterrupted([&] { return write(file.Get(), text.data(), text.size()); });
        if (written < 0)
            return errno;
        text.remove_prefix(static_cast<size_t>(written));
    }
    return fsync(file.Get()) == 0 ? 0 : errno;
}

}  // namespace

int OpenSmallFile(const UniqueFd& folder, const char* name, UniqueFd& file, struct stat& status) {
    file = Open(folder, name, O_RDONLY);
    if (!file.IsOpen() || fstat(file.Get(), &status) != 0)
        return errno;
    return S_ISREG(status.st_mode) ? 0 : EACCES;
}

int ReadSmallFile(const UniqueFd& file, size_t limit, std::string& text) {
    text.clear();
    char buffer[4096];
    while (text.size() <= limit) {
        const ssize_t got =
            RetryInterrupted([&] { return read(file.Get(), buffer, sizeof(buffer)); });
        if (got <= 0)
            return got == 0 ? 0 : errno;
        text.append(buffer, static_cast<size_t>(got));
    }
    return EFBIG;
}

int ReplaceSmallFile(const UniqueFd& folder, const char* name, std::string_view text) {
    const std::string fresh = std::string(name) + ".new";  // one writer at a time: a left one goes
    int failed = WriteAndSync(folder, fresh, text);
    if (failed == 0 && renameat(folder.Get(), fresh.c_str(), folder.Get(), name) != 0)
        failed = errno;
    // The new name outlives a power cut where the file system can; the file is whole anyway.
    if (failed == 0)
        fsync(folder.Get());
    else
        unlinkat(folder.Get(), fresh.c_str(), 0);
    return failed;
}

FileLock::FileLock(const UniqueFd& folder, const char* name, int64_t patience)
    : file_(Open(folder, std::string(name) + ".lock", O_RDWR | O_CREAT)) {
    const int64_t end = MonotonicNanoseconds() + patience;
    while (IsHeld() && flock(file_.Get(), LOCK_EX | LOCK_NB) != 0) {
        const bool may_come = errno == EWOULDBLOCK || errno == EINTR;
        if (may_come && MonotonicNanoseconds() < end) {
            usleep(kLockPause);
            continue;
        }
        errno = may_come ? EBUSY : errno;
        file_.Reset(-1);
    }
}

}  // namespace zelto::coredll
