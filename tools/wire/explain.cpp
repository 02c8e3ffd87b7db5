#include "tools/wire/explain.h"

#include <ctime>
#include <fmt/core.h>
#include <nlohmann/json.hpp>

#include "plugins/zelto_port_dll/protocol.h"
#include "plugins/zelto_port_dll/zelto_port.h"
#include "tools/text/wide.h"
#include "tools/wire/results.h"

namespace zelto::wire {

namespace {

using coredll::WitnessEvent;
using coredll::WitnessKind;
using nlohmann::json;

double Milliseconds(int64_t from, int64_t to) {
    return static_cast<double>(to - from) / 1e6;
}

std::string Navigator(const Exchange& exchange) {
    return exchange.navigator == 0 ? "the navigator"
                                   : fmt::format("the navigator (process {})", exchange.navigator);
}

std::string WhyNotTaken(const Exchange& exchange) {
    if (exchange.navigator_stopped)
        return fmt::format("announced, never taken: {0} is stopped; let it go on (kill -CONT {1})",
                           Navigator(exchange), exchange.navigator);
    if (exchange.navigator_ended)
        return fmt::format("announced, never taken: {} has ended", Navigator(exchange));
    if (exchange.taken != 0)
        return fmt::format("announced, and taken after {:.0f} ms, too late: {} was busy",
                           Milliseconds(exchange.announced, exchange.taken), Navigator(exchange));
    return fmt::format("announced, never taken: {} is busy, or does not look at its messages",
                       Navigator(exchange));
}

std::string WhyNotReplied(const Exchange& exchange) {
    if (exchange.reply_error != 0)
        return fmt::format("the reply of {} bytes was refused ({}): a queue takes {}",
                           exchange.reply_size, exchange.reply_error, kMaxMessageBytes);
    const char* const got = exchange.received == 0
                                ? "announced and taken, but the request was not read"
                                : "announced, taken and read, never answered";
    if (exchange.stray_reply != 0)
        return fmt::format("{}: {} replied to queues of generation {}, not {}", got,
                           Navigator(exchange), exchange.stray_reply, exchange.generation);
    if (exchange.navigator_ended)
        return fmt::format("{}: {} ended before it replied", got, Navigator(exchange));
    if (exchange.navigator_stopped)
        return fmt::format("{}: {} is stopped; let it go on (kill -CONT {})", got,
                           Navigator(exchange), exchange.navigator);
    if (exchange.received == 0)
        return fmt::format("{}: {} opened no queues of generation {}", got, Navigator(exchange),
                           exchange.generation);
    return fmt::format("{}: {} was silent for the {:.0f} ms that the client waited", got,
                       Navigator(exchange), Milliseconds(exchange.announced, exchange.end));
}

std::string WhyTimedOut(const Exchange& exchange) {
    if (exchange.reply_taker != 0)
        return fmt::format(
            "another client (process {}) took the reply: its queues have the same name; "
            "let one client at a time use the device",
            exchange.reply_taker);
    if (exchange.taken == 0 || exchange.taken > exchange.end)
        return WhyNotTaken(exchange);
    if (exchange.replied > exchange.end)
        return fmt::format("answered after {:.0f} ms, {:.0f} ms too late",
                           Milliseconds(exchange.announced, exchange.replied),
                           Milliseconds(exchange.end, exchange.replied));
    if (exchange.replied != 0)
        return fmt::format(
            "answered after {:.0f} ms, and the reply did not reach the client: the navigator wrote "
            "to a queue that the client had left",
            Milliseconds(exchange.announced, exchange.replied));
    return WhyNotReplied(exchange);
}

std::string WhyNotAnnounced(const Exchange& exchange) {
    return fmt::format("not announced: {}'s window takes no more messages (system error {})",
                       Navigator(exchange), exchange.announce_error);
}

std::string WhyNotRead(const Exchange& exchange) {
    if (exchange.read_error == ERROR_INSUFFICIENT_BUFFER)
        return fmt::format("reply of {} bytes refused ({}): the client has room for {}",
                           exchange.reply_size, exchange.read_error, exchange.room);
    return fmt::format("the reply could not be read (system error {})", exchange.read_error);
}

std::string WhyReply(const Exchange& exchange, int32_t result) {
    const Call* call = exchange.FindCall();
    const std::string meaning = DescribeResult(call == nullptr ? "" : call->export_name, result);
    if (exchange.reply.starts_with('B') && result != ZELTO_NAV_PORT_BAD_REPLY)
        return fmt::format("the navigator itself said {}: {}", result, meaning);
    return fmt::format("the navigator replied \"{}\": {}", tools::Printable(exchange.reply),
                       meaning);
}

std::string DetailOf(const WitnessEvent& event) {
    std::string detail = tools::Printable(tools::Utf8FromWide(event.name));
    const auto add = [&detail](const std::string& words) {
        detail += (detail.empty() ? "" : ", ") + words;
    };
    if (event.message != 0)
        add(fmt::format("message {}, {}, {}", event.message, event.wparam, event.lparam));
    if (event.size != 0)
        add(fmt::format("{} bytes: {}", event.size, tools::Printable(event.bytes)));
    if (event.kind == WitnessKind::kTimedOut)
        add(fmt::format("{} ms", event.code));
    else if (event.code > 1)
        add(fmt::format("system error {}", event.code));
    return detail;
}

json EventsOf(const Exchange& exchange, const Recording& recording, int64_t start_ns) {
    json events = json::array();
    for (const size_t index : exchange.events) {
        if (index >= recording.events.size())
            continue;
        const WitnessEvent& event = recording.events[index];
        events.push_back({{"t", static_cast<double>(event.monotonic_ns - start_ns) / 1e9},
                          {"pid", event.process},
                          {"what", NameOf(event.kind)},
                          {"detail", DetailOf(event)}});
    }
    return events;
}

json ProcessesOf(const Recording& recording, const std::vector<Exchange>& exchanges) {
    std::map<uint32_t, json> processes;
    const auto add = [&processes](uint32_t pid, const char* role) {
        if (pid != 0)
            processes.try_emplace(pid, json{{"pid", pid}, {"role", role}, {"program", ""}});
    };
    for (const Exchange& exchange : exchanges) {
        add(exchange.navigator, "navigator");
        add(exchange.client, "client");
    }
    for (const WitnessEvent& event : recording.events) {
        const auto found = processes.find(event.process);
        if (event.kind == WitnessKind::kProcessJoined && found != processes.end())
            found->second["program"] = tools::Utf8FromWide(event.name);
    }
    json list = json::array();
    for (const auto& [pid, process] : processes)
        list.push_back(process);
    return list;
}

}  // namespace

bool Failed(const Exchange& exchange) {
    return exchange.Result() != ZELTO_NAV_PORT_OK;
}

std::string Why(const Exchange& exchange) {
    const std::optional<int32_t> result = exchange.Result();
    if (!result)
        return exchange.client_ended
                   ? fmt::format("the client (process {}) ended before a reply came",
                                 exchange.client)
                   : "the client has not waited for the reply to its end";
    if (*result == ZELTO_NAV_PORT_OK)
        return "";
    if (exchange.GaveUpUnannounced())
        return "not announced: the navigator's window was gone";
    if (exchange.announce_error != 0)
        return WhyNotAnnounced(exchange);
    if (exchange.write_error != 0)
        return fmt::format(
            "the request of {} bytes was refused (system error {}): a queue takes {}",
            exchange.request_size, exchange.write_error, kMaxMessageBytes);
    if (exchange.read_error != 0)
        return WhyNotRead(exchange);
    return exchange.reply_read ? WhyReply(exchange, *result) : WhyTimedOut(exchange);
}

std::string Warning(const Exchange& exchange) {
    if (!exchange.second_client && exchange.reply_taker == 0)
        return "";
    return fmt::format(
        "two clients held queues of the name {}{}: each may read the other's replies", kQueuePrefix,
        exchange.generation);
}

std::string CallInWords(const Exchange& exchange) {
    const Call* call = exchange.FindCall();
    if (call == nullptr)
        return exchange.request.empty() ? "no request" : tools::Printable(exchange.request);
    std::string words(call->ShortName());
    for (const auto& [name, value] : FieldsOf(*call, exchange.request))
        words += fmt::format(" {}={}", name, tools::Printable(value));
    return words;
}

std::string LineOf(const Exchange& exchange) {
    const Call* call = exchange.FindCall();
    const std::optional<int32_t> result = exchange.Result();
    if (!result)
        return CallInWords(exchange) + " -> no result";
    return fmt::format("{} -> {}, {} ({:.2f} ms)", CallInWords(exchange), *result,
                       DescribeResult(call == nullptr ? "" : call->export_name, *result),
                       exchange.Milliseconds());
}

std::string TimeInWords(int64_t wall_ns) {
    const auto seconds = static_cast<time_t>(wall_ns / 1'000'000'000);
    tm parts{};
    gmtime_r(&seconds, &parts);
    return fmt::format("{:04}-{:02}-{:02}T{:02}:{:02}:{:02}.{:03}Z", parts.tm_year + 1900,
                       parts.tm_mon + 1, parts.tm_mday, parts.tm_hour, parts.tm_min, parts.tm_sec,
                       wall_ns / 1'000'000 % 1000);
}

std::vector<std::pair<std::string, std::string>> FieldsOf(const Call& call,
                                                          std::string_view request) {
    std::vector<std::pair<std::string, std::string>> fields;
    std::string_view text = request.substr(std::min<size_t>(2, request.size()));
    std::string_view names = call.arguments;
    while (!names.empty()) {
        const size_t stop = call.separator == 0 ? names.npos : names.find(call.separator);
        const std::string_view name = names.substr(0, stop);
        names = stop == names.npos ? std::string_view() : names.substr(stop + 1);
        const size_t end = names.empty() ? text.npos : text.find(call.separator);
        if (!name.empty() && name != "0")  // which is sent where a call has no arguments
            fields.emplace_back(name, text.substr(0, end));
        text = end == text.npos ? std::string_view() : text.substr(end + 1);
    }
    return fields;
}

json ArgumentsOf(const Call* call, std::string_view request) {
    json arguments = json::object();
    if (call == nullptr)
        return arguments;
    for (auto& [name, value] : FieldsOf(*call, request))
        arguments[name] = value;
    return arguments;
}

json ToJson(const Exchange& exchange, const Recording& recording, int64_t start_ns) {
    const Call* call = exchange.FindCall();
    const std::string name = call == nullptr ? "" : call->export_name;
    const std::optional<int32_t> result = exchange.Result();
    return {{"t", static_cast<double>(exchange.start - start_ns) / 1e9},
            {"pid", exchange.client},
            {"navigator", exchange.navigator},
            {"export", name},
            {"letter", exchange.request.substr(0, 1)},
            {"request", exchange.request},
            {"arguments", ArgumentsOf(call, exchange.request)},
            {"reply", exchange.reply_read || exchange.replied != 0 ? json(exchange.reply) : json()},
            {"result", result ? json(*result) : json()},
            {"meaning", result ? DescribeResult(name, *result) : "no result"},
            {"milliseconds", exchange.Milliseconds()},
            {"why", Why(exchange)},
            {"warning", Warning(exchange)},
            {"events", EventsOf(exchange, recording, start_ns)}};
}

json ToJson(const Recording& recording) {
    const std::vector<Exchange> exchanges = Exchanges(recording);
    const bool any = !recording.events.empty();
    const int64_t start_ns = any ? recording.events.front().monotonic_ns : 0;
    json list = json::array();
    for (const Exchange& exchange : exchanges)
        list.push_back(ToJson(exchange, recording, start_ns));
    return {{"schema", 1},
            {"recorded", any ? TimeInWords(recording.events.front().wall_ns) : ""},
            {"device", recording.device},
            {"lost", recording.lost},
            {"processes", ProcessesOf(recording, exchanges)},
            {"exchanges", list}};
}

}  // namespace zelto::wire
