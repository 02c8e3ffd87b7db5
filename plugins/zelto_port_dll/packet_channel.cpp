#include "plugins/zelto_port_dll/packet_channel.h"

#include <string>

#include "platform/coredll/coredll.h"
#include "plugins/zelto_port_dll/connection.h"
#include "plugins/zelto_port_dll/zelto_port.h"

namespace zelto {

namespace {

// Milliseconds.
constexpr DWORD kReplyTimeout = 1000;
constexpr DWORD kLongReplyTimeout = 10000;

HANDLE OpenPacketFile(const WCHAR* name, DWORD disposition) {
    const std::basic_string<WCHAR> path = std::basic_string<WCHAR>(g_connection.folder) + name;
    return CreateFileW(path.c_str(), GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ, nullptr,
                       disposition, FILE_ATTRIBUTE_NORMAL, nullptr);
}

// False when the navigator did not set the event in time.
bool AnnounceAndWait() {
    if (g_connection.reply_event == nullptr)
        g_connection.reply_event = CreateEventW(nullptr, FALSE, FALSE, kReplyEvent);
    EventModify(g_connection.reply_event, EVENT_RESET);
    // Message 17698.
    PostMessageW(g_connection.window, kAnnouncement, kAnnouncementWParam, kAnnouncementBase);
    const DWORD timeout = g_connection.long_wait != 0 ? kLongReplyTimeout : kReplyTimeout;
    return WaitForSingleObject(g_connection.reply_event, timeout) != WAIT_TIMEOUT;
}

}  // namespace

int32_t ExchangePacketFiles(RequestLine& line, char* buffer, uint32_t size, uint32_t& bytes_read) {
    const bool enabled = g_connection.transport_enabled != 0;
    HANDLE file = INVALID_HANDLE_VALUE;
    if (enabled) {
        file = OpenPacketFile(kRequestFile, CREATE_ALWAYS);
        if (file == INVALID_HANDLE_VALUE)
            return ZELTO_NAV_PORT_REQUEST_FILE;
    }
    DWORD written = 0;
    const BOOL wrote = WriteFile(file, line.Bytes(), line.Length(), &written, nullptr);
    line.ReleaseBytes();
    if (wrote < 1) {
        CloseHandle(file);
        return ZELTO_NAV_PORT_NO_WINDOW;  // one number for both
    }
    if (enabled) {
        CloseHandle(file);
        if (!AnnounceAndWait())
            return ZELTO_NAV_PORT_EVENT_TIMEOUT;
        file = OpenPacketFile(kReplyFile, OPEN_EXISTING);
        if (file == INVALID_HANDLE_VALUE)
            return ZELTO_NAV_PORT_NO_REPLY_FILE;
    }
    DWORD read = 0;
    const BOOL done = ReadFile(file, buffer, size, &read, nullptr);
    CloseHandle(file);
    bytes_read = read;
    if (!done)
        return ZELTO_NAV_PORT_BAD_REPLY;  // one number for both
    buffer[read] = '\0';
    return ZELTO_NAV_PORT_OK;
}

}  // namespace zelto
