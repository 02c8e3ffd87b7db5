// Feeding a recorded track, or a live one from standard input.

#include <filesystem>
#include <fmt/core.h>
#include <fstream>
#include <iostream>
#include <memory>

#include "tools/zeltoport/command.h"
#include "tools/zeltoport/sentence_feed.h"

namespace zelto::tools {

namespace {

struct Source {
    std::string path;
    Feed feed;
};

int64_t SizeOf(const std::string& path) {
    std::error_code error;
    const auto size = std::filesystem::file_size(path, error);
    return error ? 0 : static_cast<int64_t>(size);
}

void Run(ExportCaller& caller, const Source& source) {
    if (!caller.Prepare())
        return;
    if (source.path == "-") {
        FeedNavigator(caller, source.feed, std::cin, 0);
        return;
    }
    std::ifstream file(source.path, std::ios::binary);
    if (!file.is_open() || std::filesystem::is_directory(source.path))
        throw CommandError("The file " + source.path + " cannot be read.");
    FeedNavigator(caller, source.feed, file, SizeOf(source.path));
}

}  // namespace

void AddNmeaCommand(CLI::App& app, ExportCaller& caller) {
    auto source = std::make_shared<Source>();
    CLI::App* command = app.add_subcommand("nmea", "Feed NMEA sentences, one a line");
    command->add_option("file", source->path, "A file, or - for standard input")->required();
    command->add_option("--interval", source->feed.interval, "Milliseconds between two sentences");
    command
        ->add_option("--speed", source->feed.speed,
                     "Keep time by the sentences' own clock: 1 as they were received, 10 ten "
                     "times as fast")
        ->check(CLI::PositiveNumber);
    command->add_flag("--narrow", source->feed.narrow, "Call the 8-bit form of the export");
    command->callback([=, &caller] { Run(caller, *source); });
}

}  // namespace zelto::tools
