// The registry as this process read it last, for as long as its file is the same.

#ifndef ZELTO_PLATFORM_COREDLL_LINUX_REGISTRY_KEPT_REGISTRY_H
#define ZELTO_PLATFORM_COREDLL_LINUX_REGISTRY_KEPT_REGISTRY_H

#include <memory>

#include "platform/coredll/linux/registry/registry_data.h"

namespace zelto::coredll {

// The device's registry as it is at this moment; results as LoadRegistry. Read anew when the file
// was replaced or written, which is asked at each call. That the device's directory is still the
// same and this user's alone is asked once a tick of the host's clock (some milliseconds).
// Thread safety: any thread; what is returned never changes.
DWORD ReadRegistry(std::shared_ptr<const Registry>& registry);

}  // namespace zelto::coredll

#endif
