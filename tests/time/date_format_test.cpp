#include "common/time/date_format.h"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <string>
#include <tuple>
#include <utility>

#include "common/time/month_names.h"
#include "tests/time/date_support.h"

namespace zelto {
namespace {

using Formatter = void (*)(const DDateTime&, DString&);

constexpr int32_t kMost = std::numeric_limits<int32_t>::max();
constexpr int32_t kLeast = std::numeric_limits<int32_t>::min();

void FormatDottedShortYear(const DDateTime& value, DString& out) {
    FormatDayMonthShortYear(value, '.', out);
}

// Layouts, each with the text it gives.
void Formats(const DDateTime&) {}
template <class... Rest>
void Formats(const DDateTime& value, Formatter format, const char* text, const Rest&... rest) {
    DString out("something longer than the text of any layout");
    out.set_codepage(1250);
    format(value, out);
    EXPECT_STREQ(out.c_str(), text);
    EXPECT_EQ(out.codepage(), 1250);
    Formats(value, rest...);
}

TEST(DateFormat, Layouts) {
    Formats({5, 3, 2009, 1, 2, 3.9996F}, FormatIsoDate, "2009-03-05", FormatCompactDate, "20090305",
            FormatDayMonthYear, "05-03-2009", FormatDottedShortYear, "05.03.09",
            FormatDayMonthNameShortYear, "05-MAR-09", FormatDayMonthNameYear, "05-MAR-2009",
            FormatDateTime, "05-03-09  01:02:03", FormatDateTimeDayMonthYear,
            "05-03-2009   01:02:03", FormatDateTimeDayMonthShortYear, "05-03-09  01:02:03",
            FormatDateTimePacked, " 5032009 01:02:03", FormatDateTimeMonthNameShortYear,
            "05-MAR-09 01:02:03", FormatDateTimeMonthNameShortYearMillis, "05-MAR-09 01:02:03.999",
            FormatDateTimeMonthName, "05-MAR-2009 01:02:03", FormatDateTimeIso,
            "2009-03-05 01:02:03");
    Formats({}, FormatIsoDate, "0-00-00", FormatDayMonthYear, "00-00-0",
            FormatDayMonthNameShortYear, "00-NUL-00", FormatDateTimePacked, " 0000000 00:00:00");
    Formats({25, 12, 95}, FormatIsoDate, "95-12-25", FormatCompactDate, "  951225",
            FormatDottedShortYear, "25.12.95");
    Formats({-5, 13, -2009, 100, -1, -1.5F}, FormatCompactDate, "-200913-5", FormatDayMonthYear,
            "-5-13--2009", FormatDottedShortYear, "-5.13.0-9", FormatDayMonthNameYear,
            "-5-XX1--2009", FormatDateTimeMonthNameShortYearMillis, "-5-XX1-0-9 100:-1:-1.-500");
}

// The longest texts there are, and seconds that no integer holds.
TEST(DateFormat, AnyFieldsFit) {
    constexpr float kInfinity = std::numeric_limits<float>::infinity();
    Formats({kLeast, kLeast, kLeast, kLeast, kLeast, -3e38F}, FormatDateTimeIso,
            "-2147483648--2147483648--2147483648 -2147483648:-2147483648:-2147483648",
            FormatDateTimeMonthNameShortYearMillis,
            "-2147483648--0-48 -2147483648:-2147483648:-2147483648.000", FormatDateTimeDayMonthYear,
            "-2147483648--2147483648--2147483648   -2147483648:-2147483648:-2147483648");
    Formats({1, kMost, 1, 1, 1, kInfinity}, FormatDateTimeMonthNameShortYearMillis,
            "01--01 01:01:2147483647.000");
    Formats({1, 1, 1, 1, 1, std::nanf("")}, FormatDateTimeIso, "1-01-01 01:01:00");
}

// The flags are the low four bits: hours, minutes, seconds, milliseconds.
std::string ByFlags(int flags, bool as_duration) {
    DString out("old");
    const bool hours = flags & 8, minutes = flags & 4, seconds = flags & 2, millis = flags & 1;
    if (as_duration)
        FormatDuration(DDuration{-3661.5}, hours, minutes, seconds, millis, out);
    else
        FormatTime({0, 0, 0, 1, 2, 59.9996F}, hours, minutes, seconds, millis, out);
    return out.c_str();
}

TEST(DateFormat, PartsByTheirFlags) {
    const char* const times[] = {
        "",   "",   "59",    "59.999",    "02",    "02",    "02:59",    "02:59.999",
        "01", "01", "01:59", "01:59.999", "01:02", "01:02", "01:02:59", "01:02:59.999"};
    for (int flags = 0; flags < 16; ++flags)
        EXPECT_EQ(ByFlags(flags, false), times[flags]) << flags;
    EXPECT_EQ(ByFlags(15, true), "-01:01:01.500");
    EXPECT_EQ(ByFlags(11, true), "-01:01.500");
    EXPECT_EQ(ByFlags(5, true), "-01");
}

TEST(DateFormat, Durations) {
    const std::pair<double, const char*> rows[] = {
        {-0.0, "00:00:00"},        {-0.25, "-00:00:00"},    {360000, "100:00:00"},
        {16777217, "4660:20:16"},  {1e300, "596523:14:07"}, {-1e300, "-596523:14:07"},
        {std::nan(""), "00:00:00"}};
    for (const auto& [seconds, text] : rows) {
        DString out("old");
        FormatDuration(DDuration{seconds}, out);
        EXPECT_STREQ(out.c_str(), text);
    }
}

TEST(MonthNames, AreInIsoBytes) {
    EXPECT_STREQ(MonthAbbreviation(14), "XX2");
    EXPECT_STREQ(MonthAbbreviation(15), "");
    const std::tuple<int, int, const char*> cells[] = {
        {0, 2, "Mrz"},      {1, 2, "mar\xE7"}, {1, 7, "ag"},      {4, 5, "kes\xE4"},
        {4, 6, "hein\xE4"}, {5, 1, "f\xE9vr"}, {5, 7, "ao\xFBt"}, {5, 11, "d\351c"},
        {9, 1, "Fev"},      {11, 11, "abe"}};
    for (const auto& [language, month, name] : cells)
        EXPECT_STREQ(MonthNames[language][month], name);
}

}  // namespace
}  // namespace zelto
