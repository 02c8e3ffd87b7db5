// Writing files so that what they held before is there until the new contents are.

#ifndef ZELTO_COMMON_FILES_SAFE_WRITE_H
#define ZELTO_COMMON_FILES_SAFE_WRITE_H

#include <cstdint>

#include "common/text/dstring.h"

namespace zelto {

// Copies the file aside as FICH_BACKUP and FICH_BACKUP_BAK say. What cannot be copied, a missing
// file above all, is no reason not to write.
void MakeBackups(const DString& name, uint32_t mode);

// Where the new contents of a file stand until they are committed.
DString TemporaryName(const DString& target);

// Puts the temporary file in the target's place; what was there is then in the target's name
// followed by ".BAK", if it could be copied. The copy is on the disk before the target is deleted;
// the temporary file is as far there as its writer saw to it. False, with the reason in `error`
// (may be null), when there is no temporary file or it could not be renamed.
bool CommitTemporary(const DString& target, DString* error);

}  // namespace zelto

#endif
