// Namespaces and file systems of a trial's own.

#ifndef ZELTO_TESTS_SOAK_NAMESPACES_H
#define ZELTO_TESTS_SOAK_NAMESPACES_H

#include <cstddef>
#include <string>

namespace zelto::soak {

// Moves this process (or its later children) to namespaces of its own (CLONE_NEW...), in one of
// users too where the host asks for that. False when the host allows neither.
bool Unshare(int what);

// Mounts a file system in memory of so many bytes on a folder, for this process and its later
// children alone. False when the host does not allow it.
bool MountSmall(const std::string& folder, size_t bytes);

}  // namespace zelto::soak

#endif
