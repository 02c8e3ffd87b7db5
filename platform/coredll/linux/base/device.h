// The device: the directory in which the processes of one device meet. It holds the registry, the
// clock and zone settings and the object store, and is private to its user.

#ifndef ZELTO_PLATFORM_COREDLL_LINUX_BASE_DEVICE_H
#define ZELTO_PLATFORM_COREDLL_LINUX_BASE_DEVICE_H

#include <string>

namespace zelto::coredll {

// The environment variable ZELTO_DEVICE, else the user's default; "" when neither can be told.
// Looked up at each call, so a test may change it.
std::string DevicePath();

// Whether the device directory may be used: there, a directory and no symbolic link, owned by this
// user, mode 0700. `why` (may be null) receives one sentence that says what is wrong and what to
// do.
bool CheckDevice(std::string* why);

// Makes the directory, missing parents included, and then checks it. An existing one is kept.
bool CreateDevice(std::string* why);

// Path of a file in the device, or "" when CheckDevice refuses.
std::string DeviceFile(const char* name);

}  // namespace zelto::coredll

#endif
