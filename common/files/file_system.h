// Files, folders and their names.
//
// Conventions:
//  1. Names are 8-bit text in their own codepage (DString::codepage), for the system converted to
//     UTF-16. A relative name is taken from the root of the tree: there is no current folder.
//  2. The separator is "\". A "/" separates parts as well wherever a function does not say
//     otherwise, but is never written.
//  3. bool results: true is success; after a failure GetLastError() tells why.
//  4. Thread safety: any thread. Calls that change the disk run one at a time in the process, under
//     FileSystemLock() (common/sys/sync.h).

#ifndef ZELTO_COMMON_FILES_FILE_SYSTEM_H
#define ZELTO_COMMON_FILES_FILE_SYSTEM_H

#include "common/text/dstring.h"

namespace zelto {

// Whether the path, file or folder, is on disk. When it is not but its directory part is, the
// package hook (package_hook.h) is asked, where there is one.
bool FileExists(const DString& path);

// Whether a folder is there; with of_file the path names a file in it, and its directory part is
// looked at.
bool DirectoryExists(const DString& path, bool of_file);

bool IsReadOnly(const DString& path);  // also for a path that is not there
bool IsHidden(const DString& path);    // also for a path that is not there

bool RemoveFile(const DString& path);
bool CopyFileTo(const DString& source, const DString& destination, bool fail_if_exists);
bool MoveFileTo(const DString& source, const DString& destination);  // never replaces

// Makes the folder with all that are missing above it, the outermost first; true when it is there
// already. With of_file the path names a file, and the folder for it is made.
bool MakeDirectory(const DString& path, bool of_file);

// Replaces the name by the folder of the running program joined with the name's file-name part.
// The folder is read once in a process. Always true.
bool ModuleDirectoryPath(DString& name);

// The text before the last "\" (a "/" does not count); empty when there is none.
DString DirectoryPart(const DString& path);

// The text after the last "\" or "/"; the whole path when there is neither.
DString FileNamePart(const DString& path);

// Cuts the path at its last "." when that comes after the last "\", then appends "." (unless the
// extension is empty or begins with one) and the extension.
void SetExtension(DString& path, const DString& extension);

// Directory, "\" and name; no "\" is added after an empty directory or one that ends in a
// separator.
DString JoinPath(const DString& directory, const DString& name);

// The path without "." and empty parts, each ".." taken together with the part before it, by the
// text alone. A ".." at the front is dropped: the root is its own parent, and relative names start
// there too. Only a separator at the front stays; every separator becomes "\". May be empty.
DString NormalizePath(const DString& path);

}  // namespace zelto

#endif
