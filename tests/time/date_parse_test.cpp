#include "common/time/date_parse.h"

#include <gtest/gtest.h>
#include <limits>

#include "tests/time/date_support.h"

namespace zelto {
namespace {

// What the targets hold before: a date parser leaves its time, a time parser its date.
const DDateTime kBefore(9, 8, 1777, 6, 5, 4.5F);

DDateTime Date(int32_t day, int32_t month, int32_t year) {
    return {day, month, year, 6, 5, 4.5F};
}

DDateTime Time(int32_t hour, int32_t minute, float seconds) {
    return {9, 8, 1777, hour, minute, seconds};
}

using Parser = bool (*)(DDateTime&, const char*);

// Texts, each with what it gives.
void Accepts(Parser) {}
template <class... Rest>
void Accepts(Parser parse, const char* text, const DDateTime& result, const Rest&... rest) {
    DDateTime value = kBefore;
    EXPECT_TRUE(parse(value, text)) << text;
    EXPECT_EQ(value, result) << text;
    Accepts(parse, rest...);
}

void Refuses(Parser parse, std::initializer_list<const char*> texts) {
    DDateTime value;
    EXPECT_FALSE(parse(value, nullptr));
    for (const char* text : texts)
        EXPECT_FALSE(parse(value, text)) << text;
}

bool ParseByT(DDateTime& out, const char* text) {
    return ParseYearMonthDayTime(out, text, "-T:");
}

bool ParseByDefault(DDateTime& out, const char* text) {
    return ParseYearMonthDayTime(out, text);
}

TEST(DateParse, DayMonthYear) {
    Accepts(ParseDayMonthYear, "7/8/09", Date(7, 8, 2009), "12/13/50", Date(12, 13, 2050),
            "13/12/51", Date(13, 12, 1951), "12/25/09", Date(12, 25, 2009), "11/25/09",
            Date(25, 11, 2009), "99-98.1", Date(99, 98, 2001), "1-2-3-4-5", Date(1, 2, 2003),
            "1//2//3", Date(1, 2, 2003), " 1- 2x-0x7d9", Date(1, 2, 2009), "1-2-+-5",
            Date(1, 2, 2000), "1-2- -5", Date(1, 2, -5), "4294967297/1/4294967395",
            Date(1, 1, 1999));
    Refuses(ParseDayMonthYear,
            {"", "12-25", "1-2-", "1//2//", "-12-25-09", "0/1/2009", "1/0x0/2009", "1:2:2009"});
}

TEST(DateParse, YearFirst) {
    Accepts(ParseYearMonthDay, "2009:12:25", Date(25, 12, 2009), "-9-1-1", Date(1, 1, -9),
            "100/1/31 10:20", Date(31, 1, 100));
    Refuses(ParseYearMonthDay, {"2009-13-1", "2009-12-32", "2009-12-0", "2009 12 25"});
    Accepts(ParseByDefault, "2009-12-25 10:20:30.5", DDateTime(25, 12, 2009, 10, 20, 30),
            "9.1.2/99/-5:-6", DDateTime(2, 1, 2009, 99, 5, 6));
    Refuses(ParseByDefault, {"2009-12-25 10:20", "2009-0-25 10:20:30"});
    Accepts(ParseByT, "50-1-2T3:4:5:6", DDateTime(2, 1, 2050, 3, 4, 5));
    Refuses(ParseByT, {"2009/12/25 10:20:30"});
}

TEST(DateParse, AnyForm) {
    Accepts(ParseDate, "2009-12-25 10:20:30", DDateTime(25, 12, 2009, 10, 20, 30),
            "0009.1.1 0010:99999999999:7", DDateTime(1, 1, 2009, 10, 1215752191, 7), "2009/12/25",
            Date(25, 12, 2009), "2009:12:25", Date(25, 12, 2009), "25.12.2009", Date(25, 12, 2009),
            "25.12.2009 10:20:30", Date(25, 12, 2009), "2009--12-25", Date(25, 12, 2009),
            "-9-12-25", Date(25, 12, -9), "29.2.2100", Date(29, 2, 2100), "31.12.2009.1.2.3",
            Date(31, 12, 2009), "1-2-0x3", Date(3, 2, 2001), "1-2-3-", Date(3, 2, 2001));
    Refuses(ParseDate, {"-12-25-09", "25.12", "Friday"});
    DDateTime value;
    EXPECT_TRUE(ParseDate(value, DString("2009-12-25 10:20:30")));
    EXPECT_EQ(value, DDateTime(25, 12, 2009, 10, 20, 30));
    EXPECT_FALSE(ParseDate(value, DString()));
}

TEST(DateParse, MonthNamesByColumn) {
    Accepts(ParseDayMonthNameYear, "16-nov-09", Date(16, 11, 2009), "29-FEB-2100",
            Date(29, 2, 2100), "16?Nov\37751", Date(16, 11, 1951), "16-NUL-09", Date(16, 0, 9),
            "xx-jan-09", Date(0, 1, 9), "16-dec", Date(16, 12, 2000), "16-dec-123456",
            Date(16, 12, 12345));
    for (const char* text : {"16-XX1-2009", "16-Foo-2009", "16-XX2-2009", "16-de", "1", ""}) {
        DDateTime value = kBefore;
        EXPECT_FALSE(ParseDayMonthNameYear(value, text)) << text;
        EXPECT_EQ(value.month, 0) << text;
    }
}

TEST(DateParse, TimesOfDay) {
    Accepts(ParseTimeOfDay, " 1:2:3", Time(1, 2, 3), "-5:00:00", Time(-5, 0, 0), "-\t 5:6:7.25",
            Time(-5, 6, 7.25F), "100:00:00", Time(10, 0, 0), "::", Time(0, 0, 0), "1:234:5e1",
            Time(1, 23, 50), "1:-2: +.5x", Time(1, -2, 0.5F), "1:2:0x10", Time(1, 2, 0), "1:2:nan",
            Time(1, 2, 0), "1:2:1e-999", Time(1, 2, 0), "1:2:-1e99",
            Time(1, 2, -std::numeric_limits<float>::infinity()), "1:2:0.0000000000001e99",
            Time(1, 2, 1e-13F));
    Refuses(ParseTimeOfDay, {"", "-", "10:20", "24:00:00", "23:60:00", "23:59:60", "1:2:1e999"});
    Accepts(ParseDayMonthYearThenTime, "25-12-09  10:20:30", DDateTime(25, 12, 2009, 10, 20, 30));
    Refuses(ParseDayMonthYearThenTime, {"25-12-2009", "25-12 10:20:30", "25-12-2009 10:20"});
    Accepts(ParseDayMonthNameYearThenTime, "05-JAN-2009 10:20:30.125",
            DDateTime(5, 1, 2009, 10, 20, 30.125F));
    Refuses(ParseDayMonthNameYearThenTime, {"5-JAN-2009 10:20:30", "16-NOV-2009T10:20:30"});
}

TEST(DateParse, Durations) {
    constexpr double kUntouched = 77.0;
    const std::pair<const char*, double> rows[] = {
        {"-1:00:30", -3630.0},  {"1:30:15.9", 5415.0},   {"1:30", 0.0},
        {"1::30", 0.0},         {"100:-1:x", 359940.0},  {"2000000000:0:0", 7.2e12},
        {":30:00", kUntouched}, {"-:30:00", kUntouched}, {"90", kUntouched},
        {"", kUntouched},       {nullptr, kUntouched}};
    for (const auto& [text, seconds] : rows) {
        DDuration value{kUntouched};
        EXPECT_EQ(ParseDuration(value, text), seconds != kUntouched) << seconds;
        EXPECT_EQ(value.seconds, seconds);
    }
}

}  // namespace
}  // namespace zelto
