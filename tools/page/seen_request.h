// A request as the navigator saw it, in the form that the page takes.

#ifndef ZELTO_TOOLS_PAGE_SEEN_REQUEST_H
#define ZELTO_TOOLS_PAGE_SEEN_REQUEST_H

#include <cstdint>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>

namespace zelto::tools {

struct SeenRequest {
    double t = 0;  // seconds from the moment 0 of the page
    std::string request;
    std::optional<std::string> reply;  // nothing: none went out
    int64_t microseconds = 0;          // from being taken to the reply
};

// One of the page's exchanges, with the result that the library makes of the reply.
nlohmann::json ExchangeOf(const SeenRequest& seen);

}  // namespace zelto::tools

#endif
