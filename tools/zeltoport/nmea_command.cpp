// Feeding a recorded track, or a live one from standard input.

#include <filesystem>
#include <fmt/core.h>
#include <fstream>
#include <iostream>
#include <memory>

#include "platform/coredll/coredll.h"
#include "plugins/zelto_port_dll/zelto_port.h"
#include "tools/text/wide.h"
#include "tools/wire/results.h"
#include "tools/zeltoport/command.h"
#include "tools/zeltoport/progress_bar.h"

namespace zelto::tools {

namespace {

struct Feed {
    std::string path;
    DWORD interval = 0;
    bool narrow = false;

    const char* ExportName() const {
        return narrow ? "ZeltoNavPort_NewPoint_nmeaA" : "ZeltoNavPort_NewPoint_nmea";
    }
};

struct Tally {
    int64_t fed = 0;
    int64_t refused = 0;
    int32_t result = ZELTO_NAV_PORT_OK;  // the first that is no success, or what ended the run
};

int32_t FeedSentence(const Feed& feed, const std::string& sentence) {
    if (feed.narrow)
        return ZeltoNavPort_NewPoint_nmeaA(sentence.c_str());
    std::u16string wide;
    if (!WideFromUtf8(sentence, wide))
        throw CommandError("The sentence \"" + Printable(sentence) +
                           "\" is not UTF-8; --narrow sends it as it is.");
    return ZeltoNavPort_NewPoint_nmea(wide.c_str(), TEXT(""));
}

void Count(Tally& tally, int32_t result) {
    if (result == ZELTO_NAV_PORT_OK) {
        ++tally.fed;
        return;
    }
    ++tally.refused;
    if (tally.result == ZELTO_NAV_PORT_OK || wire::ContactLost(result))
        tally.result = result;
}

// A refused sentence does not stop the feed, a lost navigator does.
Tally FeedAll(const Feed& feed, std::istream& input, ProgressBar& progress) {
    Tally tally;
    int64_t bytes = 0;
    for (std::string line; !wire::ContactLost(tally.result) && std::getline(input, line);) {
        bytes += static_cast<int64_t>(line.size()) + 1;
        if (!line.empty() && line.back() == '\r')
            line.pop_back();
        if (line.empty())
            continue;
        if (feed.interval > 0 && tally.fed + tally.refused > 0)
            Sleep(feed.interval);
        Count(tally, FeedSentence(feed, line));
        progress.Update(bytes);
    }
    return tally;
}

int64_t SizeOf(const std::string& path) {
    std::error_code error;
    const auto size = std::filesystem::file_size(path, error);
    return error ? 0 : static_cast<int64_t>(size);
}

Tally FeedSource(const Feed& feed) {
    if (feed.path == "-") {
        ProgressBar progress("bytes fed:", 0);
        return FeedAll(feed, std::cin, progress);
    }
    std::ifstream file(feed.path, std::ios::binary);
    if (!file.is_open() || std::filesystem::is_directory(feed.path))
        throw CommandError("The file " + feed.path + " cannot be read.");
    ProgressBar progress("feeding", SizeOf(feed.path));
    return FeedAll(feed, file, progress);
}

void Run(ExportCaller& caller, const Feed& feed) {
    if (!caller.Prepare())
        return;
    const Tally tally = FeedSource(feed);
    caller.Finish(feed.ExportName(), tally.result,
                  fmt::format("{} sentences taken, {} not", tally.fed, tally.refused),
                  {{"taken", tally.fed}, {"not_taken", tally.refused}});
}

}  // namespace

void AddNmeaCommand(CLI::App& app, ExportCaller& caller) {
    auto feed = std::make_shared<Feed>();
    CLI::App* command = app.add_subcommand("nmea", "Feed NMEA sentences, one a line");
    command->add_option("file", feed->path, "A file, or - for standard input")->required();
    command->add_option("--interval", feed->interval, "Milliseconds between two sentences");
    command->add_flag("--narrow", feed->narrow, "Call the 8-bit form of the export");
    command->callback([=, &caller] { Run(caller, *feed); });
}

}  // namespace zelto::tools
