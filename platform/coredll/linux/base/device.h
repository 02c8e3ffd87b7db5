// The device: the directory in which the processes of one device meet. It holds the registry, with
// the clock and zone settings among its values, and the object store, and is private to its user.

#ifndef ZELTO_PLATFORM_COREDLL_LINUX_BASE_DEVICE_H
#define ZELTO_PLATFORM_COREDLL_LINUX_BASE_DEVICE_H

#include <string>

#include "platform/coredll/linux/base/unique_fd.h"

namespace zelto::coredll {

// The environment variable ZELTO_DEVICE, else the user's default, without slashes at its end; ""
// when neither can be told. Looked up at each call, so a test may change it.
std::string DevicePath();

// Whether DevicePath() is this path: asked far more often than the answer changes.
bool IsDevicePath(const std::string& path);

// A path as it is shown to people: control characters as \xNN, so that it cannot steer a terminal.
std::string PrintablePath(const std::string& path);

// Opens the device directory and checks the very directory that it opened: a directory and no
// symbolic link, owned by this user, mode 0700. Files of the device are reached through the
// descriptor alone, so nobody who may write its parent can put another directory in its place.
// Without one, `why` (may be null) receives a sentence that says what is wrong and what to do, and
// errno is ENOENT where the directory is just not there.
UniqueFd OpenDevice(std::string* why);

// Whether OpenDevice succeeds.
bool CheckDevice(std::string* why);

// Makes a directory for this user alone, missing parents included; false when the one of that name
// cannot be had, or is no such directory. The path is a full one.
bool MakePrivateFolder(const std::string& path);

// Makes the directory, missing parents included, and then checks it. An existing one is kept.
bool CreateDevice(std::string* why);

}  // namespace zelto::coredll

#endif
