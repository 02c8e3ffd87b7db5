// Finding, starting, showing and closing the navigator.

#include <fmt/core.h>
#include <memory>

#include "plugins/zelto_port_dll/protocol.h"
#include "plugins/zelto_port_dll/zelto_port.h"
#include "tools/zeltoport/command.h"

namespace zelto::tools {

namespace {

struct PlainCommand {
    const char* name;
    const char* help;
    const char* export_name;
    int32_t (*call)();
    Connect connect;
};

constexpr PlainCommand kCommands[] = {
    {"init", "Find or start the navigator and make the first exchange", "ZeltoNavPort_Init",
     ZeltoNavPort_Init, Connect::kNone},
    {"is-open", "Tell whether the navigator's window is there", "ZeltoNavPort_IsOpen",
     ZeltoNavPort_IsOpen, Connect::kNone},
    {"show", "Show the navigator's window and bring it to the front", "ZeltoNavPort_Show",
     ZeltoNavPort_Show, Connect::kInit},
    {"minimize", "Minimise the navigator's window", "ZeltoNavPort_Minimize", ZeltoNavPort_Minimize,
     Connect::kInit},
    {"coverage", "Ask whether there is coverage", "ZeltoNavPort_Cobertura", ZeltoNavPort_Cobertura,
     Connect::kInit},
};

// The one export whose number is no result.
void ReportVersion(Session& session) {
    const int32_t version = ZeltoNavPort_Version();
    session.ReportCall(
        kExitSuccess, fmt::format("ZeltoNavPort_Version: interface version {}", version),
        std::to_string(version), {{"export", "ZeltoNavPort_Version"}, {"version", version}});
}

// As the user of the device does it; also where the navigator answers no request.
void CloseWindow(Session& session) {
    RequireWorkingDevice();
    HWND window = FindWindowW(kWindowClass, nullptr);
    if (window == nullptr || PostMessageW(window, WM_CLOSE, 0, 0) == FALSE)
        throw CommandError("There is no window of a navigator that could be closed.",
                           kExitNoNavigator);
    session.Report(kExitSuccess, "", {{"posted", "WM_CLOSE"}});
}

// A request to a navigator that runs: it would be odd to start one for it.
void AddCloseCommand(CLI::App& app, ExportCaller& caller) {
    auto window = std::make_shared<bool>();
    CLI::App* close = app.add_subcommand("close", "Ask a running navigator to end");
    close->add_flag("--window", *window, "Close its window, with no request");
    close->callback([window, &caller] {
        if (*window)
            CloseWindow(caller.session());
        else
            caller.Call("ZeltoNavPort_CloseZeltoNav", ZeltoNavPort_CloseZeltoNav, Connect::kFind);
    });
}

}  // namespace

void AddWindowCommands(CLI::App& app, ExportCaller& caller) {
    for (const PlainCommand& command : kCommands) {
        app.add_subcommand(command.name, command.help)->callback([&command, &caller] {
            caller.Call(command.export_name, command.call, command.connect);
        });
    }
    AddCloseCommand(app, caller);
    app.add_subcommand("version", "Tell the version of the library's interface")
        ->callback([&caller] { ReportVersion(caller.session()); });
}

}  // namespace zelto::tools
