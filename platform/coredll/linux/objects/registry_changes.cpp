#include "platform/coredll/linux/objects/registry_changes.h"

#include <cstddef>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/coredll/linux/objects/store.h"
#include "platform/coredll/linux/objects/store_file.h"

namespace zelto::coredll {
namespace {

constexpr off_t kPlace = offsetof(Store, registry_changes);

// A file of another size is no store, and one of another version nobody of this one uses.
bool IsStore(int file) {
    struct stat status {};
    uint32_t version = 0;
    return file >= 0 && fstat(file, &status) == 0 && status.st_size == off_t{sizeof(Store)} &&
           pread(file, &version, sizeof version, offsetof(Store, version)) == sizeof version &&
           version == kStoreVersion;
}

}  // namespace

std::optional<uint32_t> RegistryChanges(const std::string& device) {
    const Store* store = ConnectedStore(device);
    if (store == nullptr)
        return std::nullopt;
    // Acquire: whoever sees the count finds the file as it was when it was written.
    return store->registry_changes.load(std::memory_order_acquire);
}

// A write to the file is seen in every mapping of it at once, and one of an aligned word whole.
void CountRegistryChange(const UniqueFd& device) {
    const UniqueFd file(
        openat(device.Get(), kStoreName, O_RDWR | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK));
    uint32_t count = 0;
    if (!IsStore(file.Get()) || pread(file.Get(), &count, sizeof count, kPlace) != sizeof count)
        return;
    ++count;
    (void)!pwrite(file.Get(), &count, sizeof count, kPlace);
}

}  // namespace zelto::coredll
