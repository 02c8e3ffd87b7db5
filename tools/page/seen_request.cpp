#include "tools/page/seen_request.h"

#include <nlohmann/json.hpp>

#include "tools/wire/explain.h"

namespace zelto::tools {

nlohmann::json ExchangeOf(const SeenRequest& seen) {
    wire::Exchange exchange;
    exchange.request = seen.request;
    if (exchange.request.ends_with('\n'))
        exchange.request.pop_back();
    exchange.start = static_cast<int64_t>(seen.t * 1e9);
    exchange.end = exchange.start + seen.microseconds * 1000;
    exchange.reply = seen.reply.value_or("");
    exchange.reply_read = seen.reply.has_value();
    exchange.waited = seen.reply ? 0 : 1;  // and in vain
    nlohmann::json object = wire::ToJson(exchange, {}, 0);
    object["pid"] = nullptr;
    object.erase("navigator");
    if (!seen.reply)
        object["why"] = "the navigator sent no reply";
    return object;
}

}  // namespace zelto::tools
