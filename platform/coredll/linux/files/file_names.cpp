// Calls that work on names: delete, copy, move, make a folder.

#include <cstdlib>
#include <fcntl.h>
#include <limits.h>
#include <optional>
#include <sys/stat.h>

#include "platform/coredll/api/files.h"
#include "platform/coredll/linux/base/last_error.h"
#include "platform/coredll/linux/base/paths.h"
#include "platform/coredll/linux/files/file_copy.h"
#include "platform/coredll/linux/files/file_sharing.h"
#include "platform/coredll/linux/files/file_status.h"
#include "platform/coredll/linux/files/folded_name.h"
#include "platform/coredll/linux/files/open_file.h"

namespace zelto::coredll {
namespace {

// A file's name held still: while this lives, nobody opens it with CreateFileW without waiting for
// the gate. Only regular files can be in use.
class QuietFile {
  public:
    explicit QuietFile(const std::string& path)
        : fd_(RetryInterrupted([&path] {
              return open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC | O_NOFOLLOW);
          })) {
        if (fd_.IsOpen())
            gate_.emplace(fd_.Get());
    }
    bool InUse() const { return fd_.IsOpen() && IsInUse(fd_.Get()); }

  private:
    UniqueFd fd_;
    std::optional<SharingGate> gate_;
};

DWORD HostPaths(LPCWSTR source, LPCWSTR target, std::string& source_path,
                std::string& target_path) {
    const DWORD error = HostPath(source, source_path);
    return error != ERROR_SUCCESS ? error : HostPath(target, target_path);
}

int ReadStatus(std::string& path, struct stat& status) {
    return WithFolded(path, [&](const char* name) { return lstat(name, &status); });
}

DWORD DeleteHostFile(std::string path) {
    struct stat status {};
    if (ReadStatus(path, status) != 0)
        return PathError(errno, path);
    if (S_ISDIR(status.st_mode) || IsReadOnlyMode(status.st_mode))
        return ERROR_ACCESS_DENIED;
    std::optional<QuietFile> quiet;
    if (S_ISREG(status.st_mode) && quiet.emplace(path).InUse())
        return ERROR_SHARING_VIOLATION;
    return unlink(path.c_str()) == 0 ? DWORD{ERROR_SUCCESS} : PathError(errno, path);
}

// The name that a link stands for, so that a copy replaces the file and not the link.
std::string ResolveLinks(std::string path) {
    char* resolved = realpath(path.c_str(), nullptr);
    if (resolved == nullptr && errno == ENOENT && FindFolded(path))
        resolved = realpath(path.c_str(), nullptr);
    std::string result = resolved == nullptr ? path : resolved;
    std::free(resolved);
    return result;
}

DWORD OpenCopySource(const std::string& path, DWORD share, OpenedFile& file) {
    const DWORD error = OpenHostFile(path, {GENERIC_READ, share, OPEN_EXISTING, 0}, file);
    if (error != ERROR_SUCCESS)
        return error;
    return file.is_regular ? ERROR_SUCCESS : ERROR_ACCESS_DENIED;  // a pipe may have no end
}

// Keeps others from a file that is about to be replaced: who opened it now would write into
// nothing. A file that is not there needs no holding.
DWORD HoldCopyTarget(const std::string& path, bool fail_if_exists, OpenedFile& held) {
    struct stat status {};
    if (stat(path.c_str(), &status) != 0)
        return errno == ENOENT ? DWORD{ERROR_SUCCESS} : PathError(errno, path);
    if (fail_if_exists)
        return ERROR_FILE_EXISTS;
    const bool hidden = (FileAttributes(status.st_mode, path) & FILE_ATTRIBUTE_HIDDEN) != 0;
    // A pipe or a device must not be replaced by a file.
    if (!S_ISREG(status.st_mode) || hidden)
        return ERROR_ACCESS_DENIED;
    const OpenRequest exclusive = {GENERIC_READ | GENERIC_WRITE, 0, OPEN_EXISTING, 0};
    const DWORD error = OpenHostFile(path, exclusive, held);
    if (error != ERROR_SUCCESS)
        return error;
    const SharingGate gate(held.fd.Get());
    return IsInUse(held.fd.Get()) ? ERROR_SHARING_VIOLATION : ERROR_SUCCESS;
}

DWORD CopyHostFile(const std::string& source, const std::string& target, bool fail_if_exists) {
    OpenedFile from;
    DWORD error = OpenCopySource(source, FILE_SHARE_READ, from);
    if (error != ERROR_SUCCESS)
        return error;
    const std::string place = ResolveLinks(target);
    OpenedFile held;
    error = HoldCopyTarget(place, fail_if_exists, held);
    if (error != ERROR_SUCCESS)
        return error;
    const auto existing = fail_if_exists ? Existing::kKeep : Existing::kReplace;
    const int failed = CopyToTarget(from.fd.Get(), place, existing);
    if (failed == EEXIST)
        return ERROR_FILE_EXISTS;
    return failed == 0 ? DWORD{ERROR_SUCCESS} : PathError(failed, place);
}

// The folder of the target is what misses when the source is there.
DWORD MoveError(int error_number, const std::string& source) {
    struct stat status {};
    if (error_number == ENOENT && lstat(source.c_str(), &status) == 0)
        return ERROR_PATH_NOT_FOUND;
    return PathError(error_number, source);
}

DWORD MoveToOtherFileSystem(const std::string& source, const std::string& target) {
    OpenedFile from;
    const DWORD error = OpenCopySource(source, 0, from);
    if (error != ERROR_SUCCESS)
        return error;
    int failed = CopyToTarget(from.fd.Get(), target, Existing::kKeep);
    if (failed == 0 && unlink(source.c_str()) != 0) {
        failed = errno;
        unlink(target.c_str());
    }
    return failed == 0 ? DWORD{ERROR_SUCCESS} : MoveError(failed, source);
}

// What is there under the new name, but for the file itself, which may change the case of its name.
std::string MoveTarget(const std::string& source, const std::string& target) {
    std::string found = target;
    if (!FindFolded(found) || found != source)
        return found;
    return found.substr(0, found.rfind('/') + 1) + target.substr(target.rfind('/') + 1);
}

DWORD MoveHostFile(std::string source, std::string target) {
    struct stat status {};
    if (ReadStatus(source, status) != 0)
        return PathError(errno, source);
    target = MoveTarget(source, target);
    std::optional<QuietFile> quiet;
    if (S_ISREG(status.st_mode) && quiet.emplace(source).InUse())
        return ERROR_SHARING_VIOLATION;
    const int failed = RenameFile(source, target, Existing::kKeep);
    if (failed == EXDEV && S_ISREG(status.st_mode)) {
        quiet.reset();
        return MoveToOtherFileSystem(source, target);
    }
    return failed == 0 ? DWORD{ERROR_SUCCESS} : MoveError(failed, source);
}

BOOL Answer(DWORD error) {
    return error == ERROR_SUCCESS ? TRUE : Fail(error);
}

}  // namespace
}  // namespace zelto::coredll

