#include "bench/request/responder.h"

#include <cstring>
#include <string>

#include "plugins/zelto_port_dll/protocol.h"

namespace zelto::bench {
namespace {

HANDLE OpenEnd(LPARAM generation, const char* suffix, BOOL read) {
    WCHAR name[64];
    const std::string text = "ZeltoApiMsgQ" + std::to_string(generation) + suffix;
    for (size_t i = 0; i <= text.size(); ++i)
        name[i] = static_cast<WCHAR>(text.c_str()[i]);
    const MSGQUEUEOPTIONS options = QueueOptions(read);
    return CreateMsgQueue(name, &options);
}

void Answer(LPARAM generation) {
    HANDLE requests = OpenEnd(generation, "_tx", TRUE);
    HANDLE replies = OpenEnd(generation, "_rx", FALSE);
    char request[1024];
    DWORD size = 0;
    if (ReadMsgQueue(requests, request, sizeof request, &size, 1000, nullptr)) {
        const char* reply = request[0] == 'F' ? "G|ok" : "A|";
        WriteMsgQueue(replies, reply, static_cast<DWORD>(std::strlen(reply)), 0, 0);
    }
    CloseMsgQueue(requests);
    CloseMsgQueue(replies);
}

}  // namespace

void RunResponder() {
    HWND window = CreateWindowExW(0, kWindowClass, nullptr, 0, 0, 0, 0, 0, nullptr, nullptr,
                                  nullptr, nullptr);
    for (MSG message{}; window != nullptr && GetMessageW(&message, window, 0, 0) > 0;) {
        if (message.message == kAnnouncement)
            Answer(message.lParam - kAnnouncementBase);
    }
}

void RegisterNavigator() {
    const WCHAR path[] = TEXT("\\bin\\true");  // never started
    HKEY key = nullptr;
    RegCreateKeyExW(HKEY_LOCAL_MACHINE, TEXT("SOFTWARE\\ZeltoNav\\General"), 0, nullptr, 0,
                    KEY_SET_VALUE, nullptr, &key, nullptr);
    RegSetValueExW(key, TEXT("Path_EXE"), 0, REG_SZ, reinterpret_cast<const BYTE*>(path),
                   sizeof path);
    RegCloseKey(key);
}

}  // namespace zelto::bench
