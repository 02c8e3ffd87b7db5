// zeltoport picture: a page that shows what a client did, from the journal of the navigator that it
// did it to.

#include <filesystem>
#include <fmt/core.h>
#include <fstream>
#include <memory>

#include "tools/page/page.h"
#include "tools/wire/explain.h"
#include "tools/wire/results.h"
#include "tools/zeltoport/command.h"

namespace zelto::tools {

namespace {

using nlohmann::json;

constexpr int32_t kNoReply = 1007;

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
    std::string request = entry.at("bytes");
    if (request.ends_with('\n'))
        request.pop_back();
    const double took = entry.at("microseconds").get<double>() / 1000;
    // The entry is made behind the reply. A drive over midnight goes on counting.
    double t = SecondOfDay(entry.at("time")) - start - took / 1000;
    t += t < -kSecondsPerDay / 2 ? kSecondsPerDay : 0;
    json exchange = {{"t", t},
                     {"pid", nullptr},
                     {"letter", request.substr(0, 1)},
                     {"request", request},
                     {"reply", entry.at("reply")},
                     {"milliseconds", took},
                     {"events", json::array()}};
    const wire::Call* call = request.empty() ? nullptr : wire::FindCall(request[0]);
    const std::string name = call == nullptr ? "" : call->export_name;
    const int32_t result =
        entry.at("reply").is_null()
            ? kNoReply
            : wire::ResultOfReply(request.empty() ? '\0' : request[0], entry.at("reply"));
    exchange["export"] = name;
    exchange["arguments"] = wire::ArgumentsOf(call, request);
    exchange["result"] = result;
    exchange["meaning"] = wire::DescribeResult(name, result);
    return exchange;
}

json ReadJournal(const std::string& path) {
    std::ifstream file(path);
    if (!file)
        throw CommandError("The journal " + path + " cannot be read.");
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

}  // namespace

void AddPictureCommand(CLI::App& app, Session& session) {
    auto path = std::make_shared<std::string>();
    CLI::App* picture = app.add_subcommand(
        "picture",
        "Write a page (HTML, on standard output) that shows a navigator's journal: map, requests, "
        "replies, message boxes");
    picture->add_option("journal", *path, "The file that zelto-navigator --journal wrote")
        ->required();
    picture->callback([=, &session] {
        const json recording = ReadJournal(*path);
        session.Report(kExitSuccess, RenderPage(recording), recording);
    });
}

}  // namespace zelto::tools
