// The device's registry file.

#ifndef ZELTO_PLATFORM_COREDLL_LINUX_REGISTRY_REGISTRY_FILE_H
#define ZELTO_PLATFORM_COREDLL_LINUX_REGISTRY_REGISTRY_FILE_H

#include <functional>
#include <string>
#include <sys/stat.h>

#include "platform/coredll/linux/base/unique_fd.h"
#include "platform/coredll/linux/registry/registry_data.h"

namespace zelto::coredll {

constexpr size_t kMaxRegistryFileBytes = 4u << 20;

// The file that was read, as it was just before.
struct RegistrySource {
    UniqueFd file;  // not open: there is none
    struct stat status {};
};

// Reads the device's registry; a device or a file that is not there is an empty one. 0; 5 the
// device is refused or the file may not be read; 1009 damaged, not ours, of another version. The
// file is replaced as a whole by those who write it, so nobody sees half of a change.
DWORD LoadRegistry(Registry& registry, RegistrySource& source);

// Whether the device is still to be had and its registry is still the file that was read.
bool IsRegistryFile(const struct stat& status);

// Reads, lets `change` work on it and, where that answers 0 and stores that something changed,
// replaces the file by a new one that has reached the disk. One writer at a time, over all
// processes, so no change is lost. Result: as LoadRegistry and `change`, 5 when there is no device
// or the file cannot be written, 112 disk full, 170 when another process that writes does not go
// on. A file that is damaged is left alone.
DWORD UpdateRegistry(const std::function<DWORD(Registry& registry, bool& changed)>& change);

// What is wrong with the registry, as a sentence for people: file, line and what to do. Empty when
// nothing is.
std::string RegistryProblem();

}  // namespace zelto::coredll

#endif
