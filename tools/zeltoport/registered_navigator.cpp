#include "tools/zeltoport/registered_navigator.h"

#include <algorithm>
#include <filesystem>
#include <fmt/core.h>

#include "plugins/zelto_port_dll/protocol.h"
#include "tools/text/wide.h"
#include "tools/zeltoport/session.h"

namespace zelto::tools {

namespace {

const HKEY kRoot = HKEY_LOCAL_MACHINE;

// A key of the registry, closed with the object.
struct Key {
    HKEY handle = nullptr;
    ~Key() {
        if (handle != nullptr)
            RegCloseKey(handle);
    }
};

// The device writes a backslash for the host's slash, and cannot write the host's backslash.
std::u16string DevicePath(const std::string& host_path) {
    std::u16string path;
    if (host_path.find('\\') != std::string::npos || !WideFromUtf8(host_path, path))
        throw CommandError(
            fmt::format("The path {} cannot be written on the device: no backslash "
                        "and nothing but UTF-8, please.",
                        Printable(host_path)));
    std::replace(path.begin(), path.end(), u'/', u'\\');
    if (path.size() > kMaxNavigatorPath)
        throw CommandError(
            fmt::format("The path {} has {} characters; the library takes {} at "
                        "most. Put the navigator, or a copy, nearer to the root.",
                        host_path, path.size(), kMaxNavigatorPath));
    return path;
}

void Store(const std::u16string& path) {
    Key key;
    LONG error = RegCreateKeyExW(kRoot, kNavigatorKey, 0, nullptr, 0, KEY_SET_VALUE, nullptr,
                                 &key.handle, nullptr);
    if (error == NO_ERROR) {
        const auto size = static_cast<DWORD>((path.size() + 1) * sizeof(WCHAR));
        error = RegSetValueExW(key.handle, kNavigatorValue, 0, REG_SZ,
                               reinterpret_cast<const BYTE*>(path.c_str()), size);
    }
    if (error != NO_ERROR)
        throw CommandError(fmt::format("The registry cannot be written (error {}).", error),
                           kExitDevice);
}

}  // namespace

bool IsProgram(const std::string& path) {
    using std::filesystem::perms;
    std::error_code error;
    const auto status = std::filesystem::status(path, error);
    constexpr perms kAnyExecute = perms::owner_exec | perms::group_exec | perms::others_exec;
    return std::filesystem::is_regular_file(status) &&
           (status.permissions() & kAnyExecute) != perms::none;
}

std::string NavigatorBeside() {
    WCHAR path[MAX_PATH * 2];
    const DWORD size = GetModuleFileNameW(nullptr, path, MAX_PATH * 2);
    std::string own = Utf8FromWide({path, size});
    std::replace(own.begin(), own.end(), '\\', '/');
    // Installed, the two lie in one folder; where they were built, in two next to each other.
    const auto folder = std::filesystem::path(own).parent_path();
    for (const auto& beside : {folder / "zelto-navigator",
                               folder.parent_path() / "zelto-navigator" / "zelto-navigator"}) {
        if (IsProgram(beside.string()))
            return beside.string();
    }
    return "";
}

std::string RegisterNavigator(const std::string& path) {
    const auto full = std::filesystem::absolute(path).lexically_normal();
    if (!IsProgram(full.string()))
        throw CommandError(fmt::format("{} is not a program.", full.string()));
    Store(DevicePath(full.string()));
    return full.string();
}

std::string RegisteredNavigator() {
    Key key;
    if (RegOpenKeyExW(kRoot, kNavigatorKey, 0, KEY_QUERY_VALUE, &key.handle) != NO_ERROR)
        return "";
    WCHAR path[MAX_PATH] = {};
    DWORD size = sizeof path - sizeof(WCHAR);
    if (RegQueryValueExW(key.handle, kNavigatorValue, nullptr, nullptr,
                         reinterpret_cast<BYTE*>(path), &size) != NO_ERROR)
        return "";
    return Utf8FromWide(path);
}

}  // namespace zelto::tools
