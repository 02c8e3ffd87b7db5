// What the writer and the reader of clock settings share: the words and the zone's two halves.

#ifndef ZELTO_PLATFORM_COREDLL_LINUX_TIME_CLOCK_SETTINGS_WORDS_H
#define ZELTO_PLATFORM_COREDLL_LINUX_TIME_CLOCK_SETTINGS_WORDS_H

#include <string_view>

#include "platform/coredll/api/clock.h"

namespace zelto::coredll {

inline constexpr std::string_view kSignature = "ZELTO-CLOCK 1";
inline constexpr std::string_view kEndMark = "END";
inline constexpr std::string_view kWeeks[] = {"first", "second", "third", "fourth", "last"};
inline constexpr std::string_view kWeekdays[] = {"Sunday",   "Monday", "Tuesday", "Wednesday",
                                                 "Thursday", "Friday", "Saturday"};
inline constexpr std::string_view kMonths[] = {"January",   "February", "March",    "April",
                                               "May",       "June",     "July",     "August",
                                               "September", "October",  "November", "December"};
inline constexpr size_t kFractionDigits = 7;  // of a second, in ticks

// One of a zone's two kinds of time, where the record keeps it.
struct HalfZone {
    LONG& bias;
    WCHAR (&name)[32];
    SYSTEMTIME& date;
};

inline HalfZone StandardOf(TIME_ZONE_INFORMATION& zone) {
    return {zone.StandardBias, zone.StandardName, zone.StandardDate};
}
inline HalfZone DaylightOf(TIME_ZONE_INFORMATION& zone) {
    return {zone.DaylightBias, zone.DaylightName, zone.DaylightDate};
}

}  // namespace zelto::coredll

#endif
