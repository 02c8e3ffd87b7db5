// Texts in the store: names of queues and events, compared with case, and class names and titles
// of windows, short and compared without case (ASCII letters).

#ifndef ZELTO_PLATFORM_COREDLL_LINUX_OBJECTS_NAMES_H
#define ZELTO_PLATFORM_COREDLL_LINUX_OBJECTS_NAMES_H

#include "platform/coredll/linux/objects/store_layout.h"

namespace zelto::coredll {

// False when the text is not shorter than MAX_PATH.
bool MakeName(ObjectName& name, LPCWSTR text);
bool SameName(const ObjectName& a, const ObjectName& b);
void CopyName(ObjectName& to, const ObjectName& from);
// Whether a name from the store is as long as it says.
bool IsWholeName(const ObjectName& name);

// Not null and at most kMaxWindowText units.
bool ValidWindowText(LPCWSTR text);
// Copies a valid text into kMaxWindowText + 1 units; null as "".
void CopyWindowText(WCHAR* to, LPCWSTR text);
// Whether a window's text is the one asked for; null asks for any.
bool SameWindowText(const WCHAR (&text)[kMaxWindowText + 1], LPCWSTR asked);

}  // namespace zelto::coredll

#endif
