// Closing record files, and committing safe writes.

#include <utility>

#include "common/files/fichero_itv.h"
#include "common/files/file_system.h"
#include "common/files/package_hook.h"

namespace zelto {

bool TFicheroITV::close(DString* error) {
    Forget();
    if (std::exchange(hook_owned_, false)) {
        stream_.reset();
        if (TPackageHook* hook = PackageHook())
            hook->Close(file_name_);
        return true;
    }
    if (stream_ != nullptr) {
        const bool closed = stream_->Close(error);
        stream_.reset();
        return closed;
    }
    return !temporary_pending_ || Commit(error);
}

// What belongs to the file that was open.
void TFicheroITV::Forget() {
    memory_.Free();
    window_.Release();
    put_back_.Clear();
}

bool TFicheroITV::Commit(DString* error) {
    DString temporary = file_name_;
    temporary += ".$$$";
    if (!FileExists(temporary)) {
        if (error != nullptr)
            *error = "Error TFicheroITV close 1";
        return false;
    }
    const int32_t stage = MakeRoom();
    if (MoveFileTo(temporary, file_name_))
        return true;
    const DWORD code = GetLastError();
    if (error != nullptr) {
        *error = "Error TFicheroITV close 2.";
        *error += " err=";
        *error += static_cast<int>(code);
        *error += " ex=";
        *error += static_cast<int>(stage);
    }
    return false;
}

// Copies the target aside and deletes it. The stage of that: 0 there was none, 1 it is gone, 2 it
// is still there, because it could not be deleted or, having no copy, was not to be.
int32_t TFicheroITV::MakeRoom() const {
    if (!FileExists(file_name_))
        return 0;
    DString backup = file_name_;
    backup += ".BAK";
    if (CopyFileTo(file_name_, backup, false))
        RemoveFile(file_name_);
    return FileExists(file_name_) ? 2 : 1;
}

}  // namespace zelto
