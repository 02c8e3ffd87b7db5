#include "platform/coredll/linux/time/zone_rule.h"

#include <algorithm>
#include <cstring>
#include <limits>

#include "platform/coredll/linux/time/calendar.h"

namespace zelto::coredll {
namespace {

constexpr int kLastWeek = 5;
constexpr int64_t kMaxBias = 1'440;  // minutes

bool IsValidTransition(const SYSTEMTIME& rule) {
    int64_t ignored = 0;
    if (rule.wYear != 0)
        return TicksFromSystemTime(rule, ignored);
    return rule.wMonth <= 12 && rule.wDayOfWeek <= 6 && rule.wDay >= 1 && rule.wDay <= kLastWeek &&
           IsTimeOfDay(rule);
}

bool IsValidBias(int64_t bias) {
    return bias >= -kMaxBias && bias <= kMaxBias;
}

// The local time at which the rule takes effect in that year; a dated rule has its own.
int64_t LocalTicks(const SYSTEMTIME& rule, int year) {
    if (rule.wYear != 0)
        return DaysFromDate({rule.wYear, rule.wMonth, rule.wDay}) * kTicksPerDay + TicksOfDay(rule);
    const int64_t first = DaysFromDate({year, rule.wMonth, 1});
    int day = 1 + (rule.wDayOfWeek - WeekdayOfDay(first) + 7) % 7 + 7 * (rule.wDay - 1);
    if (day > DaysInMonth(rule.wMonth, year))  // the fifth where there are four
        day -= 7;
    return (first + day - 1) * kTicksPerDay + TicksOfDay(rule);
}

// The transitions next to a moment.
class Neighbours {
  public:
    explicit Neighbours(int64_t moment) : moment_(moment) {}

    void Add(int64_t at, bool to_daylight) {
        if (at <= moment_ && at >= before_) {
            before_ = at;
            has_before_ = true;
            daylight_since_ = to_daylight;
        } else if (at > moment_ && at < after_) {
            after_ = at;
            daylight_next_ = to_daylight;
        }
    }

    // Before the first transition of all, the other kind of time holds.
    bool IsDaylight() const { return has_before_ ? daylight_since_ : !daylight_next_; }
    bool Holds(int64_t moment) const { return moment >= before_ && moment < after_; }

  private:
    int64_t moment_;
    int64_t before_ = std::numeric_limits<int64_t>::min();
    int64_t after_ = kMaxTicks;
    bool has_before_ = false;
    bool daylight_since_ = false;
    bool daylight_next_ = true;
};

Neighbours NeighboursOf(int64_t ticks, const TIME_ZONE_INFORMATION& zone) {
    const int64_t standard = int64_t{zone.Bias} + zone.StandardBias;
    const int64_t daylight = int64_t{zone.Bias} + zone.DaylightBias;
    // A bias is a day at most, which the sum still holds.
    const int64_t local = std::min(ticks, kMaxTicks - kTicksPerDay) - standard * kTicksPerMinute;
    const int year = std::min(DateFromDays(local / kTicksPerDay).year, kLastYear);
    Neighbours neighbours(ticks);
    for (int near = year - 1; near <= std::min(year + 1, kLastYear); ++near) {
        neighbours.Add(LocalTicks(zone.DaylightDate, near) + standard * kTicksPerMinute, true);
        neighbours.Add(LocalTicks(zone.StandardDate, near) + daylight * kTicksPerMinute, false);
    }
    return neighbours;
}

// Clocks are read far more often than they change: the last answer is kept with the moments for
// which it holds, one for each thread.
bool IsDaylight(const TIME_ZONE_INFORMATION& zone, int64_t ticks) {
    thread_local TIME_ZONE_INFORMATION last_zone{};
    thread_local Neighbours last(0);
    if (!last.Holds(ticks) || std::memcmp(&zone, &last_zone, sizeof zone) != 0) {
        last = NeighboursOf(ticks, zone);
        last_zone = zone;
    }
    return last.IsDaylight();
}

}  // namespace

bool IsValidZone(const TIME_ZONE_INFORMATION& zone) {
    if (!IsValidBias(zone.Bias) || !IsValidBias(int64_t{zone.Bias} + zone.StandardBias) ||
        !IsValidBias(int64_t{zone.Bias} + zone.DaylightBias))
        return false;
    if (zone.StandardDate.wMonth == 0 || zone.DaylightDate.wMonth == 0)
        return zone.StandardDate.wMonth == zone.DaylightDate.wMonth;
    return IsValidTransition(zone.StandardDate) && IsValidTransition(zone.DaylightDate);
}

ZoneState ZoneStateAt(const TIME_ZONE_INFORMATION& zone, int64_t ticks) {
    if (zone.StandardDate.wMonth == 0)
        return {TIME_ZONE_ID_UNKNOWN, zone.Bias};
    if (IsDaylight(zone, ticks))
        return {TIME_ZONE_ID_DAYLIGHT, int64_t{zone.Bias} + zone.DaylightBias};
    return {TIME_ZONE_ID_STANDARD, int64_t{zone.Bias} + zone.StandardBias};
}

}  // namespace zelto::coredll
