#include "platform/coredll/linux/base/device.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace zelto::coredll {
namespace {

std::string Quoted(const std::string& path) {
    return "Device directory '" + PrintablePath(path) + "'";
}

// What is wrong with the path that was not opened, by errno.
std::string OpenProblem(const std::string& path) {
    if (errno == ENOTDIR || errno == ELOOP)
        return Quoted(path) +
               " is not a directory (links are not followed): remove it or set ZELTO_DEVICE to "
               "another path.";
    if (errno == EACCES)
        return Quoted(path) +
               " cannot be entered by this user: set ZELTO_DEVICE to one of your own.";
    const std::string reason = errno == ENOENT ? "is not there" : std::strerror(errno);
    return Quoted(path) + " " + reason +
           ": make it with 'zeltoport device init', or set ZELTO_DEVICE.";
}

// What is wrong with the directory that was; "" when nothing is.
std::string DirectoryProblem(const std::string& path, int directory) {
    struct stat status {};
    if (fstat(directory, &status) != 0)
        return OpenProblem(path);
    if (status.st_uid != geteuid())
        return Quoted(path) + " belongs to another user: set ZELTO_DEVICE to one of your own.";
    if ((status.st_mode & 07777) != 0700)
        return Quoted(path) + " is open to other users: run 'chmod 0700' on it.";
    return "";
}

UniqueFd OpenDirectory(const std::string& path, std::string& problem) {
    if (path.empty())
        problem = "No device directory: set ZELTO_DEVICE to the path of one.";
    else if (path.front() != '/')
        problem = Quoted(path) + ": ZELTO_DEVICE must be a full path.";
    if (!problem.empty())
        return {};
    UniqueFd directory(open(path.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    problem = directory.IsOpen() ? DirectoryProblem(path, directory.Get()) : OpenProblem(path);
    return problem.empty() ? std::move(directory) : UniqueFd();
}

// Leaves errno alone.
UniqueFd OpenOrSay(const std::string& path, std::string* why) {
    errno = 0;
    std::string problem;
    UniqueFd directory = OpenDirectory(path, problem);
    const int saved = errno;
    if (why != nullptr && !problem.empty())
        *why = problem;
    errno = saved;
    return directory;
}

bool MakeParents(const std::string& path) {
    for (size_t slash = path.find('/', 1); slash != std::string::npos;
         slash = path.find('/', slash + 1)) {
        if (mkdir(path.substr(0, slash).c_str(), 0755) != 0 && errno != EEXIST)
            return false;
    }
    return true;
}

// False with errno when it is not there afterwards.
bool MakeDirectory(const std::string& path) {
    return (MakeParents(path) && mkdir(path.c_str(), 0700) == 0) || errno == EEXIST;
}

// The path without slashes at its end: behind a link's name they would have the link followed.
std::string Trimmed(std::string path) {
    while (path.size() > 1 && path.back() == '/')
        path.pop_back();
    return path;
}

}  // namespace

std::string DevicePath() {
    const char* set = std::getenv("ZELTO_DEVICE");
    if (set != nullptr && *set != '\0')
        return Trimmed(set);
    const char* data = std::getenv("XDG_DATA_HOME");
    if (data != nullptr && *data == '/')
        return Trimmed(data) + "/zelto-device";
    const char* home = std::getenv("HOME");
    if (home != nullptr && *home == '/')
        return Trimmed(home) + "/.local/share/zelto-device";
    return "";
}

bool IsDevicePath(const std::string& path) {
    const char* set = std::getenv("ZELTO_DEVICE");
    return !path.empty() && ((set != nullptr && path == set) || path == DevicePath());
}

std::string PrintablePath(const std::string& path) {
    std::string text;
    for (const char c : path) {
        const auto byte = static_cast<unsigned char>(c);
        char escape[8];
        std::snprintf(escape, sizeof escape, "\\x%02x", byte);
        if (byte < 0x20 || byte == 0x7F)
            text += escape;
        else
            text += c;
    }
    return text;
}

UniqueFd OpenDevice(std::string* why) {
    return OpenOrSay(DevicePath(), why);
}

bool CheckDevice(std::string* why) {
    return OpenDevice(why).IsOpen();
}

bool MakePrivateFolder(const std::string& path) {
    std::string problem;
    return MakeDirectory(path) && OpenDirectory(path, problem).IsOpen();
}

bool CreateDevice(std::string* why) {
    const std::string path = DevicePath();
    if (path.size() > 1 && path.front() == '/') {
        if (!MakeDirectory(path)) {
            if (why != nullptr)
                *why = Quoted(path) + " cannot be made: " + std::strerror(errno) + ".";
            return false;
        }
    }
    return OpenOrSay(path, why).IsOpen();
}

}  // namespace zelto::coredll
