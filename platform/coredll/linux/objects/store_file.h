// The store's file: opened, checked, made, mapped.

#ifndef ZELTO_PLATFORM_COREDLL_LINUX_OBJECTS_STORE_FILE_H
#define ZELTO_PLATFORM_COREDLL_LINUX_OBJECTS_STORE_FILE_H

#include <string>

#include "platform/coredll/linux/base/unique_fd.h"
#include "platform/coredll/linux/objects/store_layout.h"

namespace zelto::coredll {

constexpr const char* kStoreName = "store";  // in the device's directory

// A mapped store, guarded against the loss of its file (store_guard.h), and that file. The open
// file carries the mark that somebody uses the store, in every namespace of the host, until file
// and mapping are gone.
struct MappedStore {
    Store* store = nullptr;
    UniqueFd file;
};

// Opens the store of the device, in a form that is whole and of this host's boot and process-id
// namespace, and calls `join` on it before anybody else can open it. What is wrong with an
// existing file does not matter when nobody uses it: it is then made anew, its memory reserved on
// the disk. `join` answers what is in its way, "" when nothing is.
//
// Result: what is in the way, as a sentence that says what to do; "" when nothing was. Waits at
// most kConnectPatience for another process that is connecting.
constexpr int64_t kConnectPatience = 2'000'000'000;  // ns
std::string OpenStoreFile(MappedStore& mapped, std::string (*join)(Store& store));

void UnmapStore(Store* store);

}  // namespace zelto::coredll

#endif
