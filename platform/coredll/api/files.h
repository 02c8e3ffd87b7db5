// Files and folders. A backslash is a slash; a path without a leading one is taken from the root of
// the tree. An exact name always wins. Where nothing of the exact name is there, each missing part
// of the path stands for what differs from it in case only (A to Z, accented letters of Latin-1),
// of several for the first in byte order; so a new file or folder is not made beside such a one.

#ifndef ZELTO_PLATFORM_COREDLL_API_FILES_H
#define ZELTO_PLATFORM_COREDLL_API_FILES_H

#include "platform/coredll/api/base.h"
#include "platform/coredll/api/clock.h"

enum : DWORD {
    GENERIC_READ = 0x80000000,
    GENERIC_WRITE = 0x40000000,
    FILE_SHARE_READ = 1,
    FILE_SHARE_WRITE = 2,

    CREATE_NEW = 1,
    CREATE_ALWAYS = 2,
    OPEN_EXISTING = 3,
    OPEN_ALWAYS = 4,
    TRUNCATE_EXISTING = 5,

    FILE_ATTRIBUTE_READONLY = 0x1,
    FILE_ATTRIBUTE_HIDDEN = 0x2,
    FILE_ATTRIBUTE_DIRECTORY = 0x10,
    FILE_ATTRIBUTE_NORMAL = 0x80,
    INVALID_FILE_ATTRIBUTES = 0xFFFFFFFF,

    FILE_BEGIN = 0,
    FILE_CURRENT = 1,
    FILE_END = 2,
    INVALID_SET_FILE_POINTER = 0xFFFFFFFF,
};

struct WIN32_FIND_DATAW {
    DWORD dwFileAttributes;
    FILETIME ftCreationTime;
    FILETIME ftLastAccessTime;
    FILETIME ftLastWriteTime;
    DWORD nFileSizeHigh;
    DWORD nFileSizeLow;
    DWORD dwOID;
    WCHAR cFileName[MAX_PATH];
};

extern "C" {

// INVALID_HANDLE_VALUE on failure: 2 missing, 3 no such folder, 5 a folder, read-only or not
// permitted, 32 conflicts with another open's share mode, 80 CREATE_NEW on an existing file, 87 an
// unknown disposition or truncating without GENERIC_WRITE, 123 a name with < > : " | ? *, 206 a
// name of 260 units and more. OPEN_ALWAYS | CREATE_ALWAYS (6) is taken as TRUNCATE_EXISTING:
// programs that combine the two mean it. Success of CREATE_NEW, CREATE_ALWAYS and OPEN_ALWAYS sets
// the last error: 183 the file was there, 0 it is new. Share modes hold in and between processes.
HANDLE CreateFileW(LPCWSTR name, DWORD access, DWORD share, SECURITY_ATTRIBUTES* security,
                   DWORD disposition, DWORD attributes, HANDLE template_file);

// At or past the end: TRUE with 0 bytes. Errors: 5 not opened for reading, 6, 87 null argument.
BOOL ReadFile(HANDLE file, void* buffer, DWORD size, DWORD* read, void* overlapped);

// Errors: 5 not opened for writing, 112 disk full, 6, 87. `written` tells what reached the file.
BOOL WriteFile(HANDLE file, const void* buffer, DWORD size, DWORD* written, void* overlapped);

// Moves the position by a signed distance: 32 bits with `high` null, else 64 bits in two halves,
// and the new position's high half is stored there. Result: the low half, with the last error set
// to 0, since 0xFFFFFFFF may be either. Failure: 0xFFFFFFFF with 131 before the start, 87 bad
// method or a result beyond 32 bits with `high` null, 6.
DWORD SetFilePointer(HANDLE file, LONG distance, LONG* high, DWORD method);

// INVALID_FILE_ATTRIBUTES with 2, 3 or 123 (wildcards). Read-only: nobody may write the file.
// Hidden: the name begins with a dot. Nothing else set: FILE_ATTRIBUTE_NORMAL.
DWORD GetFileAttributesW(LPCWSTR name);

BOOL DeleteFileW(LPCWSTR name);  // 2, 3; 5 read-only or a folder; 32 open

// 2, 3; 80 the target exists and fail_if_exists; 5 target read-only or hidden; 32. The permission
// bits are copied too; a target that could not be written whole is removed again.
BOOL CopyFileW(LPCWSTR source, LPCWSTR target, BOOL fail_if_exists);

// Never replaces: 183 the target exists. 2, 3; 32 the source is open; 17 a folder to another
// file system (a file is copied and deleted).
BOOL MoveFileW(LPCWSTR source, LPCWSTR target);

BOOL CreateDirectoryW(LPCWSTR name, SECURITY_ATTRIBUTES* security);  // 183 taken, 3, 5

// Entries matching * and ? in the last part of the pattern, whatever their case, "." and ".." left
// out, in no order; a ".*" at the end matches names without a dot, too. INVALID_HANDLE_VALUE with 2
// nothing matches, 3 no such folder.
HANDLE FindFirstFileW(LPCWSTR pattern, WIN32_FIND_DATAW* data);
BOOL FindNextFileW(HANDLE search, WIN32_FIND_DATAW* data);  // 18 at the end, 6
BOOL FindClose(HANDLE search);                              // 6
}

#endif
