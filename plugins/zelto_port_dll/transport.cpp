#include "plugins/zelto_port_dll/transport.h"

#include <utility>

#include "common/text/codepage.h"
#include "common/text/dstring.h"
#include "plugins/zelto_port_dll/connection.h"
#include "plugins/zelto_port_dll/packet_channel.h"
#include "plugins/zelto_port_dll/request_line.h"
#include "plugins/zelto_port_dll/zelto_port.h"

namespace zelto {

namespace {

// Milliseconds.
constexpr DWORD kWriteTimeout = 300;
constexpr DWORD kReconnectWriteTimeout = 4000;
constexpr DWORD kFullQueuePause = 3000;
constexpr DWORD kReadTimeout = 500;

constexpr int kLongWaitReads = 5;

HANDLE CreateQueue(const char* suffix, BOOL read_access) {
    DString name(kQueuePrefix);
    name += g_connection.generation;
    name += suffix;
    const MSGQUEUEOPTIONS options = QueueOptions(read_access);
    return CreateMsgQueue(ToWide(name.c_str(), name.length(), CurrentCodepage()).c_str(), &options);
}

// Forgets the queue as well: without memory there may be no other to take its place.
void CloseQueue(HANDLE& queue) {
    if (HANDLE closing = std::exchange(queue, nullptr); closing != nullptr)
        CloseMsgQueue(closing);
}

// Wraps round at the end of its range.
int32_t Add(int32_t a, int32_t b) {
    return static_cast<int32_t>(static_cast<uint32_t>(a) + static_cast<uint32_t>(b));
}

int32_t ReadResult(DWORD error) {
    switch (error) {
        case ERROR_TIMEOUT:
            return ZELTO_NAV_PORT_TIMEOUT;
        case ERROR_PIPE_NOT_CONNECTED:
            return ZELTO_NAV_PORT_DISCONNECTED;
        default:
            return ZELTO_NAV_PORT_READ_FAILED;
    }
}

int32_t ReadReply(uint32_t request_length, char* buffer, uint32_t size, uint32_t& bytes_read) {
    for (int attempts = 1;; ++attempts) {
        DWORD read = 0;
        DWORD flags = 0;
        const BOOL done =
            ReadMsgQueue(g_connection.read_queue, buffer, size, &read, kReadTimeout, &flags);
        bytes_read = read;
        if (done)
            return 0;
        const DWORD error = GetLastError();
        if (error == ERROR_TIMEOUT && attempts > 1) {
            // The request is gone by now: what matters is the fresh queue pair and its
            // announcement, and a system that refuses a message without bytes ends the waiting.
            if (const int32_t result = SendOnQueue(nullptr, request_length, 1))
                return result;
        }
        if (error != ERROR_TIMEOUT || attempts == kLongWaitReads || g_connection.long_wait == 0)
            return ReadResult(error);
    }
}

}  // namespace

void OpenQueues() {
    CloseQueue(g_connection.write_queue);
    CloseQueue(g_connection.read_queue);
    g_connection.write_queue = CreateQueue("_tx", FALSE);
    g_connection.read_queue = CreateQueue("_rx", TRUE);
}

int32_t SendOnQueue(const void* request, uint32_t length, uint8_t reconnect) {
    DWORD timeout = kWriteTimeout;
    LPARAM announcement = kAnnouncementBase;
    if (g_connection.reconnect_every_request != 0 || reconnect != 0) {
        g_connection.generation = Add(g_connection.generation, 1);
        OpenQueues();
        announcement = Add(kAnnouncementBase, g_connection.generation);
        if (g_connection.reconnect_every_request != 0)
            timeout = kReconnectWriteTimeout;
    }
    // Message 17698.
    if (!PostMessageW(g_connection.window, kAnnouncement, kAnnouncementWParam, announcement))
        return ZELTO_NAV_PORT_NOT_ANNOUNCED;

    if (WriteMsgQueue(g_connection.write_queue, request, length, timeout, 0))
        return 0;
    const DWORD error = GetLastError();
    if (error != ERROR_TIMEOUT)
        return static_cast<int32_t>(error);
    Sleep(kFullQueuePause);
    if (WriteMsgQueue(g_connection.write_queue, request, length, timeout, 0))
        return 0;
    return -static_cast<int32_t>(GetLastError());  // the sign tells the second attempt
}

int32_t Transact(const char* command, const char* arguments, char* buffer, uint32_t size,
                 uint32_t& bytes_read) {
    bytes_read = 0;
    RequestLine line(command, arguments);
    if (g_connection.transport_enabled == 0 || g_connection.queue_channel == 0)
        return ExchangePacketFiles(line, buffer, size, bytes_read);

    const int32_t sent = SendOnQueue(line.Bytes(), line.Length(), 0);
    line.ReleaseBytes();
    return sent != 0 ? sent : ReadReply(line.Length(), buffer, size, bytes_read);
}

}  // namespace zelto
