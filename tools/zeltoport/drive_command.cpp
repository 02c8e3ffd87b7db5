// zeltoport drive: a track becomes what a receiver on board would say.

#include <algorithm>
#include <chrono>
#include <fmt/format.h>
#include <memory>
#include <sstream>

#include "tools/text/wide.h"
#ifdef ZELTO_HAS_GPX
#include "tools/track/gpx.h"
#endif
#include "tools/track/drive.h"
#include "tools/zelto-navigator/fields.h"
#include "tools/zeltoport/command.h"
#include "tools/zeltoport/output_file.h"
#include "tools/zeltoport/sentence_feed.h"

namespace zelto::tools {

namespace {

struct DriveArguments {
    std::vector<std::string> way;  // a file, or places
    std::vector<std::string> tunnels;
    track::DriveOptions options;
    std::string output;  // empty: the navigator
};

bool IsXml(std::string_view text) {
    if (text.starts_with("\xEF\xBB\xBF"))
        text.remove_prefix(3);
    const size_t first = text.find_first_not_of(" \t\r\n");
    return first != text.npos && text[first] == '<';
}

track::Track ReadTrack(const std::string& text) {
    if (!IsXml(text))
        return track::ReadPlaces(text);
#ifdef ZELTO_HAS_GPX
    return track::ReadGpx(text);
#else
    throw track::TrackError("this zeltoport was built without GPX; give the places instead");
#endif
}

// The words of the command line are places where the first begins like a number.
bool ArePlaces(const std::vector<std::string>& words) {
    std::string_view first = words[0];
    const std::string_view latitude = navigator::TakeField(first, ',');
    return navigator::ReadNumber(latitude).has_value();
}

track::Track TrackOf(const std::vector<std::string>& words) {
    const bool places = ArePlaces(words);
    if (!places && words.size() > 1)
        throw CommandError("Give one file, or places as numbers: latitude, longitude, and so on.");
    const std::string name = places ? "The way" : words[0] == "-" ? "Standard input" : words[0];
    try {
        return ReadTrack(places ? fmt::format("{}", fmt::join(words, " ")) : ReadInput(words[0]));
    } catch (const track::TrackError& error) {
        throw CommandError(fmt::format("{} cannot be driven: {}.", name, error.what()));
    }
}

// "FROM-TO" in seconds.
track::Tunnel ReadTunnel(const std::string& words) {
    std::string_view rest = words;
    const auto from = navigator::ReadNumber(navigator::TakeField(rest, '-'));
    const auto to = navigator::ReadNumber(rest);
    if (!from || !to || *from < 0 || *to < *from)
        throw CommandError(
            fmt::format("\"{}\" is no tunnel: FROM-TO, in seconds from the start, "
                        "please, as in 30-45.",
                        Printable(words)));
    return {*from, *to};
}

int64_t Now() {
    using namespace std::chrono;
    return duration_cast<milliseconds>(system_clock::now().time_since_epoch()).count();
}

std::string SentencesOfDrive(DriveArguments arguments) {
    const track::Track track = TrackOf(arguments.way);
    arguments.options.start = Now();
    for (const std::string& words : arguments.tunnels)
        arguments.options.tunnels.push_back(ReadTunnel(words));
    std::string text;
    try {
        track::Drive(track, arguments.options, [&](const navigator::Moment& moment) {
            for (const std::string& sentence : navigator::SentencesOf(moment))
                text += sentence + "\n";
        });
    } catch (const track::TrackError& error) {
        throw CommandError(fmt::format("The track cannot be driven: {}.", error.what()));
    }
    return text;
}

void Write(Session& session, const std::string& output, const std::string& sentences) {
    const auto count = std::count(sentences.begin(), sentences.end(), '\n');
    nlohmann::json object = {{"sentences", count}};
    if (output == "-") {
        object["text"] = sentences;
        session.ReportText(sentences, object);
        return;
    }
    WriteOutput(output, sentences);
    session.ReportCall(kExitSuccess, fmt::format("{} sentences written", count), "", object);
}

void Run(ExportCaller& caller, const DriveArguments& arguments) {
    const std::string sentences = SentencesOfDrive(arguments);
    if (!arguments.output.empty()) {
        Write(caller.session(), arguments.output, sentences);
        return;
    }
    Feed feed;
    feed.speed = 1;
    std::istringstream input(sentences);
    if (caller.Prepare())
        FeedNavigator(caller, feed, input, static_cast<int64_t>(sentences.size()));
}

}  // namespace

void AddDriveCommand(CLI::App& app, ExportCaller& caller) {
    auto arguments = std::make_shared<DriveArguments>();
    CLI::App* command = app.add_subcommand(
        "drive",
        "Drive a track, at 50 km/h where it has no times: RMC, GGA, VTG and GSA sentences");
    command
        ->add_option("track", arguments->way,
                     "A GPX file, a file of places, - for standard input; or the places "
                     "themselves: latitude and longitude of each")
        ->required();
    command
        ->add_option("--speed", arguments->options.speed,
                     "Drive so many times as fast as the track says")
        ->check(CLI::Range(1e-3, 1e6))
        ->capture_default_str();
    command->add_option("--rate", arguments->options.rate, "Fixes a second")
        ->check(CLI::Range(1e-3, 1e3))
        ->capture_default_str();
    command
        ->add_option("--tunnel", arguments->tunnels,
                     "FROM-TO: no fix in these seconds from the start; may be repeated")
        ->expected(1)
        ->take_all();
    command->add_flag("--jump", arguments->options.jump,
                      "Jump from point to point, without what lies between");
    command->add_option("--output", arguments->output,
                        "Write the sentences to a file, or to - for standard output, instead of "
                        "feeding the navigator as time goes by");
    command->callback([=, &caller] { Run(caller, *arguments); });
}

}  // namespace zelto::tools
