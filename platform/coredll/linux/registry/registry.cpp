// The registry calls: every one of them works on the file as it is at that moment.

#include "platform/coredll/api/registry.h"

#include <algorithm>
#include <memory>
#include <optional>

#include "platform/coredll/linux/base/handle_table.h"
#include "platform/coredll/linux/registry/kept_registry.h"
#include "platform/coredll/linux/registry/registry_file.h"

namespace zelto::coredll {
namespace {

// What a key handle's word points to.
struct OpenKey {
    std::u16string path;
};

constexpr uintptr_t kFirstRoot = 0x80000000u;

std::u16string* PathOfWord(uintptr_t word) {
    return &reinterpret_cast<OpenKey*>(word)->path;
}

bool IsRootKey(HKEY key) {
    return reinterpret_cast<uintptr_t>(key) - kFirstRoot < std::size(kRegistryRoots);
}

// The path of a root or an open key; none for a bad handle.
std::optional<std::u16string> PathOfKey(HKEY key) {
    if (IsRootKey(key))
        return std::u16string(kRegistryRoots[reinterpret_cast<uintptr_t>(key) - kFirstRoot]);
    uintptr_t word = 0;
    if (!LookUpHandle(key, HandleKind::kRegistryKey, word))
        return std::nullopt;
    return *PathOfWord(word);
}

// Path of a key below another; one backslash at the end does not count. 0, 6 or 87.
DWORD SubKeyPath(HKEY key, LPCWSTR sub_key, std::u16string& path) {
    const std::optional<std::u16string> parent = PathOfKey(key);
    if (!parent)
        return ERROR_INVALID_HANDLE;
    path = *parent;
    std::u16string_view rest = sub_key == nullptr ? u"" : sub_key;
    if (rest.starts_with(u'\\'))
        return ERROR_INVALID_PARAMETER;
    if (rest.ends_with(u'\\'))
        rest.remove_suffix(1);
    if (!rest.empty())
        path.append(u"\\").append(rest);
    return ERROR_SUCCESS;
}

DWORD MakeKeyHandle(const std::u16string& path, HKEY* result) {
    auto open_key = std::make_unique<OpenKey>(OpenKey{path});
    HANDLE handle =
        MakeHandle(HandleKind::kRegistryKey, reinterpret_cast<uintptr_t>(open_key.get()));
    if (handle == nullptr)
        return ERROR_TOO_MANY_OPEN_FILES;
    (void)open_key.release();  // the handle's now
    *result = static_cast<HKEY>(handle);
    return ERROR_SUCCESS;
}

DWORD OpenKeyHandle(HKEY key, LPCWSTR sub_key, HKEY* result) {
    std::u16string path;
    DWORD error = SubKeyPath(key, sub_key, path);
    std::shared_ptr<const Registry> registry;
    if (error == ERROR_SUCCESS)
        error = ReadRegistry(registry);
    if (error != ERROR_SUCCESS)
        return error;
    return registry->Find(path) == nullptr ? DWORD{ERROR_FILE_NOT_FOUND}
                                           : MakeKeyHandle(path, result);
}

// The value under an open key, from the file. 0, 2, 5, 6, 1009 or 1018.
DWORD ReadValue(HKEY key, LPCWSTR name, RegistryValue& value) {
    const std::optional<std::u16string> path = PathOfKey(key);
    if (!path)
        return ERROR_INVALID_HANDLE;
    std::shared_ptr<const Registry> registry;
    const DWORD error = ReadRegistry(registry);
    if (error != ERROR_SUCCESS)
        return error;
    const RegistryKey* found = registry->Find(*path);
    if (found == nullptr)
        return ERROR_KEY_DELETED;
    const auto entry = found->values.find(FoldRegistryName(name == nullptr ? u"" : name));
    if (entry == found->values.end())
        return ERROR_FILE_NOT_FOUND;
    value = entry->second;
    return ERROR_SUCCESS;
}

DWORD DeliverValue(const RegistryValue& value, DWORD* type, BYTE* data, DWORD* size) {
    if (type != nullptr)
        *type = value.type;
    if (size == nullptr)
        return ERROR_SUCCESS;
    const DWORD room = *size;
    *size = static_cast<DWORD>(value.data.size());
    if (data == nullptr)
        return ERROR_SUCCESS;
    if (room < value.data.size())
        return ERROR_MORE_DATA;
    std::copy(value.data.begin(), value.data.end(), data);
    return ERROR_SUCCESS;
}

DWORD StoreValue(Registry& registry, std::u16string_view path, const RegistryValue& value,
                 bool& changed) {
    RegistryKey* key = registry.Find(path);
    if (key == nullptr)
        return ERROR_KEY_DELETED;
    RegistryValue& stored = key->values[FoldRegistryName(value.name)];
    const std::u16string first_name = stored.name;
    stored = value;
    if (!first_name.empty())
        stored.name = first_name;  // keeps the case in which it was made
    changed = true;
    return ERROR_SUCCESS;
}

}  // namespace
}  // namespace zelto::coredll

