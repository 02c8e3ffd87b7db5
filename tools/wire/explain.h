// Why an exchange failed, in words, and all of a recording as one JSON object.

#ifndef ZELTO_TOOLS_WIRE_EXPLAIN_H
#define ZELTO_TOOLS_WIRE_EXPLAIN_H

#include <nlohmann/json_fwd.hpp>
#include <string>

#include "tools/wire/lens.h"

namespace zelto::wire {

// Whether the call behind it failed, or never came to an end.
bool Failed(const Exchange& exchange);

// What brought the result about and, where something can be done, what; without a full stop. ""
// for a success.
std::string Why(const Exchange& exchange);

// A warning where two clients held queues of one name; "" otherwise.
std::string Warning(const Exchange& exchange);

// "Goto latitude=43.0 longitude=-4.0 label=0"; the request itself where no function sends such one.
std::string CallInWords(const Exchange& exchange);

// "0, success" with the duration: one line with the call before it.
std::string LineOf(const Exchange& exchange);

// UTC with milliseconds, "2026-11-23T12:00:00.123Z", from ns since 1970.
std::string TimeInWords(int64_t wall_ns);

// A request's fields in their order, under the names that the call gives them; as JSON {} where no
// function sends such a request.
std::vector<std::pair<std::string, std::string>> FieldsOf(const Call& call,
                                                          std::string_view request);
nlohmann::json ArgumentsOf(const Call* call, std::string_view request);

// {"t", "pid", "export", "letter", "request", "arguments", "reply", "result", "meaning",
//  "milliseconds", "why", "events":[{"t","pid","what","detail"}]}; t in s from `start_ns`.
nlohmann::json ToJson(const Exchange& exchange, const Recording& recording, int64_t start_ns);

// {"schema", "recorded", "device", "lost", "processes":[{"pid","role","program"}], "exchanges"}
nlohmann::json ToJson(const Recording& recording);

}  // namespace zelto::wire

#endif
