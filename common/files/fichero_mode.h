// The flags of a record file's mode word. They may be combined; exactly one of FICH_READ,
// FICH_WRITE and FICH_APPEND must be set.

#ifndef ZELTO_COMMON_FILES_FICHERO_MODE_H
#define ZELTO_COMMON_FILES_FICHERO_MODE_H

#include <cstdint>

namespace zelto {

inline constexpr uint32_t FICH_READ = 0x1;
inline constexpr uint32_t FICH_WRITE = 0x2;  // the file is created or truncated
// At the end with the stdio stream, from the start with the handle stream.
inline constexpr uint32_t FICH_APPEND = 0x4;
inline constexpr uint32_t FICH_TEXT = 0x8;     // fields are text, each followed by the separator
inline constexpr uint32_t FICH_BINARY = 0x10;  // fields are the raw bytes of their values
// Writing: first copy the file to its name with the extension "BAK".
inline constexpr uint32_t FICH_BACKUP = 0x20;
// Reading: read one integer field into the leading value.
inline constexpr uint32_t FICH_READ_HEADER_INT = 0x40;
inline constexpr uint32_t FICH_UPDATE = 0x80;  // read and write
// A temporary file is committed over the target on closing.
inline constexpr uint32_t FICH_SAFE_WRITE = 0x100;
// Writing: first copy the file to its name followed by ".BAK".
inline constexpr uint32_t FICH_BACKUP_BAK = 0x200;
inline constexpr uint32_t FICH_PACKAGE = 0x400;  // the system's file handle instead of stdio
// Likewise; and reading without FICH_UPDATE, the whole file is taken into memory.
inline constexpr uint32_t FICH_HANDLE = 0x1000;
inline constexpr uint32_t FICH_NO_BOM = 0x4000;  // no UTF-8 mark at the start of a new text file

}  // namespace zelto

#endif
