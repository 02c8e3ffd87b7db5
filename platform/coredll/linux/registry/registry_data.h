// The registry in memory: keys with their values. Names compare without case (A to Z, and the
// accented letters of Latin-1) and keep the case in which they were made.

#ifndef ZELTO_PLATFORM_COREDLL_LINUX_REGISTRY_REGISTRY_DATA_H
#define ZELTO_PLATFORM_COREDLL_LINUX_REGISTRY_REGISTRY_DATA_H

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "platform/coredll/api/base.h"

namespace zelto::coredll {

// The limits. Names are counted in units, the root is no level.
constexpr size_t kMaxRegistryName = 255;  // of a key or a value
constexpr size_t kMaxKeyLevels = 16;
constexpr size_t kMaxValueBytes = 4096;

constexpr std::u16string_view kRegistryRoots[] = {
    u"HKEY_CLASSES_ROOT",
    u"HKEY_CURRENT_USER",
    u"HKEY_LOCAL_MACHINE",
    u"HKEY_USERS",
};

struct RegistryValue {
    std::u16string name;  // empty: the unnamed value
    DWORD type = 0;
    std::vector<BYTE> data;
};

struct RegistryKey {
    std::u16string path;                             // with the root's name: "HKEY_USERS\a\b"
    std::map<std::u16string, RegistryValue> values;  // by folded name
};

// The name in the form in which equal names are the same.
std::u16string FoldRegistryName(std::u16string_view name);

// Why a path names no key that could be: an unknown root, an empty name, a name too long or with a
// control character or half a surrogate pair, too many levels. Null when it does.
const char* KeyPathProblem(std::u16string_view path);

// Holds the roots from the start. Not safe for use from several threads at once.
class Registry {
  public:
    Registry();

    // Null when there is no such key.
    RegistryKey* Find(std::u16string_view path);
    const RegistryKey* Find(std::u16string_view path) const;
    // The key, made with its parents where they miss. The path must be without problem.
    RegistryKey& Add(std::u16string_view path, bool& made);

    // In an order that depends on the names only; a key comes after its parents.
    const std::map<std::u16string, RegistryKey>& Keys() const { return keys_; }

  private:
    std::map<std::u16string, RegistryKey> keys_;  // by folded path
};

}  // namespace zelto::coredll

#endif
