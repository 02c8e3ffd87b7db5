#include "plugins/zelto_port_dll/transport.h"

#include "common/text/dstring.h"
#include "plugins/zelto_port_dll/connection.h"
#include "plugins/zelto_port_dll/packet_channel.h"
#include "plugins/zelto_port_dll/request_line.h"
#include "plugins/zelto_port_dll/wide_text.h"

namespace zelto {

namespace {

constexpr DWORD kMaxMessages = 20;
constexpr DWORD kMaxMessageBytes = 1024;

// Milliseconds.
constexpr DWORD kWriteTimeout = 300;
constexpr DWORD kReconnectWriteTimeout = 4000;
constexpr DWORD kFullQueuePause = 3000;
constexpr DWORD kReadTimeout = 500;

constexpr int kLongWaitReads = 5;

constexpr int32_t kReadFailed = 10;
constexpr int32_t kDisconnected = 11;
constexpr int32_t kNotAnnounced = 12;
constexpr int32_t kNoReply = 1007;

HANDLE CreateQueue(const char* suffix, BOOL read_access) {
    DString name("ZeltoApiMsgQ");
    name += g_connection.generation;
    name += suffix;
    const MSGQUEUEOPTIONS options = {sizeof(MSGQUEUEOPTIONS), MSGQUEUE_ALLOW_BROKEN, kMaxMessages,
                                     kMaxMessageBytes, read_access};
    return CreateMsgQueue(WideText(name.c_str()).Units(), &options);
}

// Wraps round at the end of its range.
int32_t Add(int32_t a, int32_t b) {
    return static_cast<int32_t>(static_cast<uint32_t>(a) + static_cast<uint32_t>(b));
}

int32_t ReadResult(DWORD error) {
    switch (error) {
        case ERROR_TIMEOUT:
            return kNoReply;
        case ERROR_PIPE_NOT_CONNECTED:
            return kDisconnected;
        default:
            return kReadFailed;
    }
}

int32_t ReadReply(uint32_t request_length, char* buffer, uint32_t size, uint32_t& bytes_read) {
    for (int attempts = 1;; ++attempts) {
        DWORD flags = 0;
        if (ReadMsgQueue(g_connection.read_queue, buffer, size, &bytes_read, kReadTimeout, &flags))
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
    if (g_connection.write_queue != nullptr)
        CloseMsgQueue(g_connection.write_queue);
    if (g_connection.read_queue != nullptr)
        CloseMsgQueue(g_connection.read_queue);
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
    if (!PostMessageW(g_connection.window, kAnnouncement, kAnnouncementWParam, announcement))
        return kNotAnnounced;

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
