#include "platform/coredll/linux/files/file_copy.h"

#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <memory>
#include <sys/stat.h>

#include "platform/coredll/linux/base/paths.h"
#include "platform/coredll/linux/base/unique_fd.h"

namespace zelto::coredll {
namespace {

constexpr size_t kBufferBytes = size_t{128} * 1024;
constexpr mode_t kPermissionBits = 0777;

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
    std::string temporary = (folder == "/" ? "" : folder) + "/.zelto-copy-XXXXXX";
    const UniqueFd copy(mkostemp(temporary.data(), O_CLOEXEC));
    if (!copy.IsOpen())
        return errno;
    int error = 0;
    if (!CopyBytes(source, copy.Get()) || !CopyStatus(source, copy.Get()))
        error = errno;
    if (error == 0)
        error = RenameFile(temporary, target, existing);
    if (error != 0)
        unlink(temporary.c_str());
    return error;
}

}  // namespace zelto::coredll
