// _wfopen and what goes with it.

#include <cerrno>
#include <string>
#include <sys/stat.h>

#include "platform/coredll/api/crt.h"
#include "platform/coredll/linux/base/last_error.h"
#include "platform/coredll/linux/base/paths.h"
#include "platform/coredll/linux/files/file_status.h"
#include "platform/coredll/linux/files/folded_name.h"

static_assert(sizeof(off_t) == 8, "file positions take 64 bits");

using namespace zelto::coredll;

namespace {

// The host's mode for the device's: r, w or a, then any of + b t. Text mode translates nothing
// here. "e" keeps the file from programs that this process starts. False for any other mode.
bool HostMode(const WCHAR* mode, char (&host)[4]) {
    if (mode == nullptr || (*mode != 'r' && *mode != 'w' && *mode != 'a'))
        return false;
    size_t used = 0;
    host[used++] = static_cast<char>(*mode);
    bool update = false;
    for (const WCHAR* unit = mode + 1; *unit != 0; ++unit) {
        if (*unit != '+' && *unit != 'b' && *unit != 't')
            return false;
        update = update || *unit == '+';
    }
    if (update)
        host[used++] = '+';
    host[used++] = 'e';
    host[used] = '\0';
    return true;
}

bool Writes(const char* host_mode) {
    return host_mode[0] != 'r' || host_mode[1] == '+';
}

// What the host would open: a folder, and as the superuser a file that nobody may write. The path
// becomes that of what is there.
bool IsRefused(std::string& path, bool writes) {
    struct stat status {};
    return WithFolded(path, [&](const char* name) { return stat(name, &status); }) == 0 &&
           (S_ISDIR(status.st_mode) || (writes && IsReadOnlyMode(status.st_mode)));
}

}  // namespace

FILE* _wfopen(const WCHAR* name, const WCHAR* mode) {
    char host_mode[4];
    if (!HostMode(mode, host_mode))
        return Fail(ERROR_INVALID_PARAMETER, static_cast<FILE*>(nullptr));
    std::string path;
    const DWORD name_error = HostPath(name, path);
    if (name_error != ERROR_SUCCESS)
        return Fail(name_error, static_cast<FILE*>(nullptr));
    if (IsRefused(path, Writes(host_mode)))
        return Fail(ERROR_ACCESS_DENIED, static_cast<FILE*>(nullptr));
    FILE* file = std::fopen(path.c_str(), host_mode);
    return file != nullptr ? file : Fail(PathError(errno, path), file);
}

int _fseeki64(FILE* file, int64_t offset, int origin) {
    return fseeko(file, offset, origin);
}

int64_t _ftelli64(FILE* file) {
    return ftello(file);
}
