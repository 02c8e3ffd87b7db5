#include "platform/coredll/linux/time/posix_zone.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "platform/coredll/linux/base/text_scanner.h"
#include "platform/coredll/linux/time/calendar.h"

namespace zelto::coredll {
namespace {

constexpr int64_t kSecondsPerHour = 3'600;
constexpr int64_t kSecondsPerDay = 86'400;
constexpr int64_t kMaxOffsetHours = 24;
constexpr int64_t kMaxRuleHours = 167;  // a week, either way
constexpr size_t kMinNameLength = 3;

// What a text without a rule means.
constexpr std::string_view kDefaultRule = ",M3.2.0,M11.1.0";

// When one kind of time gives way to the other.
struct Rule {
    enum Kind { kWeekday, kDayWithoutLeap, kDayOfYear } kind;
    int64_t month;    // kWeekday, as the next two
    int64_t week;     // 1 to 5, 5 the last
    int64_t weekday;  // 0 = Sunday
    int64_t day;      // kDayWithoutLeap: 1 to 365, 29 February never counted; kDayOfYear: 0 to 365
    int64_t seconds;  // from that day's midnight, in the time in force before
};

struct HalfZone {
    std::string_view name;
    int64_t seconds;  // UTC = local + seconds
};

bool IsAlphabetic(char letter) {
    return (letter >= 'A' && letter <= 'Z') || (letter >= 'a' && letter <= 'z');
}

bool IsQuotable(char letter) {
    return IsAlphabetic(letter) || (letter >= '0' && letter <= '9') || letter == '+' ||
           letter == '-';
}

// Letters, or letters, digits and signs between angle brackets.
bool ReadName(TextScanner& text, std::string_view& name) {
    const bool quoted = text.Literal("<");
    const std::string_view rest = text.Rest();
    const auto* end =
        std::find_if_not(rest.begin(), rest.end(), quoted ? IsQuotable : IsAlphabetic);
    name = rest.substr(0, static_cast<size_t>(end - rest.begin()));
    text.Skip(name.size());
    return name.size() >= kMinNameLength && (!quoted || text.Literal(">"));
}

// [+-]hours[:minutes[:seconds]]
bool ReadTime(TextScanner& text, int64_t max_hours, int64_t& seconds) {
    const bool negative = text.Literal("-");
    if (!negative)
        text.Literal("+");
    int64_t hours = 0;
    int64_t minutes = 0;
    int64_t last = 0;
    if (!text.NumberUpTo(max_hours, hours))
        return false;
    if (text.Literal(":")) {
        if (!text.NumberUpTo(59, minutes) || (text.Literal(":") && !text.NumberUpTo(59, last)))
            return false;
    }
    seconds = (hours * 60 + minutes) * 60 + last;
    seconds = negative ? -seconds : seconds;
    return true;
}

bool ReadDay(TextScanner& text, Rule& rule) {
    if (text.Literal("M")) {
        rule.kind = Rule::kWeekday;
        return text.NumberUpTo(12, rule.month) && rule.month >= 1 && text.Literal(".") &&
               text.NumberUpTo(5, rule.week) && rule.week >= 1 && text.Literal(".") &&
               text.NumberUpTo(6, rule.weekday);
    }
    rule.kind = text.Literal("J") ? Rule::kDayWithoutLeap : Rule::kDayOfYear;
    return text.NumberUpTo(365, rule.day) && (rule.kind == Rule::kDayOfYear || rule.day >= 1);
}

bool ReadRule(TextScanner& text, Rule& rule) {
    if (!text.Literal(",") || !ReadDay(text, rule))
        return false;
    rule.seconds = kSecondsPerHour * 2;
    return !text.Literal("/") || ReadTime(text, kMaxRuleHours, rule.seconds);
}

bool IsYearly(const Rule& rule) {
    return rule.kind == Rule::kWeekday && rule.seconds >= 0 && rule.seconds <= kSecondsPerDay;
}

SYSTEMTIME YearlyDate(const Rule& rule) {
    const int64_t ticks =
        std::min(rule.seconds * kTicksPerSecond, kTicksPerDay - kTicksPerMillisecond);
    SYSTEMTIME date = SystemTimeFromTicks(ticks);
    date.wYear = 0;
    date.wMonth = static_cast<WORD>(rule.month);
    date.wDayOfWeek = static_cast<WORD>(rule.weekday);
    date.wDay = static_cast<WORD>(rule.week);
    return date;
}

int64_t DayInYear(const Rule& rule, int year) {
    const int64_t new_year = DaysFromDate({year, 1, 1});
    switch (rule.kind) {
        case Rule::kDayWithoutLeap: {
            constexpr int64_t kLastOfFebruary = 59;
            const bool after = IsLeapYear(year) && rule.day > kLastOfFebruary;
            return new_year + rule.day - 1 + (after ? 1 : 0);
        }
        case Rule::kDayOfYear:
            return new_year + rule.day;
        default: {
            const auto month = static_cast<int>(rule.month);
            const int64_t first = DaysFromDate({year, month, 1});
            int64_t day = (rule.weekday - WeekdayOfDay(first) + 7) % 7 + 7 * (rule.week - 1);
            if (day >= DaysInMonth(month, year))
                day -= 7;
            return first + day;
        }
    }
}

// Within the calendar: a transition before or after it falls on its first or last moment.
SYSTEMTIME DatedDate(const Rule& rule, int year) {
    const int64_t days = DayInYear(rule, std::min(year, kLastYear));
    const int64_t end = DaysFromDate({kLastYear + 1, 1, 1}) * kTicksPerDay - kTicksPerMillisecond;
    const int64_t ticks = days * kTicksPerDay + rule.seconds * kTicksPerSecond;
    return SystemTimeFromTicks(std::clamp(ticks, int64_t{0}, end));
}

LONG MinutesOf(int64_t seconds) {
    return static_cast<LONG>((seconds + (seconds < 0 ? -30 : 30)) / 60);
}

void SetName(WCHAR (&target)[32], std::string_view name) {
    const size_t count = std::min(name.size(), std::size(target) - 1);
    std::copy_n(name.begin(), count, target);
}

bool ReadHalf(TextScanner& text, HalfZone& half) {
    return ReadName(text, half.name) && ReadTime(text, kMaxOffsetHours, half.seconds);
}

// The part after the standard time: the daylight time and its two rules.
bool ReadDaylight(TextScanner& text, const HalfZone& standard, HalfZone& daylight, Rule& begin,
                  Rule& end) {
    if (!ReadName(text, daylight.name))
        return false;
    daylight.seconds = standard.seconds - kSecondsPerHour;
    const bool has_offset = !text.AtEnd() && text.Peek() != ',';
    if (has_offset && !ReadTime(text, kMaxOffsetHours, daylight.seconds))
        return false;
    TextScanner rules(text.AtEnd() ? kDefaultRule : text.Rest());
    return ReadRule(rules, begin) && ReadRule(rules, end) && rules.AtEnd();
}

}  // namespace

bool ParsePosixZone(std::string_view text, int year, TIME_ZONE_INFORMATION& zone) {
    TextScanner scanner(text);
    HalfZone standard{};
    if (!ReadHalf(scanner, standard))
        return false;
    TIME_ZONE_INFORMATION result{};
    if (!scanner.AtEnd()) {
        HalfZone daylight{};
        Rule begin{};
        Rule end{};
        if (!ReadDaylight(scanner, standard, daylight, begin, end))
            return false;
        if (daylight.seconds > standard.seconds) {  // the summer's time is called standard there
            std::swap(daylight, standard);
            std::swap(begin, end);
        }
        const bool yearly = IsYearly(begin) && IsYearly(end);
        result.DaylightDate = yearly ? YearlyDate(begin) : DatedDate(begin, year);
        result.StandardDate = yearly ? YearlyDate(end) : DatedDate(end, year);
        result.DaylightBias = MinutesOf(daylight.seconds) - MinutesOf(standard.seconds);
        SetName(result.DaylightName, daylight.name);
    }
    result.Bias = MinutesOf(standard.seconds);
    SetName(result.StandardName, standard.name);
    zone = result;
    return true;
}

}  // namespace zelto::coredll
