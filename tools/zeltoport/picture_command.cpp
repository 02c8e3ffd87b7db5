// zeltoport picture: a page that shows what a client did, from a recording or from the journal of
// the navigator that it did it to.

#include <filesystem>
#include <fmt/core.h>
#include <fstream>
#include <memory>

#include "plugins/zelto_port_dll/zelto_port.h"
#include "tools/page/page.h"
#include "tools/page/seen_request.h"
#include "tools/wire/explain.h"
#include "tools/zeltoport/command.h"
#include "tools/zeltoport/known_places.h"
#include "tools/zeltoport/output_file.h"
#include "tools/zeltoport/recordings.h"

namespace zelto::tools {

namespace {

using nlohmann::json;

// Seconds of the day of a journal's time, "2010-05-01T09:30:00.125Z"; below 0 when it is not one.
double SecondOfDay(const std::string& time) {
    int hour = 0;
    int minute = 0;
    double second = 0;
    const size_t at = time.find('T');
    if (at == std::string::npos ||
        std::sscanf(time.c_str() + at, "T%d:%d:%lf", &hour, &minute, &second) != 3)
        return -1;
    return (hour * 60 + minute) * 60 + second;
}

json ExchangeOf(const json& entry, double start) {
    constexpr double kSecondsPerDay = 86'400;
    SeenRequest seen;
    seen.request = entry.at("bytes");
    if (!entry.at("reply").is_null())
        seen.reply = entry.at("reply");
    seen.microseconds = entry.at("microseconds");
    // The entry is made behind the reply. A drive over midnight goes on counting.
    seen.t = SecondOfDay(entry.at("time")) - start - static_cast<double>(seen.microseconds) / 1e6;
    seen.t += seen.t < -kSecondsPerDay / 2 ? kSecondsPerDay : 0;
    return tools::ExchangeOf(seen);
}

json ReadJournal(const std::string& path) {
    std::ifstream file(path);
    json recording = {{"schema", 1},
                      {"device", std::filesystem::path(path).filename().string()},
                      {"recorded", ""},
                      {"lost", 0},
                      {"processes", json::array()},
                      {"exchanges", json::array()}};
    double start = -1;
    int number = 0;
    for (std::string line; std::getline(file, line);) {
        ++number;
        try {
            const json entry = json::parse(line);
            if (start < 0) {
                start = SecondOfDay(entry.at("time"));
                recording["recorded"] = entry.at("time");
            }
            recording["exchanges"].push_back(ExchangeOf(entry, start));
        } catch (const json::exception&) {
            throw CommandError(fmt::format(
                "{}, line {}: not an entry of a navigator's journal (zelto-navigator --journal "
                "writes one).",
                path, number));
        }
    }
    return recording;
}

// A recording says in its first line what it is.
bool IsJournal(const std::string& path) {
    std::ifstream file(path);
    std::string line;
    if (std::filesystem::is_directory(path) || !std::getline(file, line))
        return false;
    const json first = json::parse(line, nullptr, false);
    return first.is_object() && first.contains("generation");
}

json PlaceInJson(const track::NamedPlace& place) {
    return {{"name", place.name},
            {"description", place.description},
            {"icon", place.symbol},
            {"latitude", place.point.place.latitude},
            {"longitude", place.point.place.longitude},
            {"altitude", place.point.altitude.value_or(0)}};
}

json StateInJson(const KnownPlaces& known) {
    const auto maybe = [](const std::optional<track::NamedPlace>& place) {
        return place ? PlaceInJson(*place) : json();
    };
    json state = {{"waypoints", json::array()},
                  {"route", known.route},
                  {"destination", maybe(known.destination)},
                  {"position", maybe(known.position)},
                  {"centre", maybe(known.centre)},
                  {"track", json::array()}};
    for (const track::NamedPlace& waypoint : known.waypoints)
        state["waypoints"].push_back(PlaceInJson(waypoint));
    for (const track::Point& point : known.track)
        state["track"].push_back(
            {{"latitude", point.place.latitude}, {"longitude", point.place.longitude}});
    return state;
}

// What the navigator knows now; null where none runs, or one that does not tell.
json AskState(ExportCaller& caller) {
    try {
        if (caller.Prepare(Connect::kNone) && ZeltoNavPort_IsOpen() == ZELTO_NAV_PORT_OK)
            return StateInJson(AskPlaces());
    } catch (const NoAnswer&) {
        return nullptr;
    }
    return nullptr;
}

json ReadEvents(const std::string& path) {
    return !path.empty() && IsJournal(path) ? ReadJournal(path) : wire::ToJson(ReadRecording(path));
}

}  // namespace

void AddPictureCommand(CLI::App& app, ExportCaller& caller) {
    auto path = std::make_shared<std::string>();
    auto output = std::make_shared<std::string>("-");
    CLI::App* picture =
        app.add_subcommand("picture",
                           "Write a page (HTML) that shows what a client did: map, requests, "
                           "replies, message boxes");
    picture->add_option("file", *path,
                        "A recording, or the file that zelto-navigator --journal wrote; else the "
                        "device as it is, and what it remembers");
    picture->add_option("--output", *output, "The page's file; - is standard output")
        ->capture_default_str();
    picture->callback([=, &caller] {
        json recording = ReadEvents(*path);
        if (path->empty())
            recording["now"] = AskState(caller);
        if (*output == "-")
            caller.session().ReportText(RenderPage(recording), recording);
        else
            WriteOutput(*output, RenderPage(recording));
    });
}

}  // namespace zelto::tools
