// Finding, starting, showing and closing the navigator.

#include <algorithm>
#include <cstring>

#include "common/text/codepage.h"
#include "plugins/zelto_port_dll/connection.h"
#include "plugins/zelto_port_dll/exports.h"
#include "plugins/zelto_port_dll/replies.h"
#include "plugins/zelto_port_dll/zelto_port.h"

namespace zelto {

namespace {

constexpr int32_t kInterfaceVersion = 4;
constexpr int kWindowPolls = 100;
constexpr DWORD kWindowPollPause = 100;  // ms
constexpr DWORD kSettlePause = 5000;     // ms; what a navigator takes to finish starting

// Stores the registry's path, cut to whole units and terminated: what was stored there may lack
// its terminator, or be no text at all.
bool ReadExecutablePath() {
    HKEY key = nullptr;
    if (RegOpenKeyExW(HKEY_LOCAL_MACHINE, kNavigatorKey, 0, KEY_QUERY_VALUE, &key) != ERROR_SUCCESS)
        return false;
    WCHAR path[kExecutablePathUnits + 1] = {};
    DWORD size = kExecutablePathBytes;
    const LONG result = RegQueryValueExW(key, kNavigatorValue, nullptr, nullptr,
                                         reinterpret_cast<BYTE*>(path), &size);
    RegCloseKey(key);
    if (result != ERROR_SUCCESS)
        return false;
    path[std::min<size_t>(size / sizeof(WCHAR), kExecutablePathUnits)] = 0;
    std::memcpy(g_connection.executable_path, path, sizeof(path));
    return true;
}

void DeriveFolder() {
    std::memcpy(g_connection.folder, g_connection.executable_path, sizeof(g_connection.folder));
    if (const WCHAR* last = wcsrchr(g_connection.folder, '\\'))
        g_connection.folder[last - g_connection.folder] = 0;
}

bool FindNavigator() {
    g_connection.window = FindWindowW(g_connection.window_class, nullptr);
    return g_connection.window != nullptr;
}

bool LaunchNavigator() {
    SHELLEXECUTEINFO info = {};
    info.cbSize = sizeof(info);
    info.lpVerb = TEXT("OPEN");
    info.lpFile = g_connection.executable_path;
    if (!ShellExecuteEx(&info))
        return false;
    for (int poll = 0; poll < kWindowPolls; ++poll) {
        Sleep(kWindowPollPause);
        if (FindNavigator())
            break;
    }
    Sleep(kSettlePause);
    return g_connection.window != nullptr;
}

// The answer itself is of no interest, only that there is one.
int32_t FirstExchange() {
    char answer[32];
    g_connection.reconnect_every_request = 1;
    g_connection.long_wait = 1;
    const int32_t result = ZeltoNavPort_GetString("0", 20, answer);
    g_connection.long_wait = 0;
    return result;
}

int32_t Initialise() {
    SetCurrentCodepage(CP_UTF8);
    g_connection.transport_enabled = 1;
    g_connection.queue_channel = 1;
    if (!ReadExecutablePath())
        return ZELTO_NAV_PORT_NOT_INSTALLED;
    DeriveFolder();
    if (!FindNavigator() && !LaunchNavigator())
        return ZELTO_NAV_PORT_NO_NAVIGATOR;
    return FirstExchange();
}

}  // namespace

}  // namespace zelto

using zelto::g_connection;

int32_t ZeltoNavPort_Init() {
    return zelto::Guarded(zelto::Initialise);
}

int32_t ZeltoNavPort_IsOpen() {
    return zelto::Guarded(
        [] { return zelto::FindNavigator() ? ZELTO_NAV_PORT_OK : ZELTO_NAV_PORT_NO_WINDOW; });
}

int32_t ZeltoNavPort_Version() {
    return zelto::kInterfaceVersion;
}

int32_t ZeltoNavPort_Show() {
    if (g_connection.window == nullptr)
        return ZELTO_NAV_PORT_NO_WINDOW;
    ShowWindow(g_connection.window, SW_SHOW);
    ShowWindow(g_connection.window, SW_RESTORE);  // 13 on the device: also undoes a minimise
    SetForegroundWindow(g_connection.window);
    return ZELTO_NAV_PORT_OK;
}

int32_t ZeltoNavPort_Minimize() {
    if (g_connection.window == nullptr)
        return ZELTO_NAV_PORT_NO_WINDOW;
    ShowWindow(g_connection.window, SW_MINIMIZE);
    return ZELTO_NAV_PORT_OK;
}

int32_t ZeltoNavPort_CloseZeltoNav() {
    return zelto::Guarded([] {
        const int32_t result = zelto::DecodeStatus("R", "0", zelto::kReplySize);
        if (result == ZELTO_NAV_PORT_OK)
            g_connection.window = nullptr;
        return result;
    });
}
