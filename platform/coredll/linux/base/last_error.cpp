#include "platform/coredll/linux/base/last_error.h"

#include <cerrno>

namespace {

thread_local DWORD t_last_error = ERROR_SUCCESS;

struct ErrnoEntry {
    int error_number;
    DWORD error;
};

constexpr ErrnoEntry kErrnoTable[] = {
    {0, ERROR_SUCCESS},
    {EPERM, ERROR_ACCESS_DENIED},
    {ENOENT, ERROR_FILE_NOT_FOUND},
    {EBADF, ERROR_INVALID_HANDLE},
    {EAGAIN, ERROR_NOT_ENOUGH_MEMORY},
    {ENOMEM, ERROR_NOT_ENOUGH_MEMORY},
    {EACCES, ERROR_ACCESS_DENIED},
    {EBUSY, ERROR_SHARING_VIOLATION},
    {EEXIST, ERROR_ALREADY_EXISTS},
    {EXDEV, ERROR_NOT_SAME_DEVICE},
    {ENOTDIR, ERROR_PATH_NOT_FOUND},
    {EISDIR, ERROR_ACCESS_DENIED},
    {EINVAL, ERROR_INVALID_PARAMETER},
    {ENFILE, ERROR_TOO_MANY_OPEN_FILES},
    {EMFILE, ERROR_TOO_MANY_OPEN_FILES},
    {ETXTBSY, ERROR_SHARING_VIOLATION},
    {EFBIG, ERROR_DISK_FULL},
    {ENOSPC, ERROR_DISK_FULL},
    {EDQUOT, ERROR_DISK_FULL},
    {EROFS, ERROR_WRITE_PROTECT},
    {ENAMETOOLONG, ERROR_FILENAME_EXCED_RANGE},
    {ELOOP, ERROR_PATH_NOT_FOUND},
    {ENOTEMPTY, ERROR_DIR_NOT_EMPTY},
    {ENOEXEC, ERROR_BAD_EXE_FORMAT},
};

}  // namespace

DWORD GetLastError() {
    return t_last_error;
}

void SetLastError(DWORD error) {
    t_last_error = error;
}

namespace zelto::coredll {

DWORD ErrorFromErrno(int error_number) {
    for (const ErrnoEntry& entry : kErrnoTable) {
        if (entry.error_number == error_number)
            return entry.error;
    }
    return ERROR_GEN_FAILURE;
}

}  // namespace zelto::coredll
