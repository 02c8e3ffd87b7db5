// The flags of a record file's mode word. They may be combined; exactly one of FICH_READ,
// FICH_WRITE and FICH_APPEND must be set.

#ifndef ZELTO_COMMON_FILES_FICHERO_MODE_H
#define ZELTO_COMMON_FILES_FICHERO_MODE_H

#include <cstdint>

namespace zelto {

enum : uint32_t {
    FICH_READ = 0x1,
    FICH_WRITE = 0x2,    // the file is created or truncated
    FICH_APPEND = 0x4,   // at the end with the stdio stream, from the start with the handle stream
    FICH_TEXT = 0x8,     // fields are text, each followed by the separator
    FICH_BINARY = 0x10,  // fields are the raw bytes of their values
    FICH_BACKUP = 0x20,  // writing: first copy the file to its name with the extension "BAK"
    FICH_READ_HEADER_INT = 0x40,  // reading: read one integer field into the leading value
    FICH_UPDATE = 0x80,           // read and write
    FICH_SAFE_WRITE = 0x100,      // a temporary file is committed over the target on closing
    FICH_BACKUP_BAK = 0x200,      // writing: first copy the file to its name followed by ".BAK"
    FICH_PACKAGE = 0x400,         // the system's file handle instead of stdio
    FICH_HANDLE = 0x1000,  // likewise; reading without FICH_UPDATE: the whole file into memory
    FICH_NO_BOM = 0x4000,  // no UTF-8 mark at the start of a new text file
};

}  // namespace zelto

#endif
