#include "platform/coredll/linux/base/small_file.h"

#include <cstdio>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

namespace zelto::coredll {
namespace {

// A pipe in the file's place is not waited for.
UniqueFd Open(const std::string& path, int flags) {
    constexpr int kAlways = O_CLOEXEC | O_NONBLOCK | O_NOCTTY;
    constexpr mode_t kPrivate = 0600;
    return UniqueFd(
        RetryInterrupted([&] { return open(path.c_str(), flags | kAlways, kPrivate); }));
}

int WriteAndSync(const std::string& path, std::string_view text) {
    const UniqueFd file = Open(path, O_WRONLY | O_CREAT | O_TRUNC | O_NOFOLLOW);
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

// Makes the new name outlive a power cut. Not every file system can; the file is whole anyway.
void SyncFolderOf(const std::string& path) {
    const UniqueFd folder = Open(path.substr(0, path.rfind('/') + 1), O_RDONLY | O_DIRECTORY);
    if (folder.IsOpen())
        fsync(folder.Get());
}

}  // namespace

int ReadSmallFile(const std::string& path, size_t limit, Links links, std::string& text) {
    const UniqueFd file = Open(path, O_RDONLY | (links == Links::kRefused ? O_NOFOLLOW : 0));
    struct stat status {};
    if (!file.IsOpen() || fstat(file.Get(), &status) != 0)
        return errno;
    if (!S_ISREG(status.st_mode))
        return EACCES;
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

int ReplaceSmallFile(const std::string& path, std::string_view text) {
    const std::string fresh = path + ".new";  // one writer at a time: a left one is replaced
    int failed = WriteAndSync(fresh, text);
    if (failed == 0 && std::rename(fresh.c_str(), path.c_str()) != 0)
        failed = errno;
    if (failed == 0)
        SyncFolderOf(path);
    else
        unlink(fresh.c_str());
    return failed;
}

FileLock::FileLock(const std::string& path)
    : file_(Open(path + ".lock", O_RDWR | O_CREAT | O_NOFOLLOW)) {
    if (IsHeld() && RetryInterrupted([&] { return flock(file_.Get(), LOCK_EX); }) != 0)
        file_.Reset(-1);
}

}  // namespace zelto::coredll
