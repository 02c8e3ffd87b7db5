// zeltoport why: the last failed exchange explained, and what the state of the device says.

#include <algorithm>
#include <fmt/core.h>
#include <memory>

#include "tools/text/wide.h"
#include "tools/wire/explain.h"
#include "tools/zeltoport/command.h"
#include "tools/zeltoport/device_state.h"
#include "tools/zeltoport/recordings.h"
#include "tools/zeltoport/registered_navigator.h"

namespace zelto::tools {

namespace {

using nlohmann::json;

struct Answer {
    std::string words;
    json object = json::object();

    void Add(const std::string& sentence) { words += (words.empty() ? "" : "\n") + sentence; }
};

// The last exchange that failed, for its client or by being given up.
const wire::Exchange* LastFailed(const std::vector<wire::Exchange>& exchanges) {
    const auto found = std::find_if(exchanges.rbegin(), exchanges.rend(), wire::Failed);
    return found == exchanges.rend() ? nullptr : &*found;
}

// False when nothing failed in it after `since`, ns since 1970.
bool ExplainFailure(const wire::Recording& recording, const std::string& source, int64_t since,
                    Answer& answer) {
    const std::vector<wire::Exchange> exchanges = wire::Exchanges(recording);
    const wire::Exchange* const failed = LastFailed(exchanges);
    if (failed == nullptr || failed->start_wall < since)
        return false;
    const std::string why = wire::Why(*failed);
    const std::string warning = wire::Warning(*failed);
    answer.Add(fmt::format("{}  {}\n{}.", wire::TimeInWords(failed->start_wall),
                           wire::LineOf(*failed), why));
    if (!warning.empty())
        answer.Add("Besides, " + warning + ".");
    answer.Add(fmt::format("({})", source));
    answer.object["why"] = why;
    answer.object["exchange"] =
        wire::ToJson(*failed, recording, recording.events.front().monotonic_ns);
    answer.object["source"] = source;
    return true;
}

std::string NavigatorMissing() {
    const std::string registered = RegisteredNavigator();
    return registered.empty()
               ? "No navigator runs, and none is registered: \"zeltoport device init\" does it."
               : fmt::format(
                     "No navigator runs now; the first call starts {}. \"zeltoport doctor\" "
                     "tells what becomes of it.",
                     Printable(registered));
}

// What is wrong now; false when it cannot be told, the device being out of order.
bool ExplainState(Answer& answer, bool& any) {
    coredll::StoreReport store;
    std::string why;
    if (!coredll::DescribeStore(store, &why)) {
        answer.Add(why);
        answer.object["troubles"] = {why};
        return false;
    }
    std::vector<std::string> troubles = TroublesOf(store);
    any = !troubles.empty();
    if (!any && !FindNavigator(store))
        troubles.push_back(NavigatorMissing());
    for (const std::string& trouble : troubles)
        answer.Add(trouble);
    answer.object["troubles"] = troubles;
    return true;
}

constexpr const char* kNoFailure = "No request failed as far as is recorded.";
constexpr const char* kUnknown =
    "What happened on the device before cannot be told: it was not recording. Say "
    "\"zeltoport record on\", make the call again, and ask again.";

// Of the device and of the last run on a device of its own, whichever failed last; then the state.
ExitStatus ExplainDevice(Answer& answer) {
    wire::Recording recording;
    std::string problem;
    const bool usable = wire::ReadDevice(recording, problem);
    const auto kept = NewestRecording();
    // A run's last events are a little older than the file that keeps them.
    constexpr int64_t kMargin = 1'000'000'000;  // ns
    const int64_t since = kept ? kept->wall_ns - kMargin : 0;
    bool explained = usable && ExplainFailure(recording, "of the device", since, answer);
    if (!explained && kept) {
        wire::Recording last;
        explained = wire::Load(kept->path, last, problem) &&
                    ExplainFailure(last, "of the last run: " + kept->path, 0, answer);
        if (explained && !recording.events.empty())
            answer.Add("On the device itself no request failed since, as far as is recorded.");
    }
    bool trouble = false;
    if (!ExplainState(answer, trouble))
        return explained ? kExitSuccess : kExitDevice;
    if (!explained && !trouble)
        answer.Add(recording.events.empty() ? kUnknown : kNoFailure);
    return kExitSuccess;
}

void Explain(Session& session, const std::string& path) {
    Answer answer;
    ExitStatus status = kExitSuccess;
    if (path.empty())
        status = ExplainDevice(answer);
    else if (!ExplainFailure(ReadRecording(path), path, 0, answer))
        answer.Add(kNoFailure);
    session.Report(status, answer.words, answer.object);
}

}  // namespace

void AddWhyCommand(CLI::App& app, Session& session) {
    auto path = std::make_shared<std::string>();
    CLI::App* why = app.add_subcommand("why", "Explain the last request that failed");
    why->add_option("file", *path,
                    "A recording; else what the device remembers, or the last run kept, and how "
                    "things stand on the device");
    why->callback([=, &session] { Explain(session, *path); });
}

}  // namespace zelto::tools
