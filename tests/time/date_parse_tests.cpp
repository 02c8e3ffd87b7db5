#include <gtest/gtest.h>
#include <limits>

#include "common/time/date_parse.h"
#include "tests/time/date_printing.h"

namespace zelto {
namespace {

using Parser = bool (*)(DDateTime&, const char*);

bool ParseDateTimeByDefault(DDateTime& out, const char* text) {
    return ParseYearMonthDayTime(out, text);
}

bool ParseDateTimeByT(DDateTime& out, const char* text) {
    return ParseYearMonthDayTime(out, text, "-T:");
}

struct ParseCase {
    Parser parse;
    const char* text;
    DDateTime result;
};

// What the targets hold before: a date parser must leave its time, a time parser its date.
const DDateTime kBefore(9, 8, 1777, 6, 5, 4.5F);

DDateTime Date(int32_t day, int32_t month, int32_t year) {
    return {day, month, year, 6, 5, 4.5F};
}

DDateTime Time(int32_t hour, int32_t minute, float seconds) {
    return {9, 8, 1777, hour, minute, seconds};
}

TEST(DateParse, AcceptsByTheTable) {
    const ParseCase cases[] = {
        {ParseDayMonthYear, "7/8/09", Date(7, 8, 2009)},
        {ParseDayMonthYear, "12/13/50", Date(12, 13, 2050)},
        {ParseDayMonthYear, "13/12/51", Date(13, 12, 1951)},
        {ParseDayMonthYear, "12/25/09", Date(12, 25, 2009)},
        {ParseDayMonthYear, "11/25/09", Date(25, 11, 2009)},
        {ParseDayMonthYear, "99-98.1", Date(99, 98, 2001)},
        {ParseDayMonthYear, "1-2-3-4-5", Date(1, 2, 2003)},
        {ParseDayMonthYear, "1//2//3", Date(1, 2, 2003)},
        {ParseDayMonthYear, " 1- 2x-0x7d9", Date(1, 2, 2009)},
        {ParseDayMonthYear, "1-2-+-5", Date(1, 2, 2000)},
        {ParseDayMonthYear, "1-2- -5", Date(1, 2, -5)},
        {ParseDayMonthYear, "4294967297/1/4294967395", Date(1, 1, 1999)},
        {ParseYearMonthDay, "2009:12:25", Date(25, 12, 2009)},
        {ParseYearMonthDay, "-9-1-1", Date(1, 1, -9)},
        {ParseYearMonthDay, "100/1/31 10:20", Date(31, 1, 100)},
        {ParseDateTimeByDefault, "2009-12-25 10:20:30.5", {25, 12, 2009, 10, 20, 30}},
        {ParseDateTimeByDefault, "9.1.2/99/-5:-6", {2, 1, 2009, 99, 5, 6}},
        {ParseDateTimeByT, "50-1-2T3:4:5:6", {2, 1, 2050, 3, 4, 5}},
        {ParseDate, "2009-12-25 10:20:30", {25, 12, 2009, 10, 20, 30}},
        {ParseDate, "0009.1.1 0010:99999999999:7", {1, 1, 2009, 10, 1215752191, 7}},
        {ParseDate, "2009/12/25", Date(25, 12, 2009)},
        {ParseDate, "2009:12:25", Date(25, 12, 2009)},
        {ParseDate, "25.12.2009", Date(25, 12, 2009)},
        {ParseDate, "25.12.2009 10:20:30", Date(25, 12, 2009)},
        {ParseDate, "2009--12-25", Date(25, 12, 2009)},
        {ParseDate, "-9-12-25", Date(25, 12, -9)},
        {ParseDate, "29.2.2100", Date(29, 2, 2100)},
        {ParseDate, "31.12.2009.1.2.3", Date(31, 12, 2009)},
        {ParseDate, "1-2-0x3", Date(3, 2, 2001)},
        {ParseDayMonthNameYear, "16-nov-09", Date(16, 11, 2009)},
        {ParseDayMonthNameYear, "29-FEB-2100", Date(29, 2, 2100)},
        {ParseDayMonthNameYear,
         "16?Nov\xFF"
         "51",
         Date(16, 11, 1951)},
        {ParseDayMonthNameYear, "16-NUL-09", Date(16, 0, 9)},
        {ParseDayMonthNameYear, "xx-jan-09", Date(0, 1, 9)},
        {ParseDayMonthNameYear, "16-dec", Date(16, 12, 2000)},
        {ParseDayMonthNameYear, "16-dec-123456", Date(16, 12, 12345)},
        {ParseTimeOfDay, " 1:2:3", Time(1, 2, 3)},
        {ParseTimeOfDay, "-5:00:00", Time(-5, 0, 0)},
        {ParseTimeOfDay, "-\t 5:6:7.25", Time(-5, 6, 7.25F)},
        {ParseTimeOfDay, "100:00:00", Time(10, 0, 0)},
        {ParseTimeOfDay, "::", Time(0, 0, 0)},
        {ParseTimeOfDay, "1:234:5e1", Time(1, 23, 50)},
        {ParseTimeOfDay, "1:-2: +.5x", Time(1, -2, 0.5F)},
        {ParseTimeOfDay, "1:2:0x10", Time(1, 2, 0)},
        {ParseTimeOfDay, "1:2:nan", Time(1, 2, 0)},
        {ParseTimeOfDay, "1:2:1e-999", Time(1, 2, 0)},
        {ParseTimeOfDay, "1:2:-1e99", Time(1, 2, -std::numeric_limits<float>::infinity())},
        {ParseTimeOfDay, "1:2:0.0000000000001e99", Time(1, 2, 1e-13F)},  // cut at 15 characters
        {ParseDayMonthYearThenTime, "25-12-09  10:20:30", {25, 12, 2009, 10, 20, 30}},
        {ParseDayMonthNameYearThenTime, "05-JAN-2009 10:20:30.125", {5, 1, 2009, 10, 20, 30.125F}},
    };
    for (const ParseCase& c : cases) {
        DDateTime value = kBefore;
        EXPECT_TRUE(c.parse(value, c.text)) << c.text;
        EXPECT_EQ(value, c.result) << c.text;
    }
}

TEST(DateParse, RefusesByTheTable) {
    const struct {
        Parser parse;
        const char* text;
    } cases[] = {
        {ParseDayMonthYear, ""},
        {ParseDayMonthYear, "12-25"},
        {ParseDayMonthYear, "1-2-"},
        {ParseDayMonthYear, "1//2//"},
        {ParseDayMonthYear, "-12-25-09"},
        {ParseDayMonthYear, "0/1/2009"},
        {ParseDayMonthYear, "1/0x0/2009"},
        {ParseDayMonthYear, "1:2:2009"},
        {ParseYearMonthDay, "2009-13-1"},
        {ParseYearMonthDay, "2009-12-32"},
        {ParseYearMonthDay, "2009-12-0"},
        {ParseYearMonthDay, "2009 12 25"},
        {ParseDateTimeByDefault, "2009-12-25 10:20"},
        {ParseDateTimeByDefault, "2009-0-25 10:20:30"},
        {ParseDateTimeByT, "2009/12/25 10:20:30"},
        {ParseDate, "-12-25-09"},
        {ParseDate, "25.12"},
        {ParseDate, "Friday"},
        {ParseTimeOfDay, ""},
        {ParseTimeOfDay, "-"},
        {ParseTimeOfDay, "10:20"},
        {ParseTimeOfDay, "24:00:00"},
        {ParseTimeOfDay, "23:60:00"},
        {ParseTimeOfDay, "23:59:60"},
        {ParseTimeOfDay, "1:2:1e999"},
        {ParseDayMonthYearThenTime, "25-12-2009"},
        {ParseDayMonthYearThenTime, "25-12 10:20:30"},
        {ParseDayMonthYearThenTime, "25-12-2009 10:20"},
        {ParseDayMonthNameYearThenTime, "16-NOV-2009T10:20:30"},
        {ParseDayMonthNameYearThenTime, "5-JAN-2009 10:20:30"},
    };
    for (const auto& c : cases) {
        DDateTime value = kBefore;
        EXPECT_FALSE(c.parse(value, c.text)) << c.text;
    }
    for (const Parser parse : {ParseDayMonthYear, ParseYearMonthDay, ParseDateTimeByDefault,
                               ParseDate, ParseDayMonthNameYear, ParseTimeOfDay}) {
        DDateTime value;
        EXPECT_FALSE(parse(value, nullptr));
    }
}

TEST(DateParse, UnknownMonthNamesLeaveMonthZero) {
    for (const char* text : {"16-XX1-2009", "16-Foo-2009", "16-XX2-2009", "16-de", "1", ""}) {
        DDateTime value = kBefore;
        EXPECT_FALSE(ParseDayMonthNameYear(value, text)) << text;
        EXPECT_EQ(value.month, 0) << text;
    }
}

TEST(DateParse, Durations) {
    constexpr double kBeforeSeconds = 77.0;
    const struct {
        const char* text;
        bool accepted;
        double seconds;
    } cases[] = {
        {"-1:00:30", true, -3630.0},
        {"1:30:15", true, 5415.0},
        {"1:30:15.9", true, 5415.0},
        {"1:30", true, 0.0},
        {"1::30", true, 0.0},
        {"100:-1:x", true, 359940.0},
        {"2000000000:0:0", true, 7.2e12},
        {":30:00", false, kBeforeSeconds},
        {"-:30:00", false, kBeforeSeconds},
        {"90", false, kBeforeSeconds},
        {"", false, kBeforeSeconds},
        {nullptr, false, kBeforeSeconds},
    };
    for (const auto& c : cases) {
        DDuration value{kBeforeSeconds};
        EXPECT_EQ(ParseDuration(value, c.text), c.accepted) << (c.text ? c.text : "null");
        EXPECT_EQ(value.seconds, c.seconds) << (c.text ? c.text : "null");
    }
}

TEST(DateParse, StringsReadAsTheirCharacters) {
    DDateTime value;
    EXPECT_TRUE(ParseDate(value, DString("2009-12-25 10:20:30")));
    EXPECT_EQ(value, DDateTime(25, 12, 2009, 10, 20, 30));
    EXPECT_FALSE(ParseDate(value, DString()));
}

}  // namespace
}  // namespace zelto
