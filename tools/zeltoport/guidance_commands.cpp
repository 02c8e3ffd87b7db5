// Commands that give the navigator something to do. With --narrow the 8-bit form of an export is
// called, with the bytes of the command line as they are.

#include <cmath>
#include <filesystem>
#include <memory>

#include "plugins/zelto_port_dll/zelto_port.h"
#include "tools/text/wide.h"
#include "tools/zeltoport/command.h"

namespace zelto::tools {

namespace {

struct Arguments {
    std::string name;
    std::string text;
    std::string icon;
    double latitude = 0;
    double longitude = 0;
    double third = 0;
    int32_t number = 0;
    bool narrow = false;
};

using Shared = std::shared_ptr<Arguments>;

void AddNarrow(CLI::App* command, const Shared& arguments) {
    command->add_flag("--narrow", arguments->narrow, "Call the 8-bit form of the export");
}

std::string RefuseUnlessFinite(const std::string& text) {
    double value = 0;
    return CLI::detail::lexical_cast(text, value) && std::isfinite(value)
               ? ""
               : "\"" + Printable(text) + "\" is not a number";
}

CLI::Option* AddNumber(CLI::App* command, const char* name, double& value, const char* help) {
    return command->add_option(name, value, help)->check(RefuseUnlessFinite);
}

void AddPlace(CLI::App* command, const Shared& arguments) {
    AddNumber(command, "latitude", arguments->latitude, "Degrees, north positive")->required();
    AddNumber(command, "longitude", arguments->longitude, "Degrees, east positive")->required();
}

// A subcommand with one text, for an export with a wide and an 8-bit form.
struct TextCommand {
    const char* name;
    const char* help;
    const char* argument;
    const char* wide_name;
    int32_t (*wide)(const ZeltoNavPort_Wide*);
    const char* narrow_name;
    int32_t (*narrow)(const char*);
    bool path = false;  // of a file
};

// The navigator has another current folder.
std::string Absolute(const std::string& path) {
    return path.empty() || path[0] == '\\' ? path : std::filesystem::absolute(path).string();
}

void AddTextCommand(CLI::App& app, ExportCaller& caller, const TextCommand& text) {
    auto arguments = std::make_shared<Arguments>();
    CLI::App* command = app.add_subcommand(text.name, text.help);
    command->add_option(text.argument, arguments->text)->required();
    AddNarrow(command, arguments);
    command->callback([=, &caller] {
        const std::string given = text.path ? Absolute(arguments->text) : arguments->text;
        if (arguments->narrow) {
            caller.Call(text.narrow_name, [&] { return text.narrow(given.c_str()); });
            return;
        }
        const std::u16string wide = WideArgument(given);
        caller.Call(text.wide_name, [&] { return text.wide(wide.c_str()); });
    });
}

void CallNewWaypoint(ExportCaller& caller, const Arguments& given) {
    if (given.narrow) {
        caller.Call("ZeltoNavPort_New_WaypointA", [&] {
            return ZeltoNavPort_New_WaypointA(given.name.c_str(), given.text.c_str(),
                                              given.latitude, given.longitude, given.third,
                                              given.icon.c_str());
        });
        return;
    }
    const std::u16string name = WideArgument(given.name);
    const std::u16string text = WideArgument(given.text);
    const std::u16string icon = WideArgument(given.icon);
    caller.Call("ZeltoNavPort_New_Waypoint", [&] {
        return ZeltoNavPort_New_Waypoint(name.c_str(), text.c_str(), given.latitude,
                                         given.longitude, given.third, icon.c_str());
    });
}

void AddWaypoint(CLI::App& app, ExportCaller& caller) {
    auto arguments = std::make_shared<Arguments>();
    CLI::App* family = app.add_subcommand("waypoint", "Add and delete waypoints");
    family->require_subcommand(1);
    CLI::App* add = family->add_subcommand("add", "Add a waypoint, or replace it");
    add->add_option("name", arguments->name)->required();
    AddPlace(add, arguments);
    AddNumber(add, "altitude", arguments->third, "Metres");
    add->add_option("--description", arguments->text);
    add->add_option("--icon", arguments->icon);
    AddNarrow(add, arguments);
    add->callback([=, &caller] { CallNewWaypoint(caller, *arguments); });
    AddTextCommand(*family, caller,
                   {"delete", "Delete a waypoint", "name", "ZeltoNavPort_Delete_Waypoint",
                    ZeltoNavPort_Delete_Waypoint, "ZeltoNavPort_Delete_WaypointA",
                    ZeltoNavPort_Delete_WaypointA});
}

void AddCenter(CLI::App& app, ExportCaller& caller) {
    auto arguments = std::make_shared<Arguments>();
    CLI::App* command = app.add_subcommand("center", "Centre the map");
    AddPlace(command, arguments);
    AddNumber(command, "scale", arguments->third, "Metres across the screen; 0 keeps the scale");
    command->callback([=, &caller] {
        caller.Call("ZeltoNavPort_CenterCoordinate", [&] {
            return ZeltoNavPort_CenterCoordinate(arguments->latitude, arguments->longitude,
                                                 arguments->third);
        });
    });
}

void AddExec(CLI::App& app, ExportCaller& caller) {
    auto arguments = std::make_shared<Arguments>();
    CLI::App* command = app.add_subcommand("exec", "Run one of the navigator's commands");
    command->add_option("number", arguments->number)->required();
    command->callback([=, &caller] {
        caller.Call("ZeltoNavPort_ExecCommand",
                    [&] { return ZeltoNavPort_ExecCommand(arguments->number); });
    });
}

// No label, no text: the library tells the two apart.
void CallGoto(ExportCaller& caller, const Arguments& given, bool labelled) {
    if (given.narrow) {
        caller.Call("ZeltoNavPort_GotoA", [&] {
            return ZeltoNavPort_GotoA(given.latitude, given.longitude,
                                      labelled ? given.text.c_str() : nullptr);
        });
        return;
    }
    const std::u16string label = WideArgument(given.text);
    caller.Call("ZeltoNavPort_Goto", [&] {
        return ZeltoNavPort_Goto(given.latitude, given.longitude,
                                 labelled ? label.c_str() : nullptr);
    });
}

void AddGoto(CLI::App& app, ExportCaller& caller) {
    auto arguments = std::make_shared<Arguments>();
    CLI::App* command = app.add_subcommand("goto", "Navigate to a place");
    AddPlace(command, arguments);
    CLI::Option* label = command->add_option("label", arguments->text, "Sent with --narrow only");
    AddNarrow(command, arguments);
    command->callback([=, &caller] { CallGoto(caller, *arguments, label->count() > 0); });
}

}  // namespace

void AddGuidanceCommands(CLI::App& app, ExportCaller& caller) {
    AddTextCommand(
        app, caller,
        {"open", "Open a file in the navigator", "path", "ZeltoNavPort_OpenFile",
         ZeltoNavPort_OpenFile, "ZeltoNavPort_OpenFile (8-bit)", ZeltoNavPort_OpenFile, true});
    AddWaypoint(app, caller);
    AddCenter(app, caller);
    AddExec(app, caller);
    AddGoto(app, caller);
    AddTextCommand(app, caller,
                   {"route", "Navigate along a route", "route", "ZeltoNavPort_GotoRuta",
                    ZeltoNavPort_GotoRuta, "ZeltoNavPort_GotoRutaA", ZeltoNavPort_GotoRutaA});
}

}  // namespace zelto::tools
