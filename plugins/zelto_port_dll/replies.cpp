#include "plugins/zelto_port_dll/replies.h"

#include <algorithm>
#include <charconv>
#include <limits>
#include <string_view>

#include "plugins/zelto_port_dll/transport.h"
#include "plugins/zelto_port_dll/zelto_port.h"

namespace zelto {

namespace {

// As atoi, on a text without terminator; a number that does not fit becomes the nearest that does.
int32_t LeadingNumber(std::string_view text) {
    text.remove_prefix(std::min(text.find_first_not_of(" \t\n\v\f\r"), text.size()));
    if (text.starts_with('+') && !text.starts_with("+-"))
        text.remove_prefix(1);
    int32_t number = 0;
    const auto parsed = std::from_chars(text.data(), text.data() + text.size(), number);
    if (parsed.ec != std::errc::result_out_of_range)
        return number;
    using Limits = std::numeric_limits<int32_t>;
    return text.front() == '-' ? Limits::min() : Limits::max();
}

int32_t Decode(const char* command, const char* arguments, char* buffer, uint32_t size,
               int32_t short_reply) {
    uint32_t bytes_read = 0;
    if (const int32_t result = Transact(command, arguments, buffer, size, bytes_read))
        return result;
    const std::string_view reply(buffer, bytes_read);
    if (reply.size() < 2)
        return short_reply;
    if (reply[0] == 'A')
        return ZELTO_NAV_PORT_OK;
    if (reply[0] == 'B' && reply.size() > 2)
        return LeadingNumber(reply.substr(2));
    return ZELTO_NAV_PORT_BAD_REPLY;
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
