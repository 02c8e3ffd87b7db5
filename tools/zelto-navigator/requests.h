// What the stand-in does with each request of the protocol.

#ifndef ZELTO_TOOLS_ZELTO_NAVIGATOR_REQUESTS_H
#define ZELTO_TOOLS_ZELTO_NAVIGATOR_REQUESTS_H

#include <span>
#include <string>
#include <string_view>

#include "tools/zelto-navigator/navigator.h"

namespace zelto::navigator {

struct Request {
    char letter;  // whose form and meaning are in the table of calls
    // Carries the request out and returns the reply.
    std::string (*handle)(Navigator& navigator, std::string_view arguments);
};

std::span<const Request> Requests();

// The request that a line asks for, "<letter>|<arguments>\n", or null.
const Request* FindRequest(std::string_view line);

// Carries out a request line and returns the reply. Any bytes are good input.
std::string Answer(Navigator& navigator, std::string_view line);

}  // namespace zelto::navigator

#endif
