#include <chrono>
#include <cmath>
#include <gtest/gtest.h>
#include <limits>

#include "common/time/date_format.h"
#include "common/time/date_parse.h"
#include "common/time/month_names.h"
#include "tests/time/date_printing.h"

namespace zelto {
namespace {

using Formatter = void (*)(const DDateTime&, DString&);
using Parser = bool (*)(DDateTime&, const char*);

constexpr int32_t kMost = std::numeric_limits<int32_t>::max();
constexpr int32_t kLeast = std::numeric_limits<int32_t>::min();

void FormatDottedShortYear(const DDateTime& value, DString& out) {
    FormatDayMonthShortYear(value, '.', out);
}

void FormatDashedShortYear(const DDateTime& value, DString& out) {
    FormatDayMonthShortYear(value, '-', out);
}

TEST(DateFormat, LayoutsByTheTable) {
    const DDateTime usual(5, 3, 2009, 1, 2, 3.9996F);
    const DDateTime null;
    const DDateTime ancient(25, 12, 95, 10, 20, 30);
    const DDateTime odd(-5, 13, -2009, 100, -1, -1.5F);
    const struct {
        Formatter format;
        const DDateTime& value;
        const char* text;
    } cases[] = {
        {FormatIsoDate, usual, "2009-03-05"},
        {FormatIsoDate, null, "0-00-00"},
        {FormatIsoDate, ancient, "95-12-25"},
        {FormatCompactDate, usual, "20090305"},
        {FormatCompactDate, ancient, "  951225"},
        {FormatCompactDate, odd, "-200913-5"},
        {FormatDayMonthYear, usual, "05-03-2009"},
        {FormatDayMonthYear, null, "00-00-0"},
        {FormatDayMonthYear, odd, "-5-13--2009"},
        {FormatDottedShortYear, usual, "05.03.09"},
        {FormatDottedShortYear, ancient, "25.12.95"},
        {FormatDottedShortYear, odd, "-5.13.0-9"},
        {FormatDayMonthNameShortYear, usual, "05-MAR-09"},
        {FormatDayMonthNameShortYear, null, "00-NUL-00"},
        {FormatDayMonthNameYear, usual, "05-MAR-2009"},
        {FormatDayMonthNameYear, odd, "-5-XX1--2009"},
        {FormatDateTime, usual, "05-03-09  01:02:03"},
        {FormatDateTimeDayMonthYear, usual, "05-03-2009   01:02:03"},
        {FormatDateTimeDayMonthShortYear, usual, "05-03-09  01:02:03"},
        {FormatDateTimePacked, usual, " 5032009 01:02:03"},
        {FormatDateTimePacked, null, " 0000000 00:00:00"},
        {FormatDateTimeMonthNameShortYear, usual, "05-MAR-09 01:02:03"},
        {FormatDateTimeMonthNameShortYearMillis, usual, "05-MAR-09 01:02:03.999"},
        {FormatDateTimeMonthNameShortYearMillis, odd, "-5-XX1-0-9 100:-1:-1.-500"},
        {FormatDateTimeMonthName, usual, "05-MAR-2009 01:02:03"},
        {FormatDateTimeIso, usual, "2009-03-05 01:02:03"},
    };
    DString out("something longer than any of the layouts");
    out.set_codepage(1250);
    for (const auto& c : cases) {
        c.format(c.value, out);
        EXPECT_STREQ(out.c_str(), c.text);
    }
    EXPECT_EQ(out.codepage(), 1250);
}

TEST(DateFormat, TimeAndDurationByTheirFlags) {
    const DDateTime time(0, 0, 0, 1, 2, 59.9996F);
    const DDuration span{-3661.5};
    const char* const texts[] = {"",      "",      "59",       "59.999",     // none, ms
                                 "02",    "02",    "02:59",    "02:59.999",  // minutes
                                 "01",    "01",    "01:59",    "01:59.999",  // hours
                                 "01:02", "01:02", "01:02:59", "01:02:59.999"};
    const char* const spans[] = {
        "-",   "-",   "-01",    "-01.500",    "-01",    "-01",    "-01:01",    "-01:01.500",
        "-01", "-01", "-01:01", "-01:01.500", "-01:01", "-01:01", "-01:01:01", "-01:01:01.500"};
    for (int flags = 0; flags < 16; ++flags) {
        DString out("old");
        FormatTime(time, flags & 8, flags & 4, flags & 2, flags & 1, out);
        EXPECT_STREQ(out.c_str(), texts[flags]) << flags;
        FormatDuration(span, flags & 8, flags & 4, flags & 2, flags & 1, out);
        EXPECT_STREQ(out.c_str(), spans[flags]) << flags;
    }
}

TEST(DateFormat, DurationsByTheTable) {
    const struct {
        double seconds;
        const char* text;
    } cases[] = {
        {0, "00:00:00"},
        {-0.0, "00:00:00"},
        {-0.25, "-00:00:00"},
        {360000, "100:00:00"},
        {16777217, "4660:20:16"},  // single precision
        {1e300, "596523:14:07"},
        {-std::numeric_limits<double>::infinity(), "-596523:14:07"},
        {std::nan(""), "00:00:00"},
    };
    for (const auto& c : cases) {
        DString out;
        FormatDuration(DDuration{c.seconds}, out);
        EXPECT_STREQ(out.c_str(), c.text);
    }
}

TEST(DateFormat, AnyFieldsFit) {
    DString out;
    for (const int32_t field : {kMost, kLeast}) {
        for (const float seconds : {-3e38F, 3e38F, std::numeric_limits<float>::quiet_NaN(),
                                    std::numeric_limits<float>::infinity()}) {
            const DDateTime value(field, field, field, field, field, seconds);
            for (const Formatter format : {FormatDateTimeDayMonthYear, FormatDateTimePacked,
                                           FormatDateTimeMonthNameShortYearMillis,
                                           FormatDateTimeMonthName, FormatDateTimeIso})
                format(value, out);
        }
    }
    const DDateTime value(kLeast, kLeast, kLeast, kLeast, kLeast, -3e38F);
    FormatDateTimeIso(value, out);
    EXPECT_STREQ(out.c_str(),
                 "-2147483648--2147483648--2147483648 -2147483648:-2147483648:-2147483648");
    FormatDayMonthNameYear(value, out);
    EXPECT_STREQ(out.c_str(), "-2147483648---2147483648");
}

TEST(DateFormat, EveryDateOfTwoCenturiesComesBack) {
    const struct {
        Formatter format;
        Parser parse;
        bool short_year;
        bool time;
        bool milliseconds;
    } pairs[] = {
        {FormatIsoDate, ParseDate, false, false, false},
        {FormatIsoDate, ParseYearMonthDay, false, false, false},
        {FormatDayMonthYear, ParseDate, false, false, false},
        {FormatDayMonthYear, ParseDayMonthYear, false, false, false},
        {FormatDashedShortYear, ParseDayMonthYear, true, false, false},
        {FormatDayMonthNameYear, ParseDayMonthNameYear, false, false, false},
        {FormatDayMonthNameShortYear, ParseDayMonthNameYear, true, false, false},
        {FormatDateTime, ParseDayMonthYearThenTime, true, true, false},
        {FormatDateTimeDayMonthYear, ParseDayMonthYearThenTime, false, true, false},
        {FormatDateTimeMonthName, ParseDayMonthNameYearThenTime, false, true, false},
        {FormatDateTimeMonthNameShortYearMillis, ParseDayMonthNameYearThenTime, true, true, true},
        {FormatDateTimeIso, ParseDate, false, true, false},
    };
    using std::chrono::sys_days;
    using std::chrono::year;
    int32_t second = 0;
    DString text;
    for (sys_days day = year(1900) / 1 / 1; day < year(2101) / 1 / 1; day += std::chrono::days(1)) {
        const std::chrono::year_month_day date(day);
        second = (second + 7919) % 86400;
        const DDateTime whole(static_cast<int32_t>(static_cast<unsigned>(date.day())),
                              static_cast<int32_t>(static_cast<unsigned>(date.month())),
                              static_cast<int>(date.year()), second / 3600, second / 60 % 60,
                              static_cast<float>(second % 60));
        for (const auto& pair : pairs) {
            if (pair.short_year && (whole.year < 1951 || whole.year > 2050))
                continue;
            DDateTime expected = pair.time ? whole : DDateTime(whole.day, whole.month, whole.year);
            if (pair.milliseconds)
                expected.seconds += 0.625F;
            pair.format(expected, text);
            DDateTime value;
            ASSERT_TRUE(pair.parse(value, text.c_str())) << text.c_str();
            ASSERT_EQ(value, expected) << text.c_str();
        }
    }
}

TEST(MonthNames, AreInIsoBytes) {
    EXPECT_STREQ(MonthAbbreviation(14), "XX2");
    EXPECT_STREQ(MonthAbbreviation(15), "");
    EXPECT_STREQ(MonthAbbreviation(kLeast), "");
    const struct {
        int language;
        int month;
        const char* name;
    } cases[] = {{0, 2, "Mrz"},      {1, 2, "mar\xE7"}, {1, 7, "ag"},      {4, 5, "kes\xE4"},
                 {4, 11, "joulu"},   {5, 1, "f\xE9vr"}, {5, 7, "ao\xFBt"}, {5, 11, "d\351c"},
                 {4, 6, "hein\xE4"}, {9, 1, "Fev"},     {11, 11, "abe"}};
    for (const auto& c : cases)
        EXPECT_STREQ(MonthNames[c.language][c.month], c.name);
}

}  // namespace
}  // namespace zelto
