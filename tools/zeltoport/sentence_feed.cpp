#include "tools/zeltoport/sentence_feed.h"

#include <cmath>
#include <fmt/core.h>
#include <optional>

#include "platform/coredll/coredll.h"
#include "plugins/zelto_port_dll/zelto_port.h"
#include "tools/text/wide.h"
#include "tools/wire/results.h"
#include "tools/zelto-navigator/fields.h"
#include "tools/zelto-navigator/nmea.h"
#include "tools/zelto-navigator/refusal.h"
#include "tools/zeltoport/progress_bar.h"

namespace zelto::tools {

namespace {

struct Tally {
    int64_t fed = 0;
    int64_t positions = 0;  // of them, those that gave one
    int64_t voids = 0;      // and those that said that there is none
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

// Seconds of the day of an RMC or GGA, whose first field is "hhmmss.sss"; nothing without one.
std::optional<double> SecondsOf(std::string_view sentence) {
    navigator::TakeField(sentence, ',');
    const auto number = navigator::ReadNumber(navigator::TakeField(sentence, ','));
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

    void Keep(std::string_view sentence) {
        constexpr double kDay = 86400;
        constexpr double kLongestGap = 3600;  // beyond it the receiver was off
        const auto now = SecondsOf(sentence);
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
           navigator::Sentence kind) {
    if (result == ZELTO_NAV_PORT_OK) {
        ++tally.fed;
        tally.positions += kind == navigator::Sentence::kPosition ? 1 : 0;
        tally.voids += kind == navigator::Sentence::kVoid ? 1 : 0;
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

// gpsd opens its stream of sentences with a few objects about itself.
bool IsWordOfGpsd(std::string_view line) {
    return line.starts_with("{\"class\":");
}

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
        if (line.empty() || IsWordOfGpsd(line))
            continue;
        if (tally.line > 1)
            Sleep(feed.interval);
        const navigator::Sentence kind = navigator::ReadSentence(line, fix);
        if (kind == navigator::Sentence::kPosition || kind == navigator::Sentence::kVoid)
            pace.Keep(line);
        caller.LetOthersIn();
        Count(tally, feed, FeedSentence(feed, line), line, kind);
        progress.Update(bytes);
    }
    return tally;
}

// Nothing moves, and nothing was refused: that wants a word.
void WarnOfVoids(const Tally& tally) {
    if (tally.positions == 0 && tally.voids > 0)
        fmt::print(stderr,
                   "zeltoport: none of the {} fixes is valid (RMC \"V\", GGA quality 0), so the "
                   "navigator has no position; converters write so for tracks without a fix, "
                   "\"zeltoport drive\" takes the track itself\n",
                   tally.voids);
}

}  // namespace

void FeedNavigator(ExportCaller& caller, const Feed& feed, std::istream& input, int64_t size) {
    ProgressBar progress(size > 0 ? "feeding" : "bytes fed:", size);
    const Tally tally = FeedAll(caller, feed, input, progress);
    WarnOfVoids(tally);
    caller.Finish(feed.ExportName(), tally.result,
                  fmt::format("{} sentences taken, {} not; {} gave a position", tally.fed,
                              tally.refused.size(), tally.positions),
                  {{"taken", tally.fed},
                   {"not_taken", tally.refused.size()},
                   {"positions", tally.positions},
                   {"void", tally.voids},
                   {"refused", tally.refused}});
}

}  // namespace zelto::tools
