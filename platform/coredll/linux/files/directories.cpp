// Making and removing folders.

#include <sys/stat.h>

#include "platform/coredll/api/files.h"
#include "platform/coredll/linux/base/last_error.h"
#include "platform/coredll/linux/base/paths.h"
#include "platform/coredll/linux/base/unique_fd.h"

using namespace zelto::coredll;

BOOL CreateDirectoryW(LPCWSTR name, SECURITY_ATTRIBUTES* /*security*/) {
    std::string path;
    const DWORD error = HostPath(name, path);
    if (error != ERROR_SUCCESS)
        return Fail(error);
    if (mkdir(path.c_str(), 0777) == 0)
        return TRUE;
    return Fail(errno == ENOENT ? DWORD{ERROR_PATH_NOT_FOUND} : ErrorFromErrno(errno));
}

BOOL RemoveDirectoryW(LPCWSTR name) {
    std::string path;
    const DWORD error = HostPath(name, path);
    if (error != ERROR_SUCCESS)
        return Fail(error);
    if (rmdir(path.c_str()) == 0)
        return TRUE;
    const int failed = errno;
    struct stat status {};
    if (failed == ENOTDIR && lstat(path.c_str(), &status) == 0)
        return Fail(ERROR_ACCESS_DENIED);  // a file
    return Fail(failed == EEXIST ? DWORD{ERROR_DIR_NOT_EMPTY} : PathError(failed, path));
}
