#include "common/files/safe_write.h"

#include "common/files/fichero_mode.h"
#include "common/files/file_system.h"
#include "platform/coredll/coredll.h"

namespace zelto {
namespace {

DString WholeNameBackup(const DString& name) {
    DString backup = name;
    return backup += ".BAK";
}

// Copies the target aside and deletes it. The stage of that: 0 there was none, 1 it is gone, 2 it
// could not be deleted.
int MakeRoom(const DString& target) {
    if (!FileExists(target))
        return 0;
    CopyFileTo(target, WholeNameBackup(target), false);
    RemoveFile(target);
    return FileExists(target) ? 2 : 1;
}

void TellFailedMove(DString& error, DWORD code, int stage) {
    error = "Error TFicheroITV close 2.";
    error += " err=";
    error += static_cast<int>(code);
    error += " ex=";
    error += stage;
}

}  // namespace

void MakeBackups(const DString& name, uint32_t mode) {
    if ((mode & FICH_BACKUP) != 0) {
        DString backup = name;
        SetExtension(backup, "BAK");
        CopyFileTo(name, backup, false);
    }
    if ((mode & FICH_BACKUP_BAK) != 0)
        CopyFileTo(name, WholeNameBackup(name), false);
}

DString TemporaryName(const DString& target) {
    DString name = target;
    return name += ".$$$";
}

bool CommitTemporary(const DString& target, DString* error) {
    const DString temporary = TemporaryName(target);
    if (!FileExists(temporary)) {
        if (error != nullptr)
            *error = "Error TFicheroITV close 1";
        return false;
    }
    const int stage = MakeRoom(target);
    if (MoveFileTo(temporary, target))
        return true;
    const DWORD code = GetLastError();
    if (error != nullptr)
        TellFailedMove(*error, code, stage);
    return false;
}

}  // namespace zelto
