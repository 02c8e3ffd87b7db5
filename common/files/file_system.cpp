#include "common/files/file_system.h"

#include "common/files/package_hook.h"
#include "common/sys/sync.h"
#include "common/text/codepage.h"
#include "platform/coredll/coredll.h"

namespace zelto {
namespace {

DWORD Attributes(const DString& path) {
    return GetFileAttributesW(ToWide(path).c_str());
}

DString ReadModuleDirectory() {
    WCHAR name[MAX_PATH] = {};
    const DWORD length = GetModuleFileNameW(nullptr, name, MAX_PATH - 1);
    name[length < MAX_PATH ? length : MAX_PATH - 1] = 0;
    return DirectoryPart(DString(name));
}

// Bytes that a name may have at most: what is longer exceeds the system's units in any codepage.
constexpr int kLongestName = 4 * MAX_PATH;

bool MakeWithParents(const DString& path) {
    if (DirectoryExists(path, false))
        return true;
    const DString whole = NormalizePath(path);
    const DString parent = NormalizePath(JoinPath(path, ".."));
    // The root is its own parent, and nothing stands above a relative name of one part.
    const bool has_parent = !parent.is_empty() && parent.length() < whole.length();
    if (has_parent && !MakeWithParents(parent))
        return false;
    return CreateDirectoryW(ToWide(whole).c_str(), nullptr) != 0;
}

}  // namespace

bool FileExists(const DString& path) {
    if (Attributes(path) != INVALID_FILE_ATTRIBUTES)
        return true;
    TPackageHook* hook = PackageHook();
    return hook != nullptr && DirectoryExists(path, true) && hook->Exists(path);
}

bool DirectoryExists(const DString& path, bool of_file) {
    const DWORD attributes = Attributes(of_file ? DirectoryPart(path) : path);
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

bool IsReadOnly(const DString& path) {
    return (Attributes(path) & FILE_ATTRIBUTE_READONLY) != 0;
}

bool IsHidden(const DString& path) {
    return (Attributes(path) & FILE_ATTRIBUTE_HIDDEN) != 0;
}

bool RemoveFile(const DString& path) {
    const LockHolder hold(FileSystemLock(), true);
    return DeleteFileW(ToWide(path).c_str()) != 0;
}

bool CopyFileTo(const DString& source, const DString& destination, bool fail_if_exists) {
    const LockHolder hold(FileSystemLock(), true);
    return CopyFileW(ToWide(source).c_str(), ToWide(destination).c_str(),
                     fail_if_exists ? TRUE : FALSE) != 0;
}

bool MoveFileTo(const DString& source, const DString& destination) {
    const LockHolder hold(FileSystemLock(), true);
    return MoveFileW(ToWide(source).c_str(), ToWide(destination).c_str()) != 0;
}

bool MakeDirectory(const DString& path, bool of_file) {
    DString folder = of_file ? DirectoryPart(path) : path;
    if (of_file)
        folder += '\\';
    if (folder.length() > kLongestName) {
        SetLastError(ERROR_FILENAME_EXCED_RANGE);
        return false;
    }
    const LockHolder hold(FileSystemLock(), true);
    return MakeWithParents(folder);
}

bool ModuleDirectoryPath(DString& name) {
    static const DString directory = ReadModuleDirectory();
    name = JoinPath(directory, FileNamePart(name));
    return true;
}

}  // namespace zelto
