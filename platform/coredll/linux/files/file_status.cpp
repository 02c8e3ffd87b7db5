#include "platform/coredll/linux/files/file_status.h"

#include <cerrno>
#include <sys/stat.h>

#include "platform/coredll/linux/base/last_error.h"
#include "platform/coredll/linux/base/paths.h"
#include "platform/coredll/linux/files/folded_name.h"

namespace zelto::coredll {
namespace {

// "." and ".." are hidden nowhere.
bool IsHiddenName(std::string_view path) {
    path = path.substr(0, path.find_last_not_of('/') + 1);
    path.remove_prefix(path.rfind('/') + 1);
    return path.starts_with('.') && path != "." && path != "..";
}

}  // namespace

DWORD FileAttributes(mode_t mode, std::string_view path) {
    DWORD attributes = 0;
    if (IsReadOnlyMode(mode))
        attributes |= FILE_ATTRIBUTE_READONLY;
    if (IsHiddenName(path))
        attributes |= FILE_ATTRIBUTE_HIDDEN;
    if (S_ISDIR(mode))
        attributes |= FILE_ATTRIBUTE_DIRECTORY;
    return attributes == 0 ? DWORD{FILE_ATTRIBUTE_NORMAL} : attributes;
}

}  // namespace zelto::coredll

DWORD GetFileAttributesW(LPCWSTR text) {
    using namespace zelto::coredll;
    std::string path;
    const DWORD error = HostPath(text, path);
    if (error != ERROR_SUCCESS)
        return Fail(error, DWORD{INVALID_FILE_ATTRIBUTES});
    struct stat status {};
    if (WithFolded(path, [&](const char* name) { return stat(name, &status); }) != 0)
        return Fail(PathError(errno, path), DWORD{INVALID_FILE_ATTRIBUTES});
    return FileAttributes(status.st_mode, path);
}
