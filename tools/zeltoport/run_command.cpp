// zeltoport run: a command on a device of its own, with a navigator that is ready, or faulty.

#include <fmt/core.h>
#include <memory>

#include "tools/zelto-navigator/script.h"
#include "tools/zeltoport/command.h"
#include "tools/zeltoport/output_file.h"
#include "tools/zeltoport/private_run.h"
#include "tools/zeltoport/recordings.h"

namespace zelto::tools {

namespace {

struct RunArguments {
    std::vector<std::string> command;
    FaultChoice fault;
    std::string script;
    std::string recording;
    int time_scale = 1;
    bool keep = false;
};

NavigatorPlan PlanFromScript(const std::string& path) {
    const std::string text = ReadInput(path);
    try {
        navigator::Script(text, path);
    } catch (const navigator::ScriptError& error) {
        throw CommandError(error.what());
    }
    return {text, path};
}

void Say(const std::string& words) {
    fmt::print(stderr, "zeltoport: {}\n", words);
}

// What one run came to, once its device is gone.
struct RunOutcome {
    int status = 0;
    wire::Recording recording;
};

RunOutcome RunOnce(const RunArguments& arguments) {
    PrivateRun run(arguments.script.empty() ? PlanOf(arguments.fault)
                                            : PlanFromScript(arguments.script));
    RunOutcome outcome;
    const auto end = run.Run(arguments.command, 0, false);
    outcome.status = end ? end->ShellStatus() : 130;  // as a shell reports an interrupt
    for (const std::string& left : run.Leftovers())
        Say(left + " is left on the device");
    for (const std::string& complaint : run.EndNavigator()) {
        Say(complaint);
        outcome.status = outcome.status == 0 ? kExitFailure : outcome.status;
    }
    outcome.recording = run.Recording();
    if (arguments.keep) {
        run.Device().Keep();
        Say("the device is kept in " + run.Device().Folder().string());
    }
    return outcome;
}

void Run(Session& session, const RunArguments& arguments) {
    if (!arguments.script.empty() && !arguments.fault.name.empty())
        throw CommandError("--script says what goes wrong: it takes no --fault.");
    if (arguments.fault.name.empty() && !arguments.fault.concerned.empty())
        throw CommandError("--fault-for takes a --fault.");
    if (arguments.time_scale != 1)
        SetTimeScale(arguments.time_scale);
    const RunOutcome outcome = RunOnce(arguments);
    session.PassOn(outcome.status);
    if (outcome.status != 0 || !arguments.recording.empty())
        Say(KeepRecording(outcome.recording, arguments.recording,
                          arguments.fault.name.empty() ? "run" : arguments.fault.name));
    if (arguments.time_scale != 1)
        Say(fmt::format("all waits were divided by {}", arguments.time_scale));
}

}  // namespace

void AddFaultOptions(CLI::App& command, FaultChoice& fault) {
    command.add_option("--fault-for", fault.concerned,
                       "Only for these request letters, or for this call: goto, \"waypoint add\"");
    command.add_option("--fault-argument", fault.arguments,
                       "And only with this argument, NAME=VALUE as \"describe\" names it; * is any "
                       "text");
    command.add_option("--fault-skip", fault.skip, "Let so many requests pass first");
    command.add_option("--fault-times", fault.times, "Let all requests pass after so many");
}

void AddRunCommand(CLI::App& app, Session& session) {
    auto arguments = std::make_shared<RunArguments>();
    CLI::App* command = app.add_subcommand(
        "run", "Run a command on a device of its own, where the navigator is ready");
    command->add_option("command", arguments->command, "Behind --: the command and its arguments")
        ->required();
    std::string faults = "What the navigator does wrong: absent, ends-at-start";
    for (const navigator::FaultName& fault : navigator::FaultNames())
        faults += std::string(", ") + fault.name;
    command->add_option("--fault", arguments->fault.name, faults);
    AddFaultOptions(*command, arguments->fault);
    command->add_option("--script", arguments->script,
                        "What the navigator is to be asked, and replies (docs/scripts.md)");
    command
        ->add_option("--time-scale", arguments->time_scale,
                     "Divide all waits of the system's calls by this")
        ->check(CLI::Range(1, coredll::kMaxTimeScale));
    command->add_option("--recording", arguments->recording,
                        "Keep the recording in this file, whatever comes out");
    command->add_flag("--keep", arguments->keep, "Keep the device, with the navigator's log");
    command->callback([=, &session] { Run(session, *arguments); });
}

}  // namespace zelto::tools
