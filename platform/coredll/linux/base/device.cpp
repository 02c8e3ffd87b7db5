#include "platform/coredll/linux/base/device.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <sys/stat.h>
#include <unistd.h>

namespace zelto::coredll {
namespace {

bool Refuse(std::string* why, const std::string& sentence) {
    if (why != nullptr)
        *why = sentence;
    return false;
}

bool CheckDirectory(const std::string& path, std::string* why) {
    struct stat status {};
    if (path.empty()) {
        return Refuse(why, "No device directory: set ZELTO_DEVICE to the path of one.");
    }
    if (path.front() != '/') {
        return Refuse(why, "Device directory '" + path + "': ZELTO_DEVICE must be a full path.");
    }
    if (lstat(path.c_str(), &status) != 0) {
        const std::string reason = errno == ENOENT ? "is not there" : std::strerror(errno);
        return Refuse(why, "Device directory '" + path + "' " + reason +
                               ": make it with 'zeltoport device init', or set ZELTO_DEVICE.");
    }
    if (!S_ISDIR(status.st_mode)) {
        return Refuse(why, "Device directory '" + path +
                               "' is not a directory (links are not followed): remove it or set "
                               "ZELTO_DEVICE to another path.");
    }
    if (status.st_uid != geteuid()) {
        return Refuse(why, "Device directory '" + path +
                               "' belongs to another user: set ZELTO_DEVICE to one of your own.");
    }
    if ((status.st_mode & 07777) != 0700) {
        return Refuse(
            why, "Device directory '" + path + "' is open to other users: run 'chmod 0700' on it.");
    }
    return true;
}

bool MakeParents(const std::string& path) {
    for (size_t slash = path.find('/', 1); slash != std::string::npos;
         slash = path.find('/', slash + 1)) {
        if (mkdir(path.substr(0, slash).c_str(), 0755) != 0 && errno != EEXIST)
            return false;
    }
    return true;
}

}  // namespace

std::string DevicePath() {
    const char* set = std::getenv("ZELTO_DEVICE");
    if (set != nullptr && *set != '\0')
        return set;
    const char* data = std::getenv("XDG_DATA_HOME");
    if (data != nullptr && *data == '/')
        return std::string(data) + "/zelto-device";
    const char* home = std::getenv("HOME");
    if (home != nullptr && *home == '/')
        return std::string(home) + "/.local/share/zelto-device";
    return "";
}

bool CheckDevice(std::string* why) {
    return CheckDirectory(DevicePath(), why);
}

bool CreateDevice(std::string* why) {
    std::string path = DevicePath();
    while (path.size() > 1 && path.back() == '/')
        path.pop_back();
    if (path.size() > 1 && path.front() == '/') {
        const bool made = MakeParents(path) && mkdir(path.c_str(), 0700) == 0;
        if (!made && errno != EEXIST) {
            return Refuse(why, "Device directory '" + path +
                                   "' cannot be made: " + std::strerror(errno) + ".");
        }
    }
    return CheckDirectory(path, why);
}

std::string DeviceFile(const char* name) {
    const std::string path = DevicePath();
    return CheckDirectory(path, nullptr) ? path + "/" + name : std::string();
}

}  // namespace zelto::coredll
