#include "common/time/date_format.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "common/text/numbers.h"
#include "common/time/layout_writer.h"
#include "common/time/month_names.h"

namespace zelto {
namespace {

struct TimeParts {
    bool hours;
    bool minutes;
    bool seconds;
    bool milliseconds;
};

void PutShortYear(LayoutWriter& writer, const DDateTime& value) {
    const int32_t year = value.year % 100;
    if (year <= 9)
        writer.Put('0');
    writer.Plain(year);
}

int32_t Thousandths(const DDateTime& value) {
    const float fraction = value.seconds - std::trunc(value.seconds);
    return WholePart(static_cast<double>(fraction) * 1000.0);
}

void PutClock(LayoutWriter& writer, TimeParts parts, int32_t hour, int32_t minute, int32_t second,
              int32_t milliseconds) {
    if (parts.hours) {
        writer.TwoDigits(hour);
        if (parts.minutes || parts.seconds)
            writer.Put(':');
    }
    if (parts.minutes) {
        writer.TwoDigits(minute);
        if (parts.seconds)
            writer.Put(':');
    }
    if (parts.seconds) {
        writer.TwoDigits(second);
        if (parts.milliseconds)
            writer.Put('.').Number(milliseconds, 3, '0');
    }
}

// Writes a date and time by its layout, in which these letters stand for values and all else for
// itself:
//   D d  day, two digits; filled with a blank     h m s  hour, minute, second, two digits
//   M N  month, two digits; its abbreviation      f      thousandths of a second, three digits
//   Y y  year as it is; its last two digits       ?      the separator
//   Z W  year, four digits; filled with blanks
void PutByLayout(LayoutWriter& writer, const char* layout, const DDateTime& value, char separator) {
    for (; *layout != 0; ++layout) {
        switch (*layout) {
            case 'D':
                writer.TwoDigits(value.day);
                break;
            case 'd':
                writer.Number(value.day, 2, ' ');
                break;
            case 'M':
                writer.TwoDigits(value.month);
                break;
            case 'N':
                writer.Put(MonthAbbreviation(value.month));
                break;
            case 'Y':
                writer.Plain(value.year);
                break;
            case 'y':
                PutShortYear(writer, value);
                break;
            case 'Z':
                writer.Number(value.year, 4, '0');
                break;
            case 'W':
                writer.Number(value.year, 4, ' ');
                break;
            case 'h':
                writer.TwoDigits(value.hour);
                break;
            case 'm':
                writer.TwoDigits(value.minute);
                break;
            case 's':
                writer.TwoDigits(WholePart(value.seconds));
                break;
            case 'f':
                writer.Number(Thousandths(value), 3, '0');
                break;
            case '?':
                writer.Put(separator);
                break;
            default:
                writer.Put(*layout);
        }
    }
}

void FormatByLayout(const char* layout, const DDateTime& value, DString& out, char separator = 0) {
    LayoutWriter writer;
    PutByLayout(writer, layout, value, separator);
    writer.StoreIn(out);
}

}  // namespace

void FormatIsoDate(const DDateTime& value, DString& out) {
    FormatByLayout("Y-M-D", value, out);
}

void FormatCompactDate(const DDateTime& value, DString& out) {
    FormatByLayout("WMD", value, out);
}

void FormatDayMonthYear(const DDateTime& value, DString& out) {
    FormatByLayout("D-M-Y", value, out);
}

void FormatDayMonthShortYear(const DDateTime& value, char separator, DString& out) {
    FormatByLayout("D?M?y", value, out, separator);
}

void FormatDayMonthNameShortYear(const DDateTime& value, DString& out) {
    FormatByLayout("D-N-y", value, out);
}

void FormatDayMonthNameYear(const DDateTime& value, DString& out) {
    FormatByLayout("D-N-Y", value, out);
}

void FormatTime(const DDateTime& value, bool hours, bool minutes, bool seconds, bool milliseconds,
                DString& out) {
    LayoutWriter writer;
    PutClock(writer, {hours, minutes, seconds, milliseconds}, value.hour, value.minute,
             WholePart(value.seconds), Thousandths(value));
    writer.StoreIn(out);
}

void FormatDuration(DDuration value, bool hours, bool minutes, bool seconds, bool milliseconds,
                    DString& out) {
    // Cut to 32 bits while still a double: beyond that a float could not be converted.
    constexpr double kLongest = std::numeric_limits<int32_t>::max();
    const auto span = static_cast<float>(std::min(std::fabs(value.seconds), kLongest));
    const int32_t whole = WholePart(span);
    const float fraction = span - static_cast<float>(whole);
    LayoutWriter writer;
    if (value.seconds < 0.0)
        writer.Put('-');
    PutClock(writer, {hours, minutes, seconds, milliseconds}, whole / 3600, whole / 60 % 60,
             whole % 60, WholePart(fraction * 1000.0F));
    writer.StoreIn(out);
}

void FormatDuration(DDuration value, DString& out) {
    FormatDuration(value, true, true, true, false, out);
}

void FormatDateTime(const DDateTime& value, DString& out) {
    FormatDateTimeDayMonthShortYear(value, out);
}

void FormatDateTimeDayMonthYear(const DDateTime& value, DString& out) {
    FormatByLayout("D-M-Y   h:m:s", value, out);
}

void FormatDateTimeDayMonthShortYear(const DDateTime& value, DString& out) {
    FormatByLayout("D-M-y  h:m:s", value, out);
}

void FormatDateTimePacked(const DDateTime& value, DString& out) {
    FormatByLayout("dMZ h:m:s", value, out);
}

void FormatDateTimeMonthNameShortYear(const DDateTime& value, DString& out) {
    FormatByLayout("D-N-y h:m:s", value, out);
}

void FormatDateTimeMonthNameShortYearMillis(const DDateTime& value, DString& out) {
    FormatByLayout("D-N-y h:m:s.f", value, out);
}

void FormatDateTimeMonthName(const DDateTime& value, DString& out) {
    FormatByLayout("D-N-Y h:m:s", value, out);
}

void FormatDateTimeIso(const DDateTime& value, DString& out) {
    FormatByLayout("Y-M-D h:m:s", value, out);
}

}  // namespace zelto
