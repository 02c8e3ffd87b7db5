// zeltoport picture: a page that shows what a client did, from a recording or from the journal of
// the navigator that it did it to.

#include <filesystem>
#include <fmt/core.h>
#include <fstream>
#include <memory>

#include "tools/page/page.h"
#include "tools/page/seen_request.h"
#include "tools/wire/explain.h"
#include "tools/zeltoport/command.h"
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

json ReadEvents(const std::string& path) {
    return !path.empty() && IsJournal(path) ? ReadJournal(path) : wire::ToJson(ReadRecording(path));
}

}  // namespace

void AddPictureCommand(CLI::App& app, Session& session) {
    auto path = std::make_shared<std::string>();
    CLI::App* picture = app.add_subcommand(
        "picture",
        "Write a page (HTML, on standard output) that shows what a client did: map, requests, "
        "replies, message boxes");
    picture->add_option("file", *path,
                        "A recording, or the file that zelto-navigator --journal wrote; else what "
                        "the device remembers");
    picture->callback([=, &session] {
        const json recording = ReadEvents(*path);
        session.Report(kExitSuccess, RenderPage(recording), recording);
    });
}

}  // namespace zelto::tools
