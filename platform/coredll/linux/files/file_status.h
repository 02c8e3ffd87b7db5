// What the host knows of a file, in the device's terms.

#ifndef ZELTO_PLATFORM_COREDLL_LINUX_FILES_FILE_STATUS_H
#define ZELTO_PLATFORM_COREDLL_LINUX_FILES_FILE_STATUS_H

#include <string_view>
#include <sys/types.h>

#include "platform/coredll/api/files.h"

namespace zelto::coredll {

// Nobody may write it. Judged by the permission bits, so that it holds for the superuser too.
constexpr bool IsReadOnlyMode(mode_t mode) {
    return (mode & 0222) == 0;
}

// Attributes of a file with that last part of its path (slashes behind it do not count).
DWORD FileAttributes(mode_t mode, std::string_view path);

}  // namespace zelto::coredll

#endif
