// Dates, times of day and durations from 8-bit text.
//
// Conventions:
//  1. True: the fields were read and accepted. False: the target's contents are not to be relied
//     on. Nothing is thrown, nothing is allocated, and a null text reads as an empty one.
//  2. Fields are cut by the rule of SplitTokens and read by that of TextToInteger
//     (common/text/text_utils.h): what is not a number reads as 0, what follows the last field
//     is ignored.
//  3. A year of 0 to 50 means 2000 to 2050, one of 51 to 99 means 1951 to 1999; others stay.
//  4. A date parser leaves the time fields alone, and the other way round.
//  5. Thread safety: no shared state; any thread, on a target of its own.

#ifndef ZELTO_COMMON_TIME_DATE_PARSE_H
#define ZELTO_COMMON_TIME_DATE_PARSE_H

#include "common/text/dstring.h"
#include "common/time/date_time.h"

namespace zelto {

// Day, month, year between any of "-/.". Neither has an upper bound; a month above 12 changes
// places with a day below 12.
bool ParseDayMonthYear(DDateTime& out, const char* text);

// Year, month, day between any of "-/.:". The day is 1 to 31, the month 1 to 12.
bool ParseYearMonthDay(DDateTime& out, const char* text);

// Year, month, day, hour, minute, second between any of `separators`, "-/.: " when it is null.
// Day and month as above; the time fields are not checked, fractions of a second are dropped.
bool ParseYearMonthDayTime(DDateTime& out, const char* text, const char* separators = nullptr);

// The first of ParseYearMonthDayTime, ParseYearMonthDay and ParseDayMonthYear that accepts it.
bool ParseDate(DDateTime& out, const char* text);

// DD-MON-YYYY by columns, whatever stands at columns 2 and 6; MON is a MonthAbbreviation of 0
// ("NUL") to 12 in any case. Another name gives month 0 and false.
bool ParseDayMonthNameYear(DDateTime& out, const char* text);

// [-][blanks]H:M:S with at most two digits of hour and minute and a fraction of a second; hour
// below 24, minute below 60, seconds below 60.0. The fields are written even when a range fails.
bool ParseTimeOfDay(DDateTime& out, const char* text);

// A date by the parser of that name, a blank, a time of day.
bool ParseDayMonthYearThenTime(DDateTime& out, const char* text);
bool ParseDayMonthNameYearThenTime(DDateTime& out, const char* text);

// [-]H:M[:S] in whole numbers. Without the seconds field the text is accepted as no time at all,
// 0.0. Without a ':', or with one in front, false and the target is untouched.
bool ParseDuration(DDuration& out, const char* text);

inline bool ParseDayMonthYear(DDateTime& out, const DString& text) {
    return ParseDayMonthYear(out, text.c_str());
}
inline bool ParseYearMonthDay(DDateTime& out, const DString& text) {
    return ParseYearMonthDay(out, text.c_str());
}
inline bool ParseYearMonthDayTime(DDateTime& out, const DString& text,
                                  const char* separators = nullptr) {
    return ParseYearMonthDayTime(out, text.c_str(), separators);
}
inline bool ParseDate(DDateTime& out, const DString& text) {
    return ParseDate(out, text.c_str());
}
inline bool ParseDayMonthNameYear(DDateTime& out, const DString& text) {
    return ParseDayMonthNameYear(out, text.c_str());
}
inline bool ParseTimeOfDay(DDateTime& out, const DString& text) {
    return ParseTimeOfDay(out, text.c_str());
}
inline bool ParseDayMonthYearThenTime(DDateTime& out, const DString& text) {
    return ParseDayMonthYearThenTime(out, text.c_str());
}
inline bool ParseDayMonthNameYearThenTime(DDateTime& out, const DString& text) {
    return ParseDayMonthNameYearThenTime(out, text.c_str());
}
inline bool ParseDuration(DDuration& out, const DString& text) {
    return ParseDuration(out, text.c_str());
}

}  // namespace zelto

#endif
