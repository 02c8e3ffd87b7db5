// Names of queues and events: compared with case, shorter than MAX_PATH.

#ifndef ZELTO_PLATFORM_COREDLL_LINUX_OBJECTS_OBJECT_NAME_H
#define ZELTO_PLATFORM_COREDLL_LINUX_OBJECTS_OBJECT_NAME_H

#include "platform/coredll/linux/objects/store_layout.h"

namespace zelto::coredll {

// False when the text is too long.
bool MakeName(ObjectName& name, LPCWSTR text);
bool SameName(const ObjectName& a, const ObjectName& b);
void CopyName(ObjectName& to, const ObjectName& from);

}  // namespace zelto::coredll

#endif