using namespace zelto::coredll;

BOOL DeleteFileW(LPCWSTR name) {
    std::string path;
    const DWORD error = HostPath(name, path);
    return Answer(error != ERROR_SUCCESS ? error : DeleteHostFile(path));
}

BOOL CopyFileW(LPCWSTR source, LPCWSTR target, BOOL fail_if_exists) {
    std::string from;
    std::string to;
    const DWORD error = HostPaths(source, target, from, to);
    return Answer(error != ERROR_SUCCESS ? error : CopyHostFile(from, to, fail_if_exists != FALSE));
}

BOOL MoveFileW(LPCWSTR source, LPCWSTR target) {
    std::string from;
    std::string to;
    const DWORD error = HostPaths(source, target, from, to);
    return Answer(error != ERROR_SUCCESS ? error : MoveHostFile(from, to));
}

BOOL CreateDirectoryW(LPCWSTR name, SECURITY_ATTRIBUTES* /*security*/) {
    std::string path;
    const DWORD error = HostPath(name, path);
    if (error != ERROR_SUCCESS)
        return Fail(error);
    FindFolded(path);
    if (mkdir(path.c_str(), 0777) == 0)
        return TRUE;
    return Fail(errno == ENOENT ? DWORD{ERROR_PATH_NOT_FOUND} : ErrorFromErrno(errno));
}
