#include "tests/soak/namespaces.h"

#include <fcntl.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

namespace zelto::soak {
namespace {

bool WriteText(const char* path, const std::string& text) {
    const int file = open(path, O_WRONLY | O_CLOEXEC);
    const bool written =
        file >= 0 && write(file, text.data(), text.size()) == static_cast<ssize_t>(text.size());
    close(file);
    return written;
}

}  // namespace

bool Unshare(int what) {
    const std::string user = std::to_string(geteuid());
    if (unshare(what) == 0)
        return true;
    return unshare(what | CLONE_NEWUSER) == 0 &&
           WriteText("/proc/self/uid_map", user + " " + user + " 1");
}

bool MountSmall(const std::string& folder, size_t bytes) {
    const std::string options = "size=" + std::to_string(bytes);
    return Unshare(CLONE_NEWNS) &&
           mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
           mount("soak", folder.c_str(), "tmpfs", 0, options.c_str()) == 0 &&
           chmod(folder.c_str(), 0700) == 0;
}

}  // namespace zelto::soak
