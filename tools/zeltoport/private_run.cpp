#include "tools/zeltoport/private_run.h"

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fmt/core.h>
#include <fstream>
#include <nlohmann/json.hpp>
#include <system_error>
#include <thread>

#include "plugins/zelto_port_dll/protocol.h"
#include "tools/text/wide.h"
#include "tools/zelto-navigator/fields.h"
#include "tools/zelto-navigator/script.h"
#include "tools/zelto-navigator/service.h"
#include "tools/zeltoport/device_state.h"
#include "tools/zeltoport/registered_navigator.h"
#include "tools/zeltoport/session.h"

namespace zelto::tools {

namespace {

namespace fs = std::filesystem;
using nlohmann::json;

// Milliseconds.
constexpr uint32_t kStartPatience = 10'000;
constexpr uint32_t kEndPatience = 3000;
constexpr uint32_t kLeavePatience = 2000;
constexpr uint32_t kPause = 5;
constexpr uint32_t kLook = 50;

constexpr const char* kDeviceVariable = "ZELTO_DEVICE";

// Set by an interrupt: a command is then ended, and the device removed as always.
volatile std::sig_atomic_t g_interrupted = 0;

void Interrupt(int number) {
    g_interrupted = number;
}

void CatchInterrupts() {
    for (const int number : {SIGINT, SIGTERM})
        std::signal(number, Interrupt);
}

json PatternOf(const FaultChoice& fault) {
    json arguments = json::object();
    for (const std::string& word : fault.arguments) {
        const size_t sign = word.find('=');
        if (sign == word.npos)
            throw CommandError(fmt::format("\"{}\" is no NAME=VALUE.", Printable(word)));
        const std::string value = word.substr(sign + 1);
        const auto number = navigator::ReadNumber(value);
        arguments[word.substr(0, sign)] = number ? json(*number) : json(value);
    }
    return arguments;
}

json StepOf(const FaultChoice& fault) {
    json step = {{"fault", fault.name}};
    if (fault.skip)
        step["skip"] = *fault.skip;
    if (fault.times)
        step["times"] = *fault.times;
    if (!fault.arguments.empty())
        step["arguments"] = PatternOf(fault);
    return step;
}

bool AreLetters(const std::string& words) {
    return std::all_of(words.begin(), words.end(),
                       [](char letter) { return wire::FindCall(letter) != nullptr; });
}

// One step for each call concerned; one for all where none is named.
json StepsOf(const FaultChoice& fault) {
    const json step = StepOf(fault);
    if (fault.concerned.empty())
        return {step};
    json steps = json::array();
    const bool letters = wire::FindCall(fault.concerned) == nullptr && AreLetters(fault.concerned);
    for (const char letter : letters ? fault.concerned : std::string("x")) {
        steps.push_back(step);
        steps.back()["call"] = letters ? wire::FindCall(letter)->command : fault.concerned;
    }
    return steps;
}

bool IsThere(const std::u16string& class_name) {
    return FindWindowW(class_name.c_str(), nullptr) != nullptr;
}

}  // namespace

NavigatorPlan PlanOf(const FaultChoice& fault) {
    NavigatorPlan plan;
    plan.absent = fault.name == "absent";
    plan.ends_at_start = fault.name == "ends-at-start";
    if (plan.absent || plan.ends_at_start || fault.name.empty())
        return plan;
    plan.script_name = "the fault";
    plan.script = json{{"strict", false}, {"steps", StepsOf(fault)}}.dump();
    try {
        navigator::Script(plan.script, plan.script_name);
    } catch (const navigator::ScriptError& error) {
        std::string words = error.what();
        const std::string place = plan.script_name + ", line 1: ";
        if (words.starts_with(place))
            words.erase(0, place.size());
        throw CommandError(words + " \"zeltoport run --help\" lists the faults.");
    }
    return plan;
}

void SetTimeScale(int scale) {
    setenv("ZELTO_TIME_SCALE", std::to_string(scale).c_str(), 1);
}

PrivateDevice::PrivateDevice() {
    char folder[] = "/tmp/zeltoXXXXXX";
    if (mkdtemp(folder) == nullptr)
        throw CommandError("There is no room for a device in /tmp.", kExitDevice);
    folder_ = folder;
    if (const char* before = std::getenv(kDeviceVariable); before != nullptr)
        before_ = before;
    setenv(kDeviceVariable, (folder_ / "device").c_str(), 1);
}

PrivateDevice::~PrivateDevice() {
    coredll::Disconnect();
    if (before_)
        setenv(kDeviceVariable, before_->c_str(), 1);
    else
        unsetenv(kDeviceVariable);
    std::error_code ignored;
    if (!keep_)
        fs::remove_all(folder_, ignored);
}

PrivateRun::PrivateRun(const NavigatorPlan& plan) {
    std::string why;
    if (!coredll::CreateDevice(&why))
        throw CommandError(why, kExitDevice);
    RequireWorkingDevice();
    coredll::RecordWitness(true);
    if (plan.absent || plan.ends_at_start)
        RegisterBroken(plan.absent);
    else
        StartNavigator(plan);
}

// Registers a program that ends at once, or one that is not there.
void PrivateRun::RegisterBroken(bool absent) {
    const fs::path program = device_.Folder() / "navigator";
    std::ofstream(program) << "#!/bin/sh\n";
    fs::permissions(program, fs::perms::owner_all);
    RegisterNavigator(program.string());
    if (absent)
        fs::remove(program);
}

// The user's own file, which the navigator then names, or one of ours.
std::string PrivateRun::ScriptFile(const NavigatorPlan& plan) const {
    std::error_code error;
    if (fs::is_regular_file(plan.script_name, error))
        return fs::absolute(plan.script_name).string();
    const fs::path script = device_.Folder() / "script.json";
    std::ofstream(script) << plan.script;
    return script.string();
}

void PrivateRun::StartNavigator(const NavigatorPlan& plan) {
    std::vector<std::string> command = {NavigatorBeside()};
    if (command[0].empty())
        throw CommandError("There is no zelto-navigator beside this program.", kExitNoNavigator);
    RegisterNavigator(command[0]);
    if (!plan.script.empty()) {
        command.insert(command.end(), {"--script", ScriptFile(plan)});
    }
    const int failed = navigator_.Start(command, coredll::ChildProgram::Output::kNowhere, true);
    if (failed != 0)
        throw CommandError(
            "The navigator cannot be started: " + std::generic_category().message(failed),
            kExitNoNavigator);
    for (uint32_t waited = 0; !IsThere(kWindowClass); waited += kPause) {
        if (navigator_.Wait(kPause) || waited >= kStartPatience) {
            const std::vector<std::string> log = Log();
            throw CommandError(
                "The navigator did not start: " + (log.empty() ? "it says nothing" : log.back()),
                kExitNoNavigator);
        }
    }
}

std::optional<coredll::ProgramEnd> PrivateRun::Run(const std::vector<std::string>& command,
                                                   uint32_t limit, bool quiet) {
    using Output = coredll::ChildProgram::Output;
    const int failed = command_.Start(command, quiet ? Output::kNowhere : Output::kOurs, quiet);
    if (failed != 0)
        throw CommandError(fmt::format("{} cannot be run: {}.", Printable(command[0]),
                                       std::generic_category().message(failed)),
                           static_cast<ExitStatus>(failed == ENOENT ? 127 : 126));
    CatchInterrupts();
    std::optional<coredll::ProgramEnd> end;
    for (uint32_t waited = 0; !end && (limit == 0 || waited < limit); waited += kLook) {
        if (g_interrupted != 0) {
            end = command_.Wait(kLook);
            break;
        }
        end = command_.Wait(limit == 0 ? kLook : std::min(kLook, limit - waited));
    }
    command_.Kill();
    command_.Wait(kEndPatience);
    return end;
}

std::vector<std::string> PrivateRun::Leftovers() {
    std::vector<std::string> left;
    coredll::StoreReport store;
    for (uint32_t waited = 0; waited < kLeavePatience; waited += kPause) {
        left.clear();
        if (!coredll::DescribeStore(store, nullptr))
            return left;
        const auto navigator = FindNavigator(store);
        for (const auto& process : store.processes) {
            if (!process.own && !(navigator && process.pid == navigator->pid))
                left.push_back(fmt::format("process {}", process.pid));
        }
        for (const auto& window : store.windows) {
            if (!(navigator && window.pid == navigator->pid))
                left.push_back(fmt::format("window {} of process {}",
                                           Utf8FromWide(window.class_name), window.pid));
        }
        for (const auto& queue : store.queues)
            left.push_back("queue " + Utf8FromWide(queue.name));
        if (left.empty())
            return left;
        std::this_thread::sleep_for(std::chrono::milliseconds(kPause));
    }
    return left;
}

std::vector<std::string> PrivateRun::EndNavigator() {
    if (HWND window = FindWindowW(kWindowClass, nullptr); window != nullptr)
        PostMessageW(window, WM_CLOSE, 0, 0);
    if (!navigator_.Wait(kEndPatience))
        navigator_.Kill();
    std::vector<std::string> complaints;
    const std::string_view mark = navigator::kComplaint;
    for (const std::string& line : Log()) {
        if (line.starts_with(mark))
            complaints.push_back(line.substr(mark.size()));
    }
    return complaints;
}

wire::Recording PrivateRun::Recording() const {
    wire::Recording recording;
    std::string why;
    wire::ReadDevice(recording, why);
    return recording;
}

std::vector<std::string> PrivateRun::Log() const {
    std::vector<std::string> lines;
    std::ifstream log(device_.Folder() / "device" / "navigator.log");
    for (std::string line; std::getline(log, line);)
        lines.push_back(line);
    return lines;
}

}  // namespace zelto::tools
