#include "platform/coredll/linux/files/file_copy.h"

#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <memory>
#include <string_view>
#include <sys/file.h>
#include <sys/stat.h>

#include "platform/coredll/linux/base/paths.h"
#include "platform/coredll/linux/base/unique_fd.h"

namespace zelto::coredll {
namespace {

constexpr size_t kBufferBytes = size_t{128} * 1024;
constexpr mode_t kPermissionBits = 0777;
constexpr char kCopyName[] = ".zelto-copy-";  // and six characters that nobody else has

bool WriteAll(int fd, const char* bytes, size_t size) {
    while (size > 0) {
        const ssize_t written = RetryInterrupted([&] { return write(fd, bytes, size); });
        if (written < 0)
            return false;
        bytes += written;
        size -= static_cast<size_t>(written);
    }
    return true;
}

bool CopyBytes(int source, int target) {
    const auto buffer = std::make_unique<char[]>(kBufferBytes);
    for (;;) {
        const ssize_t got =
            RetryInterrupted([&] { return read(source, buffer.get(), kBufferBytes); });
        if (got <= 0)
            return got == 0;
        if (!WriteAll(target, buffer.get(), static_cast<size_t>(got)))
            return false;
    }
}

bool CopyStatus(int source, int target) {
    struct stat status {};
    if (fstat(source, &status) != 0 || fchmod(target, status.st_mode & kPermissionBits) != 0)
        return false;
    const timespec times[] = {status.st_atim, status.st_mtim};
    futimens(target, times);  // some file systems keep no times
    return true;
}

// For file systems that cannot rename and keep in one step.
int LinkAndUnlink(const std::string& source, const std::string& target) {
    struct stat status {};
    if (lstat(target.c_str(), &status) == 0)
        return EEXIST;
    if (link(source.c_str(), target.c_str()) == 0)
        return unlink(source.c_str()) == 0 ? 0 : errno;
    // Folders and file systems without links: the test above has to do.
    if (errno != EPERM && errno != EOPNOTSUPP)
        return errno;
    return rename(source.c_str(), target.c_str()) == 0 ? 0 : errno;
}

// Removes what copies that were killed left in the folder. One that is being written is locked.
void RemoveDeadCopies(const std::string& folder) {
    const UniqueFolder entries(opendir(folder.c_str()));
    while (const dirent* entry = entries == nullptr ? nullptr : readdir(entries.get())) {
        if (!std::string_view(entry->d_name).starts_with(kCopyName))
            continue;
        const int place = dirfd(entries.get());
        constexpr int kFlags = O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC;
        const UniqueFd copy(openat(place, entry->d_name, kFlags));
        if (copy.IsOpen() && flock(copy.Get(), LOCK_EX | LOCK_NB) == 0)
            unlinkat(place, entry->d_name, 0);
    }
}

// A new file under a name of its own, locked. One that another copy took for dead is made again.
UniqueFd MakeCopy(const std::string& folder, std::string& name) {
    for (;;) {
        name = folder + "/" + kCopyName + "XXXXXX";
        UniqueFd copy(mkostemp(name.data(), O_CLOEXEC));
        if (!copy.IsOpen())
            return copy;
        flock(copy.Get(), LOCK_EX);
        struct stat status {};
        if (fstat(copy.Get(), &status) != 0 || status.st_nlink > 0)
            return copy;
    }
}

// Has the disk take what was written; true as well where there is nothing to be asked.
bool Sync(int fd) {
    return fsync(fd) == 0 || errno == EINVAL || errno == EROFS;
}

void SyncFolder(const std::string& folder) {
    const UniqueFd place(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (place.IsOpen())
        Sync(place.Get());
}

}  // namespace

int RenameFile(const std::string& source, const std::string& target, Existing existing) {
    if (existing == Existing::kReplace)
        return rename(source.c_str(), target.c_str()) == 0 ? 0 : errno;
    if (renameat2(AT_FDCWD, source.c_str(), AT_FDCWD, target.c_str(), RENAME_NOREPLACE) == 0)
        return 0;
    return errno == EINVAL || errno == ENOSYS ? LinkAndUnlink(source, target) : errno;
}

int CopyToTarget(int source, const std::string& target, Existing existing) {
    const std::string folder = ParentFolder(target);
    RemoveDeadCopies(folder);
    std::string temporary;
    const UniqueFd copy = MakeCopy(folder == "/" ? "" : folder, temporary);
    if (!copy.IsOpen())
        return errno;
    int error = 0;
    if (!CopyBytes(source, copy.Get()) || !CopyStatus(source, copy.Get()) || !Sync(copy.Get()))
        error = errno;
    if (error == 0)
        error = RenameFile(temporary, target, existing);
    flock(copy.Get(), LOCK_UN);
    if (error != 0)
        unlink(temporary.c_str());
    else
        SyncFolder(folder);
    return error;
}

}  // namespace zelto::coredll
