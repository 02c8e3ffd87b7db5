// Dates, times of day and durations as 8-bit text.
//
// Conventions:
//  1. The output's previous text is replaced; its codepage tag and decimals stay. Nothing is
//     allocated beyond the output's own buffer.
//  2. Any field values are written, none is checked: "%02d" and the like mean printf's padding,
//     sign included. A month outside 0 to 14 has an empty name.
//  3. Fractions are cut, never rounded. Seconds beyond 32 bits are written as the nearest number
//     that fits; a not-a-number as 0.
//  4. A short year is its remainder by 100, with a '0' in front when it is 9 or less.
//  5. Thread safety: no shared state; any thread, on an output of its own.

#ifndef ZELTO_COMMON_TIME_DATE_FORMAT_H
#define ZELTO_COMMON_TIME_DATE_FORMAT_H

#include "common/text/dstring.h"
#include "common/time/date_time.h"

namespace zelto {

// Dates; 5 March 2009 gives the text on the right.
void FormatIsoDate(const DDateTime& value, DString& out);                // 2009-03-05
void FormatCompactDate(const DDateTime& value, DString& out);            // 20090305; year as "%4d"
void FormatDayMonthYear(const DDateTime& value, DString& out);           // 05-03-2009
void FormatDayMonthNameShortYear(const DDateTime& value, DString& out);  // 05-MAR-09
void FormatDayMonthNameYear(const DDateTime& value, DString& out);       // 05-MAR-2009
// 05-03-09 with '-'; a NUL separator is none.
void FormatDayMonthShortYear(const DDateTime& value, char separator, DString& out);

// HH:MM:SS.mmm, each part by its flag, a ':' between those that are there. Milliseconds are part
// of the seconds: without them they are not written.
void FormatTime(const DDateTime& value, bool hours, bool minutes, bool seconds, bool milliseconds,
                DString& out);

// The same for a span, '-' in front of a negative one; hours are not limited to two digits. The
// span is taken in single precision. The short form writes [-]HH:MM:SS.
void FormatDuration(DDuration value, bool hours, bool minutes, bool seconds, bool milliseconds,
                    DString& out);
void FormatDuration(DDuration value, DString& out);

// Date, blanks, HH:MM:SS. The number of blanks belongs to the layout.
void FormatDateTime(const DDateTime& value, DString& out);  // the default: 05-03-09  10:20:30
void FormatDateTimeDayMonthYear(const DDateTime& value, DString& out);        // three blanks
void FormatDateTimeDayMonthShortYear(const DDateTime& value, DString& out);   // two
void FormatDateTimePacked(const DDateTime& value, DString& out);              // " 5032009 10:20:30"
void FormatDateTimeMonthNameShortYear(const DDateTime& value, DString& out);  // one
void FormatDateTimeMonthNameShortYearMillis(const DDateTime& value, DString& out);  // HH:MM:SS.mmm
void FormatDateTimeMonthName(const DDateTime& value, DString& out);
void FormatDateTimeIso(const DDateTime& value, DString& out);

}  // namespace zelto

#endif
