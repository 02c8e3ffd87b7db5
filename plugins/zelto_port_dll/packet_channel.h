// The channel of packet files: the request in one file, the reply in another, both in the
// navigator's folder, and a named event that tells when the reply is there.

#ifndef ZELTO_PLUGINS_ZELTO_PORT_DLL_PACKET_CHANNEL_H
#define ZELTO_PLUGINS_ZELTO_PORT_DLL_PACKET_CHANNEL_H

#include <cstdint>

#include "plugins/zelto_port_dll/request_line.h"

namespace zelto {

// Arguments and result as Transact, which calls it. With the transport disabled no file is ever
// opened, and the write fails with 6.
// Thread safety: one thread at a time.
int32_t ExchangePacketFiles(RequestLine& line, char* buffer, uint32_t size, uint32_t& bytes_read);

}  // namespace zelto

#endif
