// zeltoport trace: the requests of a recording, each with what came of it.

#include <fmt/core.h>
#include <memory>

#include "platform/coredll/linux/device_admin.h"
#include "tools/wire/explain.h"
#include "tools/zeltoport/command.h"
#include "tools/zeltoport/recordings.h"

namespace zelto::tools {

namespace {

using nlohmann::json;

struct TraceArguments {
    std::string path;
    bool follow = false;
    bool script = false;
    bool events = false;
};

std::string EventLines(const wire::Exchange& exchange, const wire::Recording& recording) {
    std::string lines;
    const json events = wire::ToJson(exchange, recording, exchange.start)["events"];
    for (const json& event : events)
        lines += fmt::format("\n    {:10.3f} ms  process {}  {}  {}",
                             event["t"].get<double>() * 1e3, event["pid"].get<uint32_t>(),
                             event["what"].get<std::string>(), event["detail"].get<std::string>());
    return lines;
}

std::string Lines(const wire::Exchange& exchange) {
    std::string lines = fmt::format("{}  process {}  {}", wire::TimeInWords(exchange.start_wall),
                                    exchange.client, wire::LineOf(exchange));
    if (const std::string why = wire::Why(exchange); !why.empty())
        lines += "\n    why: " + why;
    if (const std::string warning = wire::Warning(exchange); !warning.empty())
        lines += "\n    warning: " + warning;
    return lines;
}

[[noreturn]] void RefuseEmpty() {
    const auto last = NewestRecording();
    throw CommandError(
        "The recording holds no request; \"zeltoport record on\" lets the device "
        "remember those that follow." +
            (last ? " That of the last run is " + last->path + "." : ""),
        kExitFailure);
}

void ShowAll(Session& session, const wire::Recording& recording, bool events) {
    std::string text;
    for (const wire::Exchange& exchange : wire::Exchanges(recording)) {
        text += text.empty() ? "" : "\n";
        text += Lines(exchange) + (events ? EventLines(exchange, recording) : "");
    }
    if (text.empty())
        RefuseEmpty();
    session.Report(kExitSuccess, text, wire::ToJson(recording));
}

// The requests and replies as a script for "zeltoport run --script".
void ShowScript(Session& session, const wire::Recording& recording) {
    json steps = json::array();
    for (const wire::Exchange& exchange : wire::Exchanges(recording)) {
        if (exchange.request.empty())
            continue;
        json step = {{"request", exchange.request}};
        if (exchange.reply_read || exchange.replied != 0)
            step["reply"] = exchange.reply;
        else
            step["fault"] = "silent";
        steps.push_back(step);
    }
    const json script = {{"steps", steps}};
    session.Report(kExitSuccess, script.dump(2, ' ', false, json::error_handler_t::replace),
                   script);
}

// Each exchange once its client has its result, as it comes, until the program is ended.
void Follow(Session& session) {
    constexpr DWORD kPause = 20;  // ms
    wire::Lens lens;
    std::vector<bool> shown;
    coredll::WitnessReport report;
    coredll::ReadWitness(report);
    if (!report.on)
        fmt::print(stderr, "zeltoport: nothing is recorded now; \"zeltoport record on\" begins\n");
    for (uint32_t next = report.next; coredll::ReadWitness(report, next); next = report.next) {
        for (const coredll::WitnessEvent& event : report.events)
            lens.Take(event);
        shown.resize(lens.Exchanges().size());
        for (size_t i = 0; i < shown.size(); ++i) {
            const wire::Exchange& exchange = lens.Exchanges()[i];
            if (shown[i] || exchange.repeats != 0 || !exchange.Result())
                continue;
            shown[i] = true;
            fmt::print("{}\n", session.JsonSwitch()
                                   ? wire::ToJson(exchange, {}, 0)
                                         .dump(-1, ' ', false, json::error_handler_t::replace)
                                   : Lines(exchange));
        }
        if (std::fflush(stdout) != 0)
            return;
        Sleep(kPause);
    }
}

void Trace(Session& session, const TraceArguments& arguments) {
    if (arguments.follow) {
        if (!arguments.path.empty() || arguments.script)
            throw CommandError(
                "--follow shows what comes: it takes neither a file nor --as-script.");
        RequireWorkingDevice();
        Follow(session);
        return;
    }
    const wire::Recording recording = ReadRecording(arguments.path);
    if (arguments.script)
        ShowScript(session, recording);
    else
        ShowAll(session, recording, arguments.events);
}

}  // namespace

void AddTraceCommand(CLI::App& app, Session& session) {
    auto arguments = std::make_shared<TraceArguments>();
    CLI::App* trace = app.add_subcommand(
        "trace", "Show the requests of a recording: call, arguments, result, duration, reason");
    trace->add_option("file", arguments->path, "A recording; else what the device remembers");
    trace->add_flag("--follow", arguments->follow, "Show requests as they come, until it is ended");
    trace->add_flag("--events", arguments->events, "The steps of each request, too");
    trace->add_flag("--as-script", arguments->script, "As a script for \"run --script\"");
    trace->callback([=, &session] { Trace(session, *arguments); });
}

}  // namespace zelto::tools
