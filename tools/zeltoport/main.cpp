// zeltoport: every call of the library from the command line, and the set-up of a device.

#include "tools/zeltoport/command.h"

namespace {

int Run(int argc, char** argv, zelto::tools::Session& session) {
    CLI::App app{"Remote control of a navigator application from the command line."};
    app.require_subcommand(1);
    app.fallthrough();
    app.add_flag("--json", session.JsonSwitch(), "Print the outcome as one JSON object");
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return app.exit(error);
    } catch (const zelto::tools::CommandError& error) {
        session.ReportError(error);
    }
    return session.status();
}

}  // namespace

int main(int argc, char** argv) {
    zelto::tools::Session session;
    return Run(argc, argv, session);
}
