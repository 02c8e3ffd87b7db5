#include "platform/coredll/linux/files/open_file.h"

#include <fcntl.h>
#include <sys/stat.h>

#include "platform/coredll/linux/base/last_error.h"
#include "platform/coredll/linux/base/paths.h"
#include "platform/coredll/linux/files/file_sharing.h"
#include "platform/coredll/linux/files/file_status.h"
#include "platform/coredll/linux/files/folded_name.h"

namespace zelto::coredll {
namespace {

constexpr int kTries = 16;        // while others make and delete the file
constexpr DWORD kTryAgain = ~0u;  // no error number

bool Truncates(const OpenRequest& request) {
    return request.disposition == CREATE_ALWAYS || request.disposition == TRUNCATE_EXISTING;
}

bool Writes(const OpenRequest& request) {
    return (request.access & GENERIC_WRITE) != 0 || Truncates(request);
}

// Truncating counts as writing. An open that neither reads nor writes is in nobody's way.
FileUse UseOf(const OpenRequest& request) {
    FileUse use{};
    use.reads = (request.access & GENERIC_READ) != 0;
    use.writes = Writes(request);
    if (use.reads || use.writes) {
        use.denies_read = (request.share & FILE_SHARE_READ) == 0;
        use.denies_write = (request.share & FILE_SHARE_WRITE) == 0;
    }
    return use;
}

// Open flags but for the disposition. Never waits for the other end of a pipe, and never
// truncates: whether others use the file is not known yet.
constexpr int kAlways = O_CLOEXEC | O_NOCTTY | O_NONBLOCK;

int OpenExisting(std::string& path, bool writes) {
    const int flags = kAlways | (writes ? O_RDWR : O_RDONLY);
    int fd = WithFolded(path, [flags](const char* name) {
        return RetryInterrupted([&] { return open(name, flags); });
    });
    // Claims want a descriptor that reads. A file that may only be written goes without.
    if (fd < 0 && writes && errno == EACCES)
        fd = RetryInterrupted([&] { return open(path.c_str(), kAlways | O_WRONLY); });
    return fd;
}

int CreateNew(const std::string& path, DWORD attributes) {
    const mode_t mode = (attributes & FILE_ATTRIBUTE_READONLY) != 0 ? 0444 : 0666;
    const int flags = kAlways | O_RDWR | O_CREAT | O_EXCL;
    return RetryInterrupted([&] { return open(path.c_str(), flags, mode); });
}

DWORD Open(std::string& path, const OpenRequest& request, OpenedFile& file) {
    const bool creates = request.disposition == CREATE_NEW ||
                         request.disposition == CREATE_ALWAYS || request.disposition == OPEN_ALWAYS;
    file.existed = false;
    if (request.disposition == CREATE_NEW) {
        FindFolded(path);
    } else {
        file.fd.Reset(OpenExisting(path, Writes(request)));
        file.existed = file.fd.IsOpen();
        if (!file.existed && !(creates && errno == ENOENT))
            return PathError(errno, path);
    }
    if (!file.existed)
        file.fd.Reset(CreateNew(path, request.attributes));
    if (file.fd.IsOpen())
        return ERROR_SUCCESS;
    if (errno != EEXIST)
        return PathError(errno, path);
    return request.disposition == CREATE_NEW ? DWORD{ERROR_FILE_EXISTS} : kTryAgain;
}

// A new descriptor does not wait; reading from a pipe or a terminal shall.
void LetWait(int fd) {
    const int flags = fcntl(fd, F_GETFL);
    if (flags >= 0)
        fcntl(fd, F_SETFL, flags & ~O_NONBLOCK);
}

DWORD ClaimAndTruncate(const OpenRequest& request, const OpenedFile& file) {
    const int fd = file.fd.Get();
    {
        const SharingGate gate(fd);
        struct stat status {};
        if (fstat(fd, &status) != 0)
            return ErrorFromErrno(errno);
        if (status.st_nlink == 0)
            return kTryAgain;  // deleted or replaced between opening and claiming
        if (!ClaimUse(fd, UseOf(request)))
            return ERROR_SHARING_VIOLATION;
    }
    if (file.existed && Truncates(request) &&
        RetryInterrupted([fd] { return ftruncate(fd, 0); }) != 0)
        return ErrorFromErrno(errno);
    return ERROR_SUCCESS;
}

DWORD OpenAndClaim(std::string& path, const OpenRequest& request, OpenedFile& file) {
    const DWORD error = Open(path, request, file);
    if (error != ERROR_SUCCESS)
        return error;
    struct stat status {};
    if (fstat(file.fd.Get(), &status) != 0)
        return ErrorFromErrno(errno);
    if (S_ISDIR(status.st_mode))
        return ERROR_ACCESS_DENIED;
    file.is_regular = S_ISREG(status.st_mode);
    if (file.existed && IsReadOnlyMode(status.st_mode) && Writes(request))
        return ERROR_ACCESS_DENIED;  // also for a user whom the host would let
    LetWait(file.fd.Get());
    return file.is_regular ? ClaimAndTruncate(request, file) : DWORD{ERROR_SUCCESS};
}

}  // namespace

DWORD OpenHostFile(std::string path, OpenRequest request, OpenedFile& file) {
    if (request.disposition == (OPEN_ALWAYS | CREATE_ALWAYS))
        request.disposition = TRUNCATE_EXISTING;
    if (request.disposition < CREATE_NEW || request.disposition > TRUNCATE_EXISTING)
        return ERROR_INVALID_PARAMETER;
    if (request.disposition == TRUNCATE_EXISTING && (request.access & GENERIC_WRITE) == 0)
        return ERROR_INVALID_PARAMETER;
    DWORD error = kTryAgain;
    for (int i = 0; i < kTries && error == kTryAgain; ++i)
        error = OpenAndClaim(path, request, file);
    if (error == kTryAgain)
        error = ERROR_FILE_NOT_FOUND;  // a link to nowhere, or a name that never stays
    if (error != ERROR_SUCCESS)
        file.fd.Reset(-1);
    return error;
}

}  // namespace zelto::coredll
