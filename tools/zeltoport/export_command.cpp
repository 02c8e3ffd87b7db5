// zeltoport export: what the stand-in navigator knows, as GPX.

#include <fmt/core.h>
#include <memory>

#include "plugins/zelto_port_dll/zelto_port.h"
#include "tools/track/gpx.h"
#include "tools/zeltoport/command.h"
#include "tools/zeltoport/known_places.h"
#include "tools/zeltoport/output_file.h"

namespace zelto::tools {

namespace {

std::vector<track::NamedRoute> RoutesOf(const KnownPlaces& known) {
    std::vector<track::NamedRoute> routes;
    if (!known.route.empty())
        routes.push_back({known.route, {}});
    if (known.destination)
        routes.push_back({"destination", {*known.destination}});
    return routes;
}

void Run(ExportCaller& caller, const std::string& output) {
    if (!caller.Prepare())
        return;
    try {
        const KnownPlaces known = AskPlaces();
        const track::GpxFile file{known.waypoints, RoutesOf(known), known.track};
        const std::string text = track::WriteGpx(file, "zeltoport " ZELTO_VERSION);
        const nlohmann::json object = {{"waypoints", file.waypoints.size()},
                                       {"routes", file.routes.size()},
                                       {"track_points", file.track.size()},
                                       {"text", output == "-" ? text : ""}};
        if (output == "-") {
            caller.session().ReportText(text, object);
            return;
        }
        WriteOutput(output, text);
        caller.session().ReportCall(
            kExitSuccess,
            fmt::format("{} waypoints, {} routes, {} positions of the track written",
                        file.waypoints.size(), file.routes.size(), file.track.size()),
            "", object);
    } catch (const NoAnswer& none) {
        caller.Finish("ZeltoNavPort_GetString", none.result);
    }
}

}  // namespace

void AddExportCommand(CLI::App& app, ExportCaller& caller) {
    auto output = std::make_shared<std::string>("-");
    CLI::App* command = app.add_subcommand(
        "export", "Write the stand-in navigator's waypoints, route and track as GPX 1.1");
    command->add_option("--output", *output, "The file; - is standard output")
        ->capture_default_str();
    command->callback([=, &caller] { Run(caller, *output); });
}

}  // namespace zelto::tools
