// The one connection of this process with the navigator.

#ifndef ZELTO_PLUGINS_ZELTO_PORT_DLL_CONNECTION_H
#define ZELTO_PLUGINS_ZELTO_PORT_DLL_CONNECTION_H

#include <cstdint>

#include "platform/coredll/coredll.h"
#include "plugins/zelto_port_dll/protocol.h"

namespace zelto {

// Built with the values of a process that has not called ZeltoNavPort_Init. Handles stay open at
// unload. Flags are 0 or 1.
// Thread safety: none; one thread at a time.
struct ConnectionState {
    HWND window = nullptr;  // the navigator's; null: not known
    const WCHAR* window_class = kWindowClass;

    // One unit more than the registry may fill, so that there is always room for a terminator.
    WCHAR executable_path[kExecutablePathUnits + 1] = {};
    WCHAR folder[kExecutablePathUnits + 1] = {};  // the navigator's, without trailing backslash

    uint8_t transport_enabled = 1;
    uint8_t queue_channel = 1;            // 1: message queues, 0: packet files
    uint8_t reconnect_every_request = 1;  // a fresh queue pair and a longer write time-out
    int32_t long_wait = 0;                // 1 during the first exchange: more patience

    int32_t generation = 1;  // of the queue pair; part of the queues' names
    HANDLE write_queue = nullptr;
    HANDLE read_queue = nullptr;
    HANDLE reply_event = nullptr;  // of the packet files; made once
};

inline constinit ConnectionState g_connection;

}  // namespace zelto

#endif
