#include "plugins/zelto_port_dll/replies.h"

#include <algorithm>

#include "plugins/zelto_port_dll/status_reply.h"
#include "plugins/zelto_port_dll/transport.h"

namespace zelto {

namespace {

int32_t Decode(const char* command, const char* arguments, char* buffer, uint32_t size,
               int32_t short_reply) {
    uint32_t bytes_read = 0;
    if (const int32_t result = Transact(command, arguments, buffer, size, bytes_read))
        return result;
    return ResultOfStatus({buffer, bytes_read}, short_reply);
}

}  // namespace

int32_t DecodeStatus(const char* command, const char* arguments, uint32_t size) {
    char reply[kReplySize + 1];
    return Decode(command, arguments, reply, std::min(size, kReplySize),
                  ZELTO_NAV_PORT_SHORT_REPLY);
}

int32_t DecodeStatusInto(const char* command, const char* arguments, char* buffer, uint32_t size) {
    return Decode(command, arguments, buffer, size, ZELTO_NAV_PORT_SHORT_STREET_REPLY);
}

}  // namespace zelto
