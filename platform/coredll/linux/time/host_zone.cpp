#include "platform/coredll/linux/time/host_zone.h"

#include <algorithm>
#include <cstdlib>
#include <ctime>
#include <iterator>
#include <mutex>
#include <optional>
#include <string>
#include <sys/stat.h>
#include <vector>

#include "platform/coredll/linux/base/monotonic.h"
#include "platform/coredll/linux/time/calendar.h"

namespace zelto::coredll {
namespace {

constexpr int64_t kSecondsPerDay = 86'400;
constexpr int64_t kSampleStep = 7 * kSecondsPerDay;  // no zone leaves and returns in a week
constexpr int kYearsCompared = 12;  // in which a weekday of a month meets all its days

// What holds at a moment.
struct Kind {
    int64_t offset;  // seconds east of UTC
    std::string name;
};

Kind KindAt(int64_t second) {
    const auto when = static_cast<std::time_t>(second);
    std::tm local{};
    if (localtime_r(&when, &local) == nullptr)
        return {0, "UTC"};
    return {local.tm_gmtoff, local.tm_zone};
}

int64_t OffsetAt(int64_t second) {
    return KindAt(second).offset;
}

// The first second of the zone's own year.
int64_t NewYear(int year) {
    const int64_t universal = HostSeconds(DaysFromDate({year, 1, 1}) * kTicksPerDay);
    return universal - OffsetAt(universal);
}

// A change from one offset to another: the first second of the new one.
struct Change {
    int64_t second;
    int64_t before;  // offsets
    int64_t after;
};

// The first second up to `high` that has not the offset of `low`.
int64_t Bisect(int64_t low, int64_t high) {
    const int64_t offset = OffsetAt(low);
    while (high - low > 1) {
        const int64_t middle = low + (high - low) / 2;
        (OffsetAt(middle) == offset ? low : high) = middle;
    }
    return high;
}

std::vector<Change> ChangesIn(int year) {
    std::vector<Change> changes;
    const int64_t end = NewYear(year + 1) - 1;
    for (int64_t low = NewYear(year) - 1; low < end; low += kSampleStep) {
        const int64_t high = std::min(low + kSampleStep, end);
        const int64_t before = OffsetAt(low);
        const int64_t after = OffsetAt(high);
        if (before != after)
            changes.push_back({Bisect(low, high), before, after});
    }
    return changes;
}

// A change as the clocks showed it that were about to be changed.
int64_t LocalTicksOf(const Change& change) {
    return TicksFromHost(change.second + change.before);
}

// The week of its month in which a day falls, and whether no week follows.
struct Week {
    int number;  // 1 to 5
    bool last;
};

Week WeekOf(const SYSTEMTIME& day) {
    return {(day.wDay + 6) / 7, day.wDay + 7 > DaysInMonth(day.wMonth, day.wYear)};
}

// The days as one weekday of one month at one time; nothing when they are not.
std::optional<SYSTEMTIME> AsWeekday(const std::vector<SYSTEMTIME>& days) {
    const SYSTEMTIME& first = days.front();
    bool same_week = WeekOf(first).number < 5;
    bool always_last = true;
    for (const SYSTEMTIME& day : days) {
        if (day.wMonth != first.wMonth || day.wDayOfWeek != first.wDayOfWeek ||
            TicksOfDay(day) != TicksOfDay(first))
            return std::nullopt;
        same_week = same_week && WeekOf(day).number == WeekOf(first).number;
        always_last = always_last && WeekOf(day).last;
    }
    if (!same_week && !always_last)
        return std::nullopt;
    SYSTEMTIME rule = first;
    rule.wYear = 0;
    rule.wDay = static_cast<WORD>(always_last ? 5 : WeekOf(first).number);
    return rule;
}

// The moments, moved by some ticks, as days.
std::vector<SYSTEMTIME> Moved(const std::vector<int64_t>& moments, int64_t by) {
    std::vector<SYSTEMTIME> days;
    days.reserve(moments.size());
    for (const int64_t moment : moments)
        days.push_back(SystemTimeFromTicks(std::max(int64_t{0}, moment + by)));
    return days;
}

std::optional<SYSTEMTIME> YearlyRule(const std::vector<int64_t>& moments) {
    if (std::optional<SYSTEMTIME> rule = AsWeekday(Moved(moments, 0)))
        return rule;
    const bool at_midnight =
        std::ranges::all_of(moments, [](int64_t moment) { return moment % kTicksPerDay == 0; });
    return at_midnight ? AsWeekday(Moved(moments, -kTicksPerMillisecond)) : std::nullopt;
}

// The two changes of the years from `year` on, each as a rule; nothing when a year differs.
bool FindYearlyRules(int year, const std::vector<Change>& now, SYSTEMTIME (&rules)[2]) {
    std::vector<int64_t> moments[2];
    for (int near = year; near < std::min(year + kYearsCompared, kLastYear); ++near) {
        const std::vector<Change> changes = ChangesIn(near);
        for (size_t i = 0; i < 2; ++i) {
            if (changes.size() != 2 || changes[i].after != now[i].after)
                return false;
            moments[i].push_back(LocalTicksOf(changes[i]));
        }
    }
    for (size_t i = 0; i < 2; ++i) {
        const auto rule = moments[i].empty() ? std::nullopt : YearlyRule(moments[i]);
        if (!rule)
            return false;
        rules[i] = *rule;
    }
    return true;
}

LONG BiasOf(int64_t offset) {
    return static_cast<LONG>((-offset + (offset > 0 ? -30 : 30)) / 60);
}

void SetName(WCHAR (&target)[32], const std::string& name) {
    std::copy_n(name.begin(), std::min(name.size(), std::size(target) - 1), target);
}

TIME_ZONE_INFORMATION FixedZone(const Kind& kind) {
    TIME_ZONE_INFORMATION zone{};
    zone.Bias = BiasOf(kind.offset);
    SetName(zone.StandardName, kind.name);
    return zone;
}

// Daylight time is the one that is ahead, whatever the host calls it.
TIME_ZONE_INFORMATION ZoneOfTwo(int year, const std::vector<Change>& changes) {
    SYSTEMTIME rules[2];
    if (!FindYearlyRules(year, changes, rules)) {
        for (size_t i = 0; i < 2; ++i)
            rules[i] = SystemTimeFromTicks(LocalTicksOf(changes[i]));
    }
    const size_t to_daylight = changes[0].after > changes[1].after ? 0 : 1;
    TIME_ZONE_INFORMATION zone = FixedZone(KindAt(changes[1 - to_daylight].second));
    zone.DaylightDate = rules[to_daylight];
    zone.StandardDate = rules[1 - to_daylight];
    zone.DaylightBias = BiasOf(changes[to_daylight].after) - zone.Bias;
    SetName(zone.DaylightName, KindAt(changes[to_daylight].second).name);
    return zone;
}

// What the host's zone is made of, so that a change of it is seen.
struct Source {
    std::optional<std::string> variable;  // TZ
    ino_t file = 0;                       // the system's own, without TZ
    timespec changed{};

