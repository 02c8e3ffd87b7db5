#include "plugins/zelto_port_dll/packet_channel.h"

#include <string>

#include "platform/coredll/coredll.h"
#include "plugins/zelto_port_dll/connection.h"
#include "plugins/zelto_port_dll/transport.h"

namespace zelto {

namespace {

// Milliseconds.
constexpr DWORD kReplyTimeout = 1000;
constexpr DWORD kLongReplyTimeout = 10000;

constexpr int32_t kRequestFileNotCreated = 5;
constexpr int32_t kRequestFileNotWritten = 6;
constexpr int32_t kReplyFileNotRead = 9;
constexpr int32_t kReplyFileNotOpened = 88;
constexpr int32_t kNoReplyEvent = 2007;

HANDLE OpenPacketFile(const WCHAR* name, DWORD disposition) {
    const std::basic_string<WCHAR> path = std::basic_string<WCHAR>(g_connection.folder) + name;
    return CreateFileW(path.c_str(), GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ, nullptr,
                       disposition, FILE_ATTRIBUTE_NORMAL, nullptr);
}

// False when the navigator did not set the event in time.
bool AnnounceAndWait() {
    if (g_connection.reply_event == nullptr)
        g_connection.reply_event = CreateEventW(nullptr, FALSE, FALSE, TEXT("EventZeltoAPI"));
    EventModify(g_connection.reply_event, EVENT_RESET);
    PostMessageW(g_connection.window, kAnnouncement, kAnnouncementWParam, kAnnouncementBase);
    const DWORD timeout = g_connection.long_wait != 0 ? kLongReplyTimeout : kReplyTimeout;
    return WaitForSingleObject(g_connection.reply_event, timeout) != WAIT_TIMEOUT;
}

}  // namespace

int32_t ExchangePacketFiles(RequestLine& line, char* buffer, uint32_t size, uint32_t& bytes_read) {
    const bool enabled = g_connection.transport_enabled != 0;
    HANDLE file = INVALID_HANDLE_VALUE;
    if (enabled) {
        file = OpenPacketFile(TEXT("\\PACKETTX.DAT"), CREATE_ALWAYS);
        if (file == INVALID_HANDLE_VALUE)
            return kRequestFileNotCreated;
    }
    DWORD written = 0;
    const BOOL wrote = WriteFile(file, line.Bytes(), line.Length(), &written, nullptr);
    line.ReleaseBytes();
    if (wrote < 1) {
        CloseHandle(file);
        return kRequestFileNotWritten;
    }
    if (enabled) {
        CloseHandle(file);
        if (!AnnounceAndWait())
            return kNoReplyEvent;
        file = OpenPacketFile(TEXT("\\PACKETRX.DAT"), OPEN_EXISTING);
        if (file == INVALID_HANDLE_VALUE)
            return kReplyFileNotOpened;
    }
    const BOOL read = ReadFile(file, buffer, size, &bytes_read, nullptr);
    CloseHandle(file);
    if (!read)
        return kReplyFileNotRead;
    buffer[bytes_read] = '\0';
    return 0;
}

}  // namespace zelto
