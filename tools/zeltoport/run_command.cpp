// zeltoport run: a command on a device of its own, with a navigator that is ready, or faulty.

#include <cstdlib>
#include <filesystem>
#include <fmt/format.h>
#include <fstream>
#include <memory>
#include <optional>
#include <vector>

#include "platform/coredll/linux/device_admin.h"
#include "plugins/zelto_port_dll/protocol.h"
#include "tools/zeltoport/command.h"
#include "tools/zeltoport/registered_navigator.h"

namespace zelto::tools {

namespace {

namespace fs = std::filesystem;

struct RunArguments {
    std::vector<std::string> command;
    std::string fault;
    std::string letters;
    bool keep = false;
};

// What each fault makes of the navigator; the registered program for those that need no other.
struct Fault {
    const char* name;
    std::vector<std::string> options;
};

const std::vector<Fault>& Faults() {
    static const std::vector<Fault> faults = {
        {"absent", {}},
        {"ends-at-start", {}},
        {"silent", {"--silent"}},
        {"late", {"--delay-ms", "700"}},
        {"truncated", {"--reply", "A"}},
        {"too-long", {"--reply", "A|" + std::string(1008, '.')}},
        {"wrong-kind", {"--reply", "X|a kind that nobody knows"}},
        {"garbage", {"--reply", "\x80\x01\xFF|garbage"}},
    };
    return faults;
}

// The options of the navigator for a fault of this name, or for none. Throws CommandError.
std::vector<std::string> FaultOptions(const RunArguments& arguments) {
    constexpr std::string_view kRefuse = "refuse=";
    std::vector<std::string> options;
    if (arguments.fault.starts_with(kRefuse)) {
        options = {"--reply", "B|" + arguments.fault.substr(kRefuse.size())};
    } else if (!arguments.fault.empty()) {
        std::string names = "refuse=N";
        const Fault* found = nullptr;
        for (const Fault& fault : Faults()) {
            names += std::string(", ") + fault.name;
            if (arguments.fault == fault.name)
                found = &fault;
        }
        if (found == nullptr)
            throw CommandError(
                fmt::format("\"{}\" is no fault; known are {}.", arguments.fault, names));
        options = found->options;
    }
    if (!arguments.letters.empty())
        options.insert(options.end(), {"--fault-for", arguments.letters});
    return options;
}

std::string Quoted(const std::string& word) {
    std::string quoted = "'";
    for (const char byte : word)
        quoted += byte == '\'' ? std::string("'\\''") : std::string(1, byte);
    return quoted + "'";
}

std::string Quoted(const std::vector<std::string>& words) {
    std::string line;
    for (const std::string& word : words)
        line += (line.empty() ? "" : " ") + Quoted(word);
    return line;
}

// The exit status of a shell's line; 128 and its number for a signal.
int RunLine(const std::string& line) {
    const int status = std::system(line.c_str());
    return (status & 0x7F) != 0 ? 128 + (status & 0x7F) : (status >> 8) & 0xFF;
}

// A folder with a device in it, named by ZELTO_DEVICE. Both go with the object, unless kept.
class PrivateDevice {
  public:
    explicit PrivateDevice(bool keep) : keep_(keep) {
        char folder[] = "/tmp/zeltoXXXXXX";
        if (mkdtemp(folder) == nullptr)
            throw CommandError("There is no room for a device in /tmp.", kExitDevice);
        folder_ = folder;
        setenv("ZELTO_DEVICE", (folder_ / "device").c_str(), 1);
        std::string why;
        if (!coredll::CreateDevice(&why))
            throw CommandError(why, kExitDevice);
    }
    ~PrivateDevice() {
        std::error_code ignored;
        if (keep_)
            fmt::print(stderr, "zeltoport: the device is kept in {}\n", folder_.string());
        else
            fs::remove_all(folder_, ignored);
    }
    PrivateDevice(const PrivateDevice&) = delete;
    PrivateDevice& operator=(const PrivateDevice&) = delete;

    const fs::path& Folder() const { return folder_; }

  private:
    fs::path folder_;
    bool keep_;
};

// Registers a program that ends at once, or one that is not there.
void RegisterBroken(const fs::path& folder, bool absent) {
    const fs::path program = folder / "navigator";
    std::ofstream(program) << "#!/bin/sh\n";
    fs::permissions(program, fs::perms::owner_all);
    RegisterNavigator(program.string());
    if (absent)
        fs::remove(program);
}

bool AwaitWindow(bool there) {
    constexpr int kPolls = 2000;
    constexpr DWORD kPause = 5;  // ms
    for (int poll = 0; poll < kPolls; ++poll) {
        if ((FindWindowW(kWindowClass, nullptr) != nullptr) == there)
            return true;
        Sleep(kPause);
    }
    return false;
}

void StartNavigator(std::vector<std::string> options) {
    options.insert(options.begin(), NavigatorBeside());
    if (options[0].empty())
        throw CommandError("There is no zelto-navigator beside this program.", kExitNoNavigator);
    RegisterNavigator(options[0]);
    RunLine(Quoted(options) + " </dev/null >/dev/null 2>&1 &");
    if (!AwaitWindow(true))
        throw CommandError("The navigator did not start within 10 seconds.", kExitNoNavigator);
}

// What the command left on the device, other than the navigator's own.
void ReportLeftovers() {
    coredll::StoreReport store;
    if (!coredll::DescribeStore(store, nullptr))
        return;
    std::optional<uint32_t> navigator;
    for (const auto& window : store.windows)
        navigator = window.class_name == kWindowClass ? window.pid : navigator;
    for (const auto& process : store.processes) {
        if (!process.own && process.pid != navigator)
            fmt::print(stderr, "zeltoport: process {} is left on the device\n", process.pid);
    }
}

void StopNavigator() {
    HWND window = FindWindowW(kWindowClass, nullptr);
    if (window == nullptr)
        return;
    PostMessageW(window, WM_CLOSE, 0, 0);
    if (!AwaitWindow(false))
        fmt::print(stderr, "zeltoport: the navigator does not end\n");
}

void Run(Session& session, const RunArguments& arguments) {
    const std::vector<std::string> options = FaultOptions(arguments);
    const PrivateDevice device(arguments.keep);
    if (arguments.fault == "absent" || arguments.fault == "ends-at-start")
        RegisterBroken(device.Folder(), arguments.fault == "absent");
    else
        StartNavigator(options);
    session.PassOn(RunLine("exec " + Quoted(arguments.command)));
    ReportLeftovers();
    StopNavigator();
    coredll::Disconnect();
}

}  // namespace

void AddRunCommand(CLI::App& app, Session& session) {
    auto arguments = std::make_shared<RunArguments>();
    CLI::App* command = app.add_subcommand(
        "run", "Run a command on a device of its own, where the navigator is ready");
    command->add_option("command", arguments->command, "Behind --: the command and its arguments")
        ->required();
    command->add_option("--fault", arguments->fault,
                        "What the navigator does wrong: absent, ends-at-start, silent, late, "
                        "truncated, too-long, wrong-kind, garbage, refuse=N");
    command->add_option("--fault-for", arguments->letters, "Only for these request letters");
    command->add_flag("--keep", arguments->keep, "Keep the device, with the navigator's log");
    command->callback([=, &session] { Run(session, *arguments); });
}

}  // namespace zelto::tools
