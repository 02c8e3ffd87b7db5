#include "platform/coredll/linux/base/console.h"

#include <unistd.h>

namespace zelto::coredll {

bool IsTerminal(std::FILE* stream) {
    return isatty(fileno(stream)) == 1;
}

}  // namespace zelto::coredll
