// What library and navigator have agreed on: names, numbers and limits of their requests.

#ifndef ZELTO_PLUGINS_ZELTO_PORT_DLL_PROTOCOL_H
#define ZELTO_PLUGINS_ZELTO_PORT_DLL_PROTOCOL_H

#include "platform/coredll/coredll.h"

namespace zelto {

// The navigator's top-level window is found by its class.
inline constexpr const WCHAR* kWindowClass = TEXT("ZELTOPOCKETMAINW");

// Where the registry names the navigator's program, under HKEY_LOCAL_MACHINE.
inline constexpr const WCHAR* kNavigatorKey = TEXT("SOFTWARE\\ZeltoNav\\General");
inline constexpr const WCHAR* kNavigatorValue = TEXT("Path_EXE");
inline constexpr DWORD kExecutablePathBytes = 200;
inline constexpr size_t kExecutablePathUnits = kExecutablePathBytes / sizeof(WCHAR);

// The posted window message that tells the navigator of a request. lParam is kAnnouncementBase for
// packet files, else that and the generation of the client's queue pair.
inline constexpr UINT kAnnouncement = 17698;
inline constexpr WPARAM kAnnouncementWParam = 15;
inline constexpr LPARAM kAnnouncementBase = 3;

// A queue pair: "ZeltoApiMsgQ<generation>_tx" carries the request, "..._rx" the reply.
inline constexpr const char* kQueuePrefix = "ZeltoApiMsgQ";
inline constexpr DWORD kMaxMessages = 20;
inline constexpr DWORD kMaxMessageBytes = 1024;

constexpr MSGQUEUEOPTIONS QueueOptions(BOOL read_access) {
    return {sizeof(MSGQUEUEOPTIONS), MSGQUEUE_ALLOW_BROKEN, kMaxMessages, kMaxMessageBytes,
            read_access};
}

// Packet files, in the folder of the navigator's program, and the event that tells of the reply.
inline constexpr const WCHAR* kRequestFile = TEXT("\\PACKETTX.DAT");
inline constexpr const WCHAR* kReplyFile = TEXT("\\PACKETRX.DAT");
inline constexpr const WCHAR* kReplyEvent = TEXT("EventZeltoAPI");

}  // namespace zelto

#endif
