// Feeding a recorded track, or a live one from standard input.

#include <cmath>
#include <filesystem>
#include <fmt/core.h>
#include <fstream>
#include <iostream>
#include <memory>
#include <optional>

#include "platform/coredll/coredll.h"
#include "plugins/zelto_port_dll/zelto_port.h"
#include "tools/text/wide.h"
#include "tools/wire/results.h"
#include "tools/zelto-navigator/fields.h"
#include "tools/zelto-navigator/nmea.h"
#include "tools/zelto-navigator/refusal.h"
#include "tools/zeltoport/command.h"
#include "tools/zeltoport/progress_bar.h"

namespace zelto::tools {

namespace {

struct Feed {
    std::string path;
    DWORD interval = 0;  // ms
    double speed = 0;    // of the sentences' own clock; 0: as fast as they are taken
    bool narrow = false;

    const char* ExportName() const {
        return narrow ? "ZeltoNavPort_NewPoint_nmeaA" : "ZeltoNavPort_NewPoint_nmea";
    }
};

struct Tally {
    int64_t fed = 0;
    int64_t positions = 0;  // of them, those that gave one
    int64_t line = 0;
    int32_t result = ZELTO_NAV_PORT_OK;  // the first that is no success, or what ended the run
    nlohmann::json refused = nlohmann::json::array();
};

// Refused here, as the navigator would refuse a sentence of its arguments.
constexpr int32_t kNotUtf8 = navigator::kBadSentence;

int32_t FeedSentence(const Feed& feed, const std::string& sentence) {
    if (feed.narrow)
        return ZeltoNavPort_NewPoint_nmeaA(sentence.c_str());
    std::u16string wide;
    if (!WideFromUtf8(sentence, wide))
        return kNotUtf8;
    return ZeltoNavPort_NewPoint_nmea(wide.c_str(), TEXT(""));
}

// Seconds of the day of a sentence's "hhmmss.sss"; nothing without one.
std::optional<double> SecondsOf(const std::string& time) {
    const auto number = navigator::ReadNumber(time);
    if (!number)
        return std::nullopt;
    const double hours = std::floor(*number / 10000);
    const double minutes = std::floor((*number - hours * 10000) / 100);
    return hours * 3600 + minutes * 60 + (*number - hours * 10000 - minutes * 100);
}

// Keeps time by the sentences' own clock.
class Pace {
  public:
    explicit Pace(double speed) : speed_(speed) {}

    void Keep(const std::string& time) {
        constexpr double kDay = 86400;
        constexpr double kLongestGap = 3600;  // beyond it the receiver was off
        const auto now = SecondsOf(time);
        if (speed_ <= 0 || !now)
            return;
        const double gap = last_ < 0 ? 0 : std::fmod(*now - last_ + kDay, kDay);
        if (gap < kLongestGap)
            Sleep(static_cast<DWORD>(gap / speed_ * 1000));
        last_ = *now;
    }

  private:
    double speed_;
    double last_ = -1;  // second of the day; below 0: no sentence had a time yet
};

// Names a refused line at once: a live feed has no end.
void Count(Tally& tally, const Feed& feed, int32_t result, const std::string& sentence,
           bool position) {
    if (result == ZELTO_NAV_PORT_OK) {
        ++tally.fed;
        tally.positions += position ? 1 : 0;
        return;
    }
    const std::string why = !feed.narrow && !IsUtf8(sentence)
                                ? "not UTF-8; --narrow sends it as it is"
                                : wire::DescribeResult(feed.ExportName(), result);
    fmt::print(stderr, "line {}: {} ({}): {}\n", tally.line, result, why, Printable(sentence));
    tally.refused.push_back({{"line", tally.line}, {"result", result}, {"meaning", why}});
    if (tally.result == ZELTO_NAV_PORT_OK || wire::ContactLost(result))
        tally.result = result;
}

// A refused sentence does not stop the feed, a lost navigator does.
Tally FeedAll(ExportCaller& caller, const Feed& feed, std::istream& input, ProgressBar& progress) {
    Tally tally;
    Pace pace(feed.speed);
    navigator::Fix fix;
    int64_t bytes = 0;
    for (std::string line; !wire::ContactLost(tally.result) && std::getline(input, line);) {
        bytes += static_cast<int64_t>(line.size()) + 1;
        ++tally.line;
        if (!line.empty() && line.back() == '\r')
            line.pop_back();
        if (line.empty())
            continue;
        if (tally.line > 1)
            Sleep(feed.interval);
        const bool position = navigator::ReadSentence(line, fix) == navigator::Sentence::kPosition;
        if (position)
            pace.Keep(fix.time);
        caller.LetOthersIn();
        Count(tally, feed, FeedSentence(feed, line), line, position);
        progress.Update(bytes);
    }
    return tally;
}

int64_t SizeOf(const std::string& path) {
    std::error_code error;
    const auto size = std::filesystem::file_size(path, error);
    return error ? 0 : static_cast<int64_t>(size);
}

Tally FeedSource(ExportCaller& caller, const Feed& feed) {
    if (feed.path == "-") {
        ProgressBar progress("bytes fed:", 0);
        return FeedAll(caller, feed, std::cin, progress);
    }
    std::ifstream file(feed.path, std::ios::binary);
    if (!file.is_open() || std::filesystem::is_directory(feed.path))
        throw CommandError("The file " + feed.path + " cannot be read.");
    ProgressBar progress("feeding", SizeOf(feed.path));
    return FeedAll(caller, feed, file, progress);
}

void Run(ExportCaller& caller, const Feed& feed) {
    if (!caller.Prepare())
        return;
    const Tally tally = FeedSource(caller, feed);
    caller.Finish(feed.ExportName(), tally.result,
                  fmt::format("{} sentences taken, {} not; {} gave a position", tally.fed,
                              tally.refused.size(), tally.positions),
                  {{"taken", tally.fed},
                   {"not_taken", tally.refused.size()},
                   {"positions", tally.positions},
                   {"refused", tally.refused}});
}

}  // namespace

void AddNmeaCommand(CLI::App& app, ExportCaller& caller) {
    auto feed = std::make_shared<Feed>();
    CLI::App* command = app.add_subcommand("nmea", "Feed NMEA sentences, one a line");
    command->add_option("file", feed->path, "A file, or - for standard input")->required();
    command->add_option("--interval", feed->interval, "Milliseconds between two sentences");
    command
        ->add_option("--speed", feed->speed,
                     "Keep time by the sentences' own clock: 1 as they were received, 10 ten "
                     "times as fast")
        ->check(CLI::PositiveNumber);
    command->add_flag("--narrow", feed->narrow, "Call the 8-bit form of the export");
    command->callback([=, &caller] { Run(caller, *feed); });
}

}  // namespace zelto::tools
