// zeltoport torture: a command once under each fault of the navigator, and how it took it.

#include <algorithm>
#include <chrono>
#include <fmt/core.h>
#include <iterator>
#include <map>
#include <memory>

#include "tools/text/nearest.h"
#include "tools/text/wide.h"
#include "tools/wire/explain.h"
#include "tools/zelto-navigator/script.h"
#include "tools/zelto-navigator/service.h"
#include "tools/zeltoport/command.h"
#include "tools/zeltoport/output_file.h"
#include "tools/zeltoport/private_run.h"
#include "tools/zeltoport/recordings.h"
#include "tools/zeltoport/torture_report.h"

namespace zelto::tools {

namespace {

using nlohmann::json;

struct TortureArguments {
    std::vector<std::string> command;
    std::string expect;
    std::string junit;
    std::string pages;
    int time_scale = 1;
    double limit = 0;  // s; 0: see LimitOf
};

std::vector<std::string> AllFaults() {
    std::vector<std::string> names = {"absent", "ends-at-start"};
    for (const navigator::FaultName& fault : navigator::FaultNames())
        names.emplace_back(fault.fault == navigator::Fault::kRefuse ? "refuse=300" : fault.name);
    return names;
}

// The longest that a call may take is the first contact without a navigator: 15 s of waits.
uint32_t LimitOf(const TortureArguments& arguments) {
    constexpr double kUnscaled = 60;
    constexpr double kLeast = 3;
    const double limit =
        arguments.limit > 0 ? arguments.limit : std::max(kLeast, kUnscaled / arguments.time_scale);
    return static_cast<uint32_t>(limit * 1000);
}

bool WasCrash(const coredll::ProgramEnd& end) {
    constexpr int kBySignal = 128;                // as a shell between us and the program tells it
    constexpr int kCrashes[] = {4, 6, 7, 8, 11};  // illegal instruction, abort, bus, fpe, segment
    return end.by_signal || std::any_of(std::begin(kCrashes), std::end(kCrashes), [&](int signal) {
               return end.number == kBySignal + signal;
           });
}

// Whether any request met the fault; the two that need no request, whether it was tried to start
// the navigator.
bool WasReached(const std::string& fault, const std::vector<std::string>& log,
                const wire::Recording& recording) {
    if (fault == "absent" || fault == "ends-at-start")
        return std::any_of(recording.events.begin(), recording.events.end(), [](const auto& each) {
            return each.kind == coredll::WitnessKind::kProcessStarted;
        });
    return std::any_of(log.begin(), log.end(), [](const std::string& line) {
        return line.find(navigator::kMetFault) != line.npos;
    });
}

// Whether a call failed that no later one, the same again, made good.
bool LeftAFailure(const std::string& fault, const wire::Recording& recording) {
    if (fault == "absent" || fault == "ends-at-start")
        return true;
    const std::vector<wire::Exchange> exchanges = wire::Exchanges(recording);
    for (auto failed = exchanges.begin(); failed != exchanges.end(); ++failed) {
        if (wire::Failed(*failed) && std::none_of(failed, exchanges.end(), [&](const auto& later) {
                const bool same = failed->request.empty() || later.request == failed->request;
                return same && !wire::Failed(later);
            }))
            return true;
    }
    return false;
}

TortureVerdict Judge(const std::string& fault, const std::optional<coredll::ProgramEnd>& end,
                     PrivateRun& run) {
    const wire::Recording recording = run.Recording();
    TortureVerdict verdict;
    verdict.fault = fault;
    if (!end)
        verdict.outcome = Outcome::kHang;
    else if (WasCrash(*end))
        verdict.outcome = Outcome::kCrash;
    else if (!WasReached(fault, run.Log(), recording))
        verdict.outcome = Outcome::kNotReached;
    else if (end->ShellStatus() == 0 && LeftAFailure(fault, recording))
        verdict.outcome = Outcome::kWrongSuccess;
    verdict.status = end ? end->ShellStatus() : -1;
    verdict.recording = recording;
    const std::vector<wire::Exchange> exchanges = wire::Exchanges(recording);
    const auto failed = std::find_if(exchanges.begin(), exchanges.end(), wire::Failed);
    if (failed != exchanges.end())
        verdict.why = wire::LineOf(*failed) + ": " + wire::Why(*failed);
    return verdict;
}

TortureVerdict Torture(const std::string& fault, const TortureArguments& arguments) {
    const auto start = std::chrono::steady_clock::now();
    FaultChoice choice;
    choice.name = fault;
    PrivateRun run(PlanOf(choice));
    const auto end = run.Run(arguments.command, LimitOf(arguments), true);
    run.Leftovers();
    run.EndNavigator();
    TortureVerdict verdict = Judge(fault, end, run);
    verdict.seconds =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    return verdict;
}

// {"late":"handled",…}: what is expected of each fault; handled of those that it does not name.
std::map<std::string, Outcome> ReadExpected(const std::string& path) {
    std::map<std::string, Outcome> expected;
    if (path.empty())
        return expected;
    const std::string text = ReadInput(path);
    json object;
    try {
        object = json::parse(text, nullptr, true, true);
    } catch (const json::parse_error& error) {
        const std::string before = text.substr(0, error.byte);
        throw CommandError(fmt::format("{}, line {}: this is no JSON.", path,
                                       1 + std::count(before.begin(), before.end(), '\n')));
    }
    if (!object.is_object())
        throw CommandError(path + ", line 1: an object {\"late\": \"handled\", …} is expected.");
    const std::vector<std::string> faults = AllFaults();
    for (const auto& [name, value] : object.items()) {
        const std::string known = name == "refuse=N" || name == "refuse" ? "refuse=300" : name;
        if (std::find(faults.begin(), faults.end(), known) == faults.end())
            throw CommandError(fmt::format("{}: \"{}\" is no fault; the nearest is \"{}\".", path,
                                           Printable(name), Nearest(name, faults)));
        const auto outcome = value.is_string() ? OutcomeOf(value.get<std::string>()) : std::nullopt;
        if (!outcome)
            throw CommandError(fmt::format("{}: {} is no outcome; known are {}.", path,
                                           value.dump(), OutcomesInWords()));
        expected[known] = *outcome;
    }
    return expected;
}

void Keep(TortureVerdict& verdict) {
    if (verdict.as_expected && verdict.outcome == Outcome::kHandled)
        return;
    verdict.kept = KeepRecording(verdict.recording, "", verdict.fault);
}

void TortureAll(Session& session, const TortureArguments& arguments) {
    const std::map<std::string, Outcome> expected = ReadExpected(arguments.expect);
    if (arguments.time_scale != 1)
        SetTimeScale(arguments.time_scale);
    std::vector<TortureVerdict> verdicts;
    for (const std::string& fault : AllFaults()) {
        TortureVerdict verdict = Torture(fault, arguments);
        const auto wanted = expected.find(fault);
        verdict.as_expected =
            verdict.outcome == (wanted == expected.end() ? Outcome::kHandled : wanted->second);
        Keep(verdict);
        verdicts.push_back(std::move(verdict));
        if (!session.JsonSwitch())
            fmt::print("{}\n", LineOf(verdicts.back()));
        std::fflush(stdout);
    }
    if (!arguments.junit.empty())
        WriteJunit(verdicts, arguments.time_scale, arguments.junit);
    if (!arguments.pages.empty())
        WritePages(verdicts, arguments.time_scale, arguments.pages);
    const auto bad = std::count_if(verdicts.begin(), verdicts.end(),
                                   [](const auto& each) { return !each.as_expected; });
    session.Report(
        bad == 0 ? kExitSuccess : kExitFailure,
        fmt::format("{} of {} faults not as expected{}", bad, verdicts.size(),
                    arguments.time_scale == 1
                        ? ""
                        : fmt::format("; all waits were divided by {}", arguments.time_scale)),
        ToJson(verdicts, arguments.time_scale));
}

}  // namespace

void AddTortureCommand(CLI::App& app, Session& session) {
    auto arguments = std::make_shared<TortureArguments>();
    CLI::App* command = app.add_subcommand(
        "torture", "Run a command under each fault of the navigator, and judge how it took it");
    command->add_option("command", arguments->command, "Behind --: the command and its arguments")
        ->required();
    command
        ->add_option("--time-scale", arguments->time_scale,
                     "Divide all waits of the system's calls by this")
        ->check(CLI::Range(1, coredll::kMaxTimeScale));
    command
        ->add_option("--limit", arguments->limit,
                     "Seconds after which it hangs; 60 divided by the time scale, 3 at least")
        ->check(CLI::PositiveNumber);
    command->add_option("--expect", arguments->expect,
                        "What is expected of each fault: {\"late\": \"handled\", …}");
    command->add_option("--junit", arguments->junit, "Write the outcomes as JUnit's XML, too");
    command->add_option("--pages", arguments->pages,
                        "Write a page of each fault into this folder, and one that links to them");
    command->callback([=, &session] { TortureAll(session, *arguments); });
}

}  // namespace zelto::tools
