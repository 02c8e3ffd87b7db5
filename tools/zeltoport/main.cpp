// zeltoport: every call of the library from the command line, and the set-up of a device.

#include "tools/zeltoport/command.h"
#include "tools/zeltoport/command_line.h"

namespace {

using namespace zelto::tools;

constexpr const char* kSummary = "Remote control of a navigator application from the command line.";

constexpr const char* kManual =
    "Each run is a client of its own: it waits for its turn on the device, connects, makes one\n"
    "call of the library and prints the result on standard error; standard output carries data\n"
    "alone. The device is the directory named by ZELTO_DEVICE, else the user's default; the\n"
    "navigator is the program that \"device init\" registers. Texts are UTF-8.\n"
    "\n"
    "Exit status: 0 success, 1 refused or another result, 2 a command line that cannot be read,\n"
    "3 no usable device, 4 no navigator, 5 no reply in time, 6 request or reply not carried,\n"
    "7 other runs held the device longer than --wait allows. \"describe\" lists all results.";

void AddOptions(CLI::App& app, Session& session, ExportCaller& caller) {
    app.footer(kManual);
    app.require_subcommand(1);
    app.fallthrough();
    app.set_version_flag("--version", "zeltoport " ZELTO_VERSION);
    app.add_flag("--json", session.JsonSwitch(), "Print the outcome as one JSON object");
    app.add_flag("--quiet", session.QuietSwitch(), "Print no result line of a success");
    app.add_option("--wait", caller.Patience(), "Seconds to wait for a turn on the device")
        ->check(CLI::Range(0., 1e6))
        ->capture_default_str();
    app.add_option("--connect", caller.ConnectChoice(),
                   "Before the call: init (ZeltoNavPort_Init), find (ZeltoNavPort_IsOpen; starts "
                   "no navigator) or none. Usual: none for init and is-open, find for close, "
                   "init for all others")
        ->check(CLI::IsMember({"init", "find", "none"}));
}

void AddCommands(CLI::App& app, Session& session, ExportCaller& caller) {
    AddWindowCommands(app, caller);
    AddGuidanceCommands(app, caller);
    AddQueryCommands(app, caller);
    AddNmeaCommand(app, caller);
    AddDriveCommand(app, caller);
#ifdef ZELTO_HAS_GPX
    AddExportCommand(app, caller);
#endif
    AddDeviceCommand(app, session);
    AddClockCommand(app, session);
    AddCrcCommand(app, session);
    AddDescribeCommand(app, session);
    AddPictureCommand(app, caller);
    AddRunCommand(app, session);
    AddTortureCommand(app, session);
    AddRecordCommand(app, session);
    AddTraceCommand(app, session);
    AddWhyCommand(app, session);
    AddDoctorCommand(app, caller);
}

// The parser's own words where every word of the command line is known.
void ReportUsage(CLI::App& app, Session& session, const std::vector<std::string>& arguments,
                 const CLI::ParseError& error) {
    const std::string unknown = UnknownWord(app, arguments);
    for (const std::string& argument : arguments)
        session.JsonSwitch() |= argument == "--json";
    session.ReportError(CommandError(unknown.empty() ? error.what() : unknown));
}

int Run(const std::vector<std::string>& arguments, Session& session) {
    ExportCaller caller(session);
    CLI::App app{kSummary, "zeltoport"};
    AddOptions(app, session, caller);
    AddCommands(app, session, caller);
    session.CommandWords() = SubcommandWords(app, arguments);
    try {
        app.parse(std::vector<std::string>(arguments.rbegin(), arguments.rend()));
    } catch (const CLI::ParseError& error) {
        if (error.get_exit_code() == 0)
            app.exit(error);  // help, or the version
        else
            ReportUsage(app, session, arguments, error);
    } catch (const CommandError& error) {
        session.ReportError(error);
    }
    return session.Close();
}

}  // namespace

int main(int argc, char** argv) {
    Session session;
    return Run({argv + 1, argv + argc}, session);
}
