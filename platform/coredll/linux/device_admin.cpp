#include "platform/coredll/linux/device_admin.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/coredll/linux/objects/store.h"
#include "platform/coredll/linux/registry/registry_file.h"

namespace zelto::coredll {

std::string DeviceProblem() {
    std::string problem;
    if (!CheckDevice(&problem))
        return problem;
    problem = RegistryProblem();
    return problem.empty() ? StoreProblem() : problem;
}

void Disconnect() {
    CloseStore();
}

bool IsTerminal(std::FILE* stream) {
    return isatty(fileno(stream)) == 1;
}

bool IsNowhere(std::FILE* stream) {
    struct stat file {};
    struct stat null {};
    return fstat(fileno(stream), &file) == 0 && stat("/dev/null", &null) == 0 &&
           S_ISCHR(file.st_mode) && file.st_rdev == null.st_rdev;
}

bool AppendToDeviceFile(std::FILE* stream, const char* name) {
    const UniqueFd device = OpenDevice(nullptr);
    if (!device.IsOpen())
        return false;
    const UniqueFd file(
        openat(device.Get(), name, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC | O_NOFOLLOW, 0600));
    return file.IsOpen() && std::fflush(stream) == 0 && dup2(file.Get(), fileno(stream)) >= 0;
}

DeviceTurn::DeviceTurn(int64_t patience) : lock_(OpenDevice(nullptr), "turn", patience) {}

}  // namespace zelto::coredll
