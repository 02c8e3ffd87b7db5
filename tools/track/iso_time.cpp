#include "tools/track/iso_time.h"

#include <chrono>
#include <cmath>
#include <cstdio>
#include <fmt/core.h>

#include "tools/zelto-navigator/fields.h"

namespace zelto::track {

namespace {

constexpr int64_t kMinute = 60'000;  // ms

// Ms that the zone is ahead of universal time.
std::optional<int64_t> ReadZone(const std::string& zone) {
    if (zone.empty() || zone == "Z")
        return 0;
    int hours = 0;
    int minutes = 0;
    int size = 0;
    if (std::sscanf(zone.c_str() + 1, "%2d:%2d%n", &hours, &minutes, &size) != 2 ||
        zone.size() != static_cast<size_t>(size) + 1 || (zone[0] != '+' && zone[0] != '-'))
        return std::nullopt;
    return (zone[0] == '-' ? -1 : 1) * (hours * 60 + minutes) * kMinute;
}

}  // namespace

std::optional<int64_t> ReadIsoTime(const std::string& text) {
    using namespace std::chrono;
    int year_number = 0;
    unsigned month_number = 0;
    unsigned day_number = 0;
    int hour = 0;
    int minute = 0;
    int size = 0;
    if (std::sscanf(text.c_str(), "%4d-%2u-%2uT%2d:%2d:%n", &year_number, &month_number,
                    &day_number, &hour, &minute, &size) != 5 ||
        size == 0)
        return std::nullopt;
    const std::string rest = text.substr(static_cast<size_t>(size));
    const size_t end = std::min(rest.find_first_not_of("0123456789."), rest.size());
    const auto second = navigator::ReadNumber(rest.substr(0, end));
    const auto zone = ReadZone(rest.substr(end));
    const year_month_day date{year(year_number), month(month_number), day(day_number)};
    if (!second || !zone || !date.ok() || hour > 24 || minute > 59 || *second >= 61)
        return std::nullopt;
    const auto days_ms = milliseconds(sys_days(date).time_since_epoch()).count();
    return days_ms + (hour * 60 + minute) * kMinute +
           static_cast<int64_t>(std::floor(*second * 1000 + 1e-6)) - *zone;
}

std::string WriteIsoTime(int64_t milliseconds) {
    using namespace std::chrono;
    const sys_time<std::chrono::milliseconds> point{std::chrono::milliseconds(milliseconds)};
    const auto day = floor<days>(point);
    const year_month_day date(day);
    const hh_mm_ss time(point - day);
    return fmt::format("{:04}-{:02}-{:02}T{:02}:{:02}:{:02}.{:03}Z", static_cast<int>(date.year()),
                       static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()),
                       time.hours().count(), time.minutes().count(), time.seconds().count(),
                       time.subseconds().count());
}

}  // namespace zelto::track
