#include "platform/coredll/linux/base/console.h"

#include <sys/stat.h>
#include <unistd.h>

namespace zelto::coredll {

bool IsTerminal(std::FILE* stream) {
    return isatty(fileno(stream)) == 1;
}

bool IsNowhere(std::FILE* stream) {
    struct stat status {
    }, nowhere{};
    return fstat(fileno(stream), &status) == 0 && stat("/dev/null", &nowhere) == 0 &&
           S_ISCHR(status.st_mode) && status.st_rdev == nowhere.st_rdev;
}

}  // namespace zelto::coredll
