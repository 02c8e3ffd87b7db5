// zeltoport: every call of the library from the command line, and the set-up of a device.

#include "tools/zeltoport/command.h"

namespace {

using namespace zelto::tools;

constexpr const char* kSummary = "Remote control of a navigator application from the command line.";

constexpr const char* kManual =
    "Each run is a client of its own: it connects, makes one call of the library and prints the\n"
    "result. The device is the directory named by ZELTO_DEVICE, else the user's default; the\n"
    "navigator is the program that \"device init\" registers. Texts are UTF-8.\n"
    "\n"
    "Exit status: 0 for result 0 only (version has no result), 1 for any other result, 2 when\n"
    "the call could not be made, above 100 for a command line that cannot be read.";

int Run(int argc, char** argv, Session& session) {
    ExportCaller caller(session);
    CLI::App app{kSummary};
    app.footer(kManual);
    app.require_subcommand(1);
    app.fallthrough();
    app.add_flag("--json", session.JsonSwitch(), "Print the outcome as one JSON object");
    app.add_option("--connect", caller.ConnectChoice(),
                   "Before the call: init (ZeltoNavPort_Init), find (ZeltoNavPort_IsOpen; starts "
                   "no navigator) or none. Usual: none for init and is-open, find for close, "
                   "init for all others")
        ->check(CLI::IsMember({"init", "find", "none"}));
    AddWindowCommands(app, caller);
    AddGuidanceCommands(app, caller);
    AddQueryCommands(app, caller);
    AddNmeaCommand(app, caller);
    AddDeviceCommand(app, session);
    AddClockCommand(app, session);
    AddCrcCommand(app, session);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return app.exit(error);
    } catch (const CommandError& error) {
        session.ReportError(error);
    }
    return session.status();
}

}  // namespace

int main(int argc, char** argv) {
    Session session;
    return Run(argc, argv, session);
}
