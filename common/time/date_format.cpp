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

constexpr TimeParts kToTheSecond = {true, true, true, false};
constexpr TimeParts kToTheMillisecond = {true, true, true, true};

void PutIsoDate(LayoutWriter& writer, const DDateTime& value) {
    writer.Plain(value.year).Put('-').TwoDigits(value.month).Put('-').TwoDigits(value.day);
}

void PutDayMonthYear(LayoutWriter& writer, const DDateTime& value) {
    writer.TwoDigits(value.day).Put('-').TwoDigits(value.month).Put('-').Plain(value.year);
}

void PutShortYear(LayoutWriter& writer, const DDateTime& value) {
    const int32_t year = value.year % 100;
    if (year <= 9)
        writer.Put('0');
    writer.Plain(year);
}

void PutDayMonthShortYear(LayoutWriter& writer, const DDateTime& value, char separator) {
    writer.TwoDigits(value.day).Put(separator).TwoDigits(value.month).Put(separator);
    PutShortYear(writer, value);
}

void PutDayMonthName(LayoutWriter& writer, const DDateTime& value) {
    writer.TwoDigits(value.day).Put('-').Put(MonthAbbreviation(value.month)).Put('-');
}

void PutDayMonthNameShortYear(LayoutWriter& writer, const DDateTime& value) {
    PutDayMonthName(writer, value);
    PutShortYear(writer, value);
}

void PutDayMonthNameYear(LayoutWriter& writer, const DDateTime& value) {
    PutDayMonthName(writer, value);
    writer.Plain(value.year);
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

void PutTime(LayoutWriter& writer, TimeParts parts, const DDateTime& value) {
    const float fraction = value.seconds - std::trunc(value.seconds);
    PutClock(writer, parts, value.hour, value.minute, WholePart(value.seconds),
             WholePart(static_cast<double>(fraction) * 1000.0));
}

}  // namespace

void FormatIsoDate(const DDateTime& value, DString& out) {
    LayoutWriter writer;
    PutIsoDate(writer, value);
    writer.StoreIn(out);
}

void FormatCompactDate(const DDateTime& value, DString& out) {
    LayoutWriter writer;
    writer.Number(value.year, 4, ' ').TwoDigits(value.month).TwoDigits(value.day).StoreIn(out);
}

void FormatDayMonthYear(const DDateTime& value, DString& out) {
    LayoutWriter writer;
    PutDayMonthYear(writer, value);
    writer.StoreIn(out);
}

void FormatDayMonthShortYear(const DDateTime& value, char separator, DString& out) {
    LayoutWriter writer;
    PutDayMonthShortYear(writer, value, separator);
    writer.StoreIn(out);
}

void FormatDayMonthNameShortYear(const DDateTime& value, DString& out) {
    LayoutWriter writer;
    PutDayMonthNameShortYear(writer, value);
    writer.StoreIn(out);
}

void FormatDayMonthNameYear(const DDateTime& value, DString& out) {
    LayoutWriter writer;
    PutDayMonthNameYear(writer, value);
    writer.StoreIn(out);
}

void FormatTime(const DDateTime& value, bool hours, bool minutes, bool seconds, bool milliseconds,
                DString& out) {
    LayoutWriter writer;
    PutTime(writer, {hours, minutes, seconds, milliseconds}, value);
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
    LayoutWriter writer;
    PutDayMonthYear(writer, value);
    PutTime(writer.Put("   "), kToTheSecond, value);
    writer.StoreIn(out);
}

void FormatDateTimeDayMonthShortYear(const DDateTime& value, DString& out) {
    LayoutWriter writer;
    PutDayMonthShortYear(writer, value, '-');
    PutTime(writer.Put("  "), kToTheSecond, value);
    writer.StoreIn(out);
}

void FormatDateTimePacked(const DDateTime& value, DString& out) {
    LayoutWriter writer;
    writer.Number(value.day, 2, ' ').TwoDigits(value.month).Number(value.year, 4, '0');
    PutTime(writer.Put(' '), kToTheSecond, value);
    writer.StoreIn(out);
}

void FormatDateTimeMonthNameShortYear(const DDateTime& value, DString& out) {
    LayoutWriter writer;
    PutDayMonthNameShortYear(writer, value);
    PutTime(writer.Put(' '), kToTheSecond, value);
    writer.StoreIn(out);
}

void FormatDateTimeMonthNameShortYearMillis(const DDateTime& value, DString& out) {
    LayoutWriter writer;
    PutDayMonthNameShortYear(writer, value);
    PutTime(writer.Put(' '), kToTheMillisecond, value);
    writer.StoreIn(out);
}

void FormatDateTimeMonthName(const DDateTime& value, DString& out) {
    LayoutWriter writer;
    PutDayMonthNameYear(writer, value);
    PutTime(writer.Put(' '), kToTheSecond, value);
    writer.StoreIn(out);
}

void FormatDateTimeIso(const DDateTime& value, DString& out) {
    LayoutWriter writer;
    PutIsoDate(writer, value);
    PutTime(writer.Put(' '), kToTheSecond, value);
    writer.StoreIn(out);
}

}  // namespace zelto