    bool operator==(const Source& other) const {
        return variable == other.variable && file == other.file &&
               changed.tv_sec == other.changed.tv_sec && changed.tv_nsec == other.changed.tv_nsec;
    }
};

void LookAtFile(Source& source) {
    struct stat status {};
    if (!source.variable && stat("/etc/localtime", &status) == 0) {
        source.file = status.st_ino;
        source.changed = status.st_mtim;
    }
}

// The last answer, and for what it holds.
struct Answer {
    Source source;
    int64_t looked = 0;  // coarse clock, at the system's file
    int64_t from = 0;    // seconds, the end behind the last one
    int64_t to = 0;
    TIME_ZONE_INFORMATION zone{};
};

constexpr int64_t kBetweenLooks = 1'000'000'000;  // ns

std::mutex g_mutex;
Answer g_answer;  // guarded by g_mutex

bool StillHolds(Answer& answer, int64_t second) {
    const char* set = std::getenv("TZ");
    const bool same_variable =
        set == nullptr ? !answer.source.variable : answer.source.variable == std::string_view(set);
    if (!same_variable || second < answer.from || second >= answer.to)
        return false;
    const int64_t now = CoarseNanoseconds();
    if (set != nullptr || now - answer.looked < kBetweenLooks)
        return true;
    Source source;
    LookAtFile(source);
    answer.looked = now;
    return source == answer.source;
}

Answer WorkOut(int64_t second) {
    Answer answer;
    if (const char* set = std::getenv("TZ"))
        answer.source.variable = set;
    LookAtFile(answer.source);
    answer.looked = CoarseNanoseconds();
    tzset();
    const int64_t local = std::max(int64_t{0}, TicksFromHost(second + OffsetAt(second)));
    const int year = DateFromDays(local / kTicksPerDay).year;
    const std::vector<Change> changes = ChangesIn(year);
    answer.from = NewYear(year);
    answer.to = NewYear(year + 1);
    if (changes.size() == 2) {
        answer.zone = ZoneOfTwo(year, changes);
        return answer;
    }
    answer.zone = FixedZone(KindAt(second));
    for (const Change& change : changes) {
        if (change.second <= second)
            answer.from = change.second;
        else
            answer.to = std::min(answer.to, change.second);
    }
    return answer;
}

}  // namespace

TIME_ZONE_INFORMATION HostZone(int64_t ticks) {
    const std::lock_guard lock(g_mutex);
    const int64_t second = HostSeconds(ticks);
    if (!StillHolds(g_answer, second))
        g_answer = WorkOut(second);
    return g_answer.zone;
}

}  // namespace zelto::coredll