using namespace zelto::coredll;

LONG RegOpenKeyExW(HKEY key, LPCWSTR sub_key, DWORD /*options*/, DWORD /*access*/, HKEY* result) {
    if (result == nullptr)
        return ERROR_INVALID_PARAMETER;
    return static_cast<LONG>(OpenKeyHandle(key, sub_key, result));
}

LONG RegQueryValueExW(HKEY key, LPCWSTR name, DWORD* reserved, DWORD* type, BYTE* data,
                      DWORD* size) {
    if (reserved != nullptr || (data != nullptr && size == nullptr))
        return ERROR_INVALID_PARAMETER;
    RegistryValue value;
    const DWORD error = ReadValue(key, name, value);
    return static_cast<LONG>(error != ERROR_SUCCESS ? error
                                                    : DeliverValue(value, type, data, size));
}

LONG RegCreateKeyExW(HKEY key, LPCWSTR sub_key, DWORD reserved, LPWSTR /*class_name*/,
                     DWORD /*options*/, DWORD /*access*/, SECURITY_ATTRIBUTES* /*security*/,
                     HKEY* result, DWORD* disposition) {
    if (result == nullptr || reserved != 0)
        return ERROR_INVALID_PARAMETER;
    std::u16string path;
    DWORD error = SubKeyPath(key, sub_key, path);
    if (error == ERROR_SUCCESS && KeyPathProblem(path) != nullptr)
        error = ERROR_INVALID_PARAMETER;
    bool made = false;
    if (error == ERROR_SUCCESS) {
        error = UpdateRegistry([&](Registry& registry, bool& changed) {
            registry.Add(path, made);
            changed = made;
            return DWORD{ERROR_SUCCESS};
        });
    }
    if (error == ERROR_SUCCESS)
        error = MakeKeyHandle(path, result);
    if (error == ERROR_SUCCESS && disposition != nullptr)
        *disposition = made ? REG_CREATED_NEW_KEY : REG_OPENED_EXISTING_KEY;
    return static_cast<LONG>(error);
}

LONG RegSetValueExW(HKEY key, LPCWSTR name, DWORD reserved, DWORD type, const BYTE* data,
                    DWORD size) {
    if (reserved != 0 || (data == nullptr && size != 0) || size > kMaxValueBytes)
        return ERROR_INVALID_PARAMETER;
    const std::optional<std::u16string> path = PathOfKey(key);
    if (!path)
        return ERROR_INVALID_HANDLE;
    RegistryValue value;
    value.name = name == nullptr ? u"" : name;
    if (value.name.size() > kMaxRegistryName)
        return ERROR_INVALID_PARAMETER;
    value.type = type;
    value.data.assign(data, data + size);
    return static_cast<LONG>(UpdateRegistry([&](Registry& registry, bool& changed) {
        return StoreValue(registry, *path, value, changed);
    }));
}

LONG RegCloseKey(HKEY key) {
    if (IsRootKey(key))
        return ERROR_SUCCESS;
    uintptr_t word = 0;
    if (!TakeHandle(key, HandleKind::kRegistryKey, word))
        return ERROR_INVALID_HANDLE;
    delete reinterpret_cast<OpenKey*>(word);
    return ERROR_SUCCESS;
}
