// Opening a file of the host with the device's dispositions and share modes.

#ifndef ZELTO_PLATFORM_COREDLL_LINUX_FILES_OPEN_FILE_H
#define ZELTO_PLATFORM_COREDLL_LINUX_FILES_OPEN_FILE_H

#include <string>

#include "platform/coredll/api/files.h"
#include "platform/coredll/linux/base/unique_fd.h"

namespace zelto::coredll {

struct OpenRequest {
    DWORD access;
    DWORD share;
    DWORD disposition;
    DWORD attributes;
};

struct OpenedFile {
    UniqueFd fd;
    bool existed = false;
    bool is_regular = false;
};

// 0, or the error number that CreateFileW documents; then no file that was there has
// been changed.
DWORD OpenHostFile(std::string path, OpenRequest request, OpenedFile& file);

}  // namespace zelto::coredll

#endif
