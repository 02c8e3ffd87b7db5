// Package files: an application may register a hook through which a member of a package is opened
// as if it were a file of its own, "\data\maps.pkg\roads.txt" for example.

#ifndef ZELTO_COMMON_FILES_PACKAGE_HOOK_H
#define ZELTO_COMMON_FILES_PACKAGE_HOOK_H

#include <cstdint>

#include "common/text/dstring.h"

namespace zelto {

class TFicheroITV;

// Implemented by the application, called while record files are opened and closed, on the thread
// that does so. Error texts may be null. A package flag other than 0 says that the member's text is
// stored with every byte combined by exclusive OR with 0xAA. The order of the operations is fixed.
// Thread safety: the hook's own affair; record files on several threads call it at the same time.
class TPackageHook {
  public:
    // Whether the directory denotes a package that this hook serves.
    virtual bool Accepts(const DString& directory) = 0;

    // Finds a member while `container` is open on its file, in binary reading at position 0.
    // `offset` and `length` receive the member's region in bytes.
    virtual bool Locate(TFicheroITV& container, const DString& package, const DString& member,
                        int64_t& offset, int64_t& length, uint8_t& package_flag,
                        DString* error) = 0;

    // Opens a member by giving the container a stream (TFicheroITV::SetHookStream), perhaps with a
    // data region. False with `stop` ends the opening; false without it lets the container open
    // the file itself.
    virtual bool Open(const DString& package, const DString& member, TFicheroITV& container,
                      bool& stop, uint8_t& package_flag, DString* error) = 0;

    // A container gave back the hook's stream; the name is the one that it was opened by.
    virtual void Close(const DString& file_name) = 0;

    // Whether a path that is not on disk is a member of a package.
    virtual bool Exists(const DString& path) = 0;

  protected:
    ~TPackageHook() = default;
};

// Registers the hook of this process, not owned; null removes it. No record file may be opened or
// closed meanwhile.
inline TPackageHook* g_package_hook = nullptr;
inline void SetPackageHook(TPackageHook* hook) {
    g_package_hook = hook;
}
inline TPackageHook* PackageHook() {  // null: none
    return g_package_hook;
}

}  // namespace zelto

#endif
