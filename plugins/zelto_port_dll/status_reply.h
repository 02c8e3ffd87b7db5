// What a status reply says: "A..." done, "B" and any character, then a number: refused.

#ifndef ZELTO_PLUGINS_ZELTO_PORT_DLL_STATUS_REPLY_H
#define ZELTO_PLUGINS_ZELTO_PORT_DLL_STATUS_REPLY_H

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <limits>
#include <string_view>

#include "plugins/zelto_port_dll/zelto_port.h"

namespace zelto {

// As atoi, on a text without terminator; a number that does not fit becomes the nearest that does.
inline int32_t LeadingNumber(std::string_view text) {
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

// The result for a reply to any request but a text query; `short_reply` for one of less than two
// bytes.
inline int32_t ResultOfStatus(std::string_view reply, int32_t short_reply) {
    if (reply.size() < 2)
        return short_reply;
    if (reply[0] == 'A')
        return ZELTO_NAV_PORT_OK;
    if (reply[0] == 'B' && reply.size() > 2)
        return LeadingNumber(reply.substr(2));
    return ZELTO_NAV_PORT_BAD_REPLY;
}

}  // namespace zelto

#endif
