// zeltoport clock: the device's clock and time zone, in the library's own text forms.

#include <fmt/format.h>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "common/time/date_format.h"
#include "common/time/date_parse.h"
#include "common/time/device_clock.h"
#include "tools/zeltoport/command.h"

namespace zelto::tools {
namespace {

using Formatter = void (*)(const DDateTime&, DString&);

std::string Text(const DDateTime& value, Formatter format) {
    DString text;
    format(value, text);
    return text.c_str();
}

struct ZoneChange {
    DDateTime local;
    bool begins = false;  // daylight saving begins, or ends
};

// False when the zone has no change in this year or the next one.
bool FindNextChange(const DDateTime& now, ZoneChange& change) {
    for (int32_t year = now.year; year <= now.year + 1; ++year) {
        DDateTime begin;
        DDateTime end;
        if (!DaylightPeriod(year, begin, end))
            return false;
        ZoneChange first{begin, true};
        ZoneChange second{end, false};
        if (second.local < first.local)
            std::swap(first, second);
        for (const ZoneChange& candidate : {first, second}) {
            if (now < candidate.local) {
                change = candidate;
                return true;
            }
        }
    }
    return false;
}

void Show(Session& session) {
    RefreshZoneOffset();
    const DDateTime local = NowLocal();
    const DDateTime universal = NowUniversal();
    double standard_offset = 0;
    bool has_daylight = false;
    GetZone(standard_offset, has_daylight);
    const bool in_force = has_daylight && ZoneOffset() != standard_offset;
    DString offset;
    FormatDuration(DDuration{ZoneOffset()}, offset);

    std::string words = fmt::format(
        "local time      {}\nuniversal time  {}\noffset          {} from local to universal\n"
        "daylight        {}",
        Text(local, FormatDateTimeMonthName), Text(universal, FormatDateTimeMonthName),
        offset.c_str(),
        !has_daylight ? "none"
        : in_force    ? "in force"
                      : "not in force");
    nlohmann::json object = {{"local", Text(local, FormatDateTimeIso)},
                             {"universal", Text(universal, FormatDateTimeIso)},
                             {"offset", ZoneOffset()},
                             {"has_daylight", has_daylight},
                             {"daylight_in_force", in_force},
                             {"next_change", nullptr}};
    if (ZoneChange next; FindNextChange(local, next)) {
        const char* what = next.begins ? "begins" : "ends";
        words += fmt::format("\nnext change     {}, daylight {}",
                             Text(next.local, FormatDateTimeMonthName), what);
        object["next_change"] = {{"local", Text(next.local, FormatDateTimeIso)},
                                 {"daylight", what}};
    }
    session.Report(kExitSuccess, words, object);
}

bool ParseYearFirst(DDateTime& out, const char* text) {
    return ParseYearMonthDayTime(out, text, "-/.: T");
}

// A text too long for a date alone, or with a blank, must hold a time: the date forms would drop
// what they do not understand of it.
DDateTime ParseMoment(const std::string& text, const DDateTime& now) {
    using Parser = bool (*)(DDateTime&, const char*);
    // Day first: a year of four digits cannot be taken for a day.
    constexpr Parser kWithTime[] = {ParseDayMonthNameYearThenTime, ParseDayMonthYearThenTime,
                                    ParseYearFirst};
    constexpr Parser kDateAlone[] = {ParseDate, ParseDayMonthNameYear};
    constexpr size_t kLongestDate = sizeof "DD-MON-YYYY" - 1;
    const auto accept = [&](Parser parse, DDateTime& value) {
        value = now;
        return parse(value, text.c_str()) && value.IsValid();
    };
    DDateTime value;
    for (const Parser parse : kWithTime) {
        if (accept(parse, value))
            return value;
    }
    const bool may_be_date = text.size() <= kLongestDate && text.find(' ') == std::string::npos;
    for (const Parser parse : kDateAlone) {
        if (may_be_date && accept(parse, value))
            return value;
    }
    throw CommandError(fmt::format("\"{}\" is not a date that the clock can take.", text));
}

void RequireSuccess(bool done) {
    if (!done)
        throw CommandError("The device refused the new setting.", kExitFailure);
}

void SetClock(Session& session, const std::string& text, bool universal) {
    if (universal)
        RequireSuccess(SetUniversalClock(ParseMoment(text, NowUniversal())));
    else
        RequireSuccess(SetLocalClock(ParseMoment(text, NowLocal())));
    Show(session);
}

struct ClockArguments {
    std::vector<std::string> moment;  // the date, and the time of day
    bool universal = false;
    double offset = 0;
};

}  // namespace

void AddClockCommand(CLI::App& app, Session& session) {
    auto arguments = std::make_shared<ClockArguments>();
    CLI::App* clock = app.add_subcommand("clock", "Show or set the device's clock and time zone");
    clock->require_subcommand(0, 1);
    clock->callback([clock, &session] {
        if (clock->get_subcommands().empty()) {
            RequireDevice();
            Show(session);
        }
    });

    clock->add_subcommand("show", "Both times, the offset, daylight saving and its next change")
        ->callback([&session] {
            RequireDevice();
            Show(session);
        });

    CLI::App* set = clock->add_subcommand("set", "Set the clock");
    set->add_option("moment", arguments->moment,
                    "A date, and a time of day unless it is to stay: 2009-12-25 10:20:30, "
                    "25.12.2009 10:20:30, 25-DEC-2009 10:20:30")
        ->required()
        ->expected(1, 2);
    set->add_flag("-u,--universal", arguments->universal, "The moment is in universal time");
    set->callback([arguments, &session] {
        RequireDevice();
        std::string moment = arguments->moment[0];
        if (arguments->moment.size() > 1)
            moment += " " + arguments->moment[1];
        SetClock(session, moment, arguments->universal);
    });

    CLI::App* zone = clock->add_subcommand("zone", "Set the zone; universal time stays");
    zone->add_option("offset", arguments->offset,
                     "Seconds from local to universal time without daylight saving: -3600 is one "
                     "hour east of Greenwich")
        ->required();
    zone->callback([arguments, &session] {
        RequireDevice();
        RequireSuccess(SetZoneOffset(arguments->offset));
        Show(session);
    });
}

}  // namespace zelto::tools
