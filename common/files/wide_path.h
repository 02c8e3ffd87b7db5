// Names for the system.

#ifndef ZELTO_COMMON_FILES_WIDE_PATH_H
#define ZELTO_COMMON_FILES_WIDE_PATH_H

#include <string>

#include "common/text/dstring.h"
#include "platform/coredll/coredll.h"

namespace zelto {

// The text as UTF-16, from the codepage that it carries.
std::basic_string<WCHAR> WidePath(const DString& path);

}  // namespace zelto

#endif
