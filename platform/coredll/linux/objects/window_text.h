// Class names and titles of windows: short, compared without case (ASCII letters).

#ifndef ZELTO_PLATFORM_COREDLL_LINUX_OBJECTS_WINDOW_TEXT_H
#define ZELTO_PLATFORM_COREDLL_LINUX_OBJECTS_WINDOW_TEXT_H

#include "platform/coredll/linux/objects/store_layout.h"

namespace zelto::coredll {

// Not null and at most kMaxWindowText units.
bool ValidWindowText(LPCWSTR text);

// Copies a valid text into kMaxWindowText + 1 units; null as "".
void CopyWindowText(WCHAR* to, LPCWSTR text);

// Whether the text is the one asked for; null asks for any.
bool SameWindowText(const WCHAR* text, LPCWSTR asked);

}  // namespace zelto::coredll

#endif
