// Copying a file under a name that it gets only when it is whole.

#ifndef ZELTO_PLATFORM_COREDLL_LINUX_FILES_FILE_COPY_H
#define ZELTO_PLATFORM_COREDLL_LINUX_FILES_FILE_COPY_H

#include <string>

#include "platform/coredll/api/base.h"

namespace zelto::coredll {

enum class Existing : uint8_t { kReplace, kKeep };

// Renames, as one step. With kKeep a target that exists makes it fail. 0 or an errno value.
int RenameFile(const std::string& source, const std::string& target, Existing existing);

// Copies bytes, permission bits and times of an open regular file. The copy is written beside the
// target and takes its name at the end; until then a target that exists stays as it is, and
// nothing is left of a copy that failed; what one that was killed left goes with the next in the
// folder. The copy is on the disk then: whoever deletes the source loses nothing by a power cut. 0
// or an errno value.
int CopyToTarget(int source, const std::string& target, Existing existing);

}  // namespace zelto::coredll

#endif
