// Names of files on the device and on the host.

#ifndef ZELTO_PLATFORM_COREDLL_LINUX_BASE_PATHS_H
#define ZELTO_PLATFORM_COREDLL_LINUX_BASE_PATHS_H

#include <string>
#include <string_view>

#include "platform/coredll/api/base.h"

namespace zelto::coredll {

// The host's path of a file or folder, always a full one: backslashes become slashes, the text
// UTF-8. Result: 0, or 87 null, 3 empty, 206 MAX_PATH units and more, 123 a character that names
// may not have (< > : " | ? *, half a surrogate pair).
DWORD HostPath(LPCWSTR name, std::string& path);

// The same for a program or a module, which the host named: any character is good.
DWORD HostProgramPath(LPCWSTR name, std::string& path);

// The same for a search: the last part may hold * and ?, the folder before it ends in a slash.
DWORD HostPattern(LPCWSTR name, std::string& folder, std::u16string& pattern);

// A host's name as UTF-16. Bytes that are not UTF-8 become U+DC80 to U+DCFF, which the calls above
// turn back into the same bytes, so that every file of the host can be named.
std::u16string WideName(std::string_view host_name);

// UTF-16 as UTF-8, the reverse of WideName. False when a surrogate is left alone.
bool NarrowName(std::u16string_view name, std::string& host_name);

// The error number for errno after a call on the path: as ErrorFromErrno, but a missing file in a
// missing folder is 3.
DWORD PathError(int error_number, const std::string& path);

// The folder that holds the path's last part; "/" for the root.
std::string ParentFolder(const std::string& path);

}  // namespace zelto::coredll

#endif
