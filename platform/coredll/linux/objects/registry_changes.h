// How the processes of a device learn that its registry has changed, without looking at its file.

#ifndef ZELTO_PLATFORM_COREDLL_LINUX_OBJECTS_REGISTRY_CHANGES_H
#define ZELTO_PLATFORM_COREDLL_LINUX_OBJECTS_REGISTRY_CHANGES_H

#include <cstdint>
#include <optional>
#include <string>

#include "platform/coredll/linux/base/unique_fd.h"

namespace zelto::coredll {

// How often the registry of the device of this path was changed by a process; nothing where this
// process is not connected to that device's store. A count that is the same before and after a
// look at the file says that the look still holds, but for what people edit by hand.
std::optional<uint32_t> RegistryChanges(const std::string& device);

// Counts a change of the registry of an open device, before the call that made it returns. Needs no
// connection: the number is written into the store's file, if there is one. The caller holds the
// registry's lock, so nobody else writes it.
void CountRegistryChange(const UniqueFd& device);

}  // namespace zelto::coredll

#endif
