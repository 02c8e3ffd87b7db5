#include <cstring>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>

#include "platform/coredll/coredll.h"
#include "platform/coredll/linux/clock_settings.h"
#include "platform/coredll/linux/host_zone.h"
#include "platform/coredll/linux/posix_zone.h"
#include "platform/coredll/linux/zone_rule.h"
#include "tests/coredll/fake_host_clock.h"
#include "tests/support/temp_device.h"

namespace {

using namespace zelto::coredll;
using zelto::test::Moment;
using zelto::test::TextOf;
using zelto::test::Variable;

constexpr const char* kEurope = "CET-1CEST,M3.5.0,M10.5.0/3";
constexpr const char* kAustralia = "AEST-10AEDT,M10.1.0,M4.1.0/3";
constexpr const char* kNewfoundland = "NST3:30NDT,M3.2.0,M11.1.0";

TIME_ZONE_INFORMATION Parsed(const char* text, int year = 2025) {
    TIME_ZONE_INFORMATION zone{};
    EXPECT_TRUE(ParsePosixZone(text, year, zone)) << text;
    return zone;
}

int64_t Ticks(const SYSTEMTIME& time) {
    int64_t ticks = 0;
    EXPECT_TRUE(TicksFromSystemTime(time, ticks)) << TextOf(time);
    return ticks;
}

// A transition in one line: "m/w/d time" each year, else the date.
std::string Summary(const SYSTEMTIME& date) {
    if (date.wMonth == 0)
        return "none";
    const std::string text = TextOf(date);
    if (date.wYear != 0)
        return text;
    return std::to_string(date.wMonth) + '/' + std::to_string(date.wDay) + '/' +
           std::to_string(date.wDayOfWeek) + text.substr(10);
}

TEST(PosixZone, BecomesARecord) {
    const struct {
        const char* text;
        LONG bias;
        LONG daylight_bias;
        const char* to_daylight;
        const char* to_standard;
    } cases[] = {
        {"UTC0", 0, 0, "none", "none"},
        {"<+0545>-5:45", -345, 0, "none", "none"},
        {kEurope, -60, -60, "3/5/0 02:00:00.000", "10/5/0 03:00:00.000"},
        {kAustralia, -600, -60, "10/1/0 02:00:00.000", "4/1/0 03:00:00.000"},
        {kNewfoundland, 210, -60, "3/2/0 02:00:00.000", "11/1/0 02:00:00.000"},
        {"EST5EDT", 300, -60, "3/2/0 02:00:00.000", "11/1/0 02:00:00.000"},
        {"<+1030>-10:30<+11>-11,M10.1.0,M4.1.0", -630, -30, "10/1/0 02:00:00.000",
         "4/1/0 02:00:00.000"},
        {"<-04>4<-03>,M9.1.6/24,M4.1.6/24", 240, -60, "9/1/6 23:59:59.999", "4/1/6 23:59:59.999"},
        // Winter time that is the smaller one, and called "daylight" there.
        {"IST-1GMT0,M10.5.0,M3.5.0/1", 0, -60, "3/5/0 01:00:00.000", "10/5/0 02:00:00.000"},
        {"IST-2IDT,M3.4.4/26,M10.5.0", -120, -60, "2025-03-28 02:00:00.000",
         "2025-10-26 02:00:00.000"},
        {"<-02>2<-01>,M3.5.0/-1,M10.5.0/0", 120, -60, "2025-03-29 23:00:00.000",
         "2025-10-26 00:00:00.000"},
        {"AAA3BBB,J60,300/0:0:30", 180, -60, "2025-03-01 02:00:00.000", "2025-10-28 00:00:30.000"},
    };
    for (const auto& test : cases) {
        const TIME_ZONE_INFORMATION zone = Parsed(test.text);
        EXPECT_EQ(zone.Bias, test.bias) << test.text;
        EXPECT_EQ(zone.StandardBias, 0);
        EXPECT_EQ(zone.DaylightBias, test.daylight_bias) << test.text;
        EXPECT_EQ(Summary(zone.DaylightDate), test.to_daylight) << test.text;
        EXPECT_EQ(Summary(zone.StandardDate), test.to_standard) << test.text;
        EXPECT_TRUE(IsValidZone(zone)) << test.text;
    }
    EXPECT_EQ(Summary(Parsed("AAA3BBB,J60,59", 2024).DaylightDate), "2024-03-01 02:00:00.000");
    EXPECT_EQ(Summary(Parsed("AAA3BBB,J60,59", 2024).StandardDate), "2024-02-29 02:00:00.000");
    const TIME_ZONE_INFORMATION ireland = Parsed("IST-1GMT0,M10.5.0,M3.5.0/1");
    EXPECT_STREQ(std::string(ireland.StandardName, ireland.StandardName + 4).c_str(), "GMT");
    EXPECT_STREQ(std::string(ireland.DaylightName, ireland.DaylightName + 4).c_str(), "IST");
}

TEST(PosixZone, OtherTextsAreRefused) {
    for (const char* text :
         {"", "CET", "C1", "CET-", "CET-25", "CET-1:60", "<CET-1", "CET-1x", "CET-1CEST,",
          "CET-1CEST,M3.5.0", "CET-1CEST,M13.5.0,M10.5.0", "CET-1CEST,M3.0.0,M10.5.0",
          "CET-1CEST,M3.6.0,M10.5.0", "CET-1CEST,M3.5.7,M10.5.0", "CET-1CEST,J0,J5",
          "CET-1CEST,366,5", "CET-1CEST,M3.5.0/168,M10.5.0", "CET-1CEST,M3.5.0,M10.5.0/3 ",
          "CET-99999999999999999999"}) {
        TIME_ZONE_INFORMATION zone{};
        zone.Bias = 7;
        EXPECT_FALSE(ParsePosixZone(text, 2025, zone)) << text;
        EXPECT_EQ(zone.Bias, 7);
    }
}

TEST(ZoneRule, ChangesAtTheMillisecond) {
    TIME_ZONE_INFORMATION once = Parsed(kEurope);
    once.DaylightDate = Moment(2025, 4, 2, 1);
    once.StandardDate = Moment(2025, 9, 3, 4);
    const struct {
        TIME_ZONE_INFORMATION zone;
        SYSTEMTIME change;  // in UTC
        DWORD before;
        DWORD after;
    } cases[] = {
        {Parsed(kEurope), Moment(2025, 3, 30, 1), 1, 2},
        {Parsed(kEurope), Moment(2025, 10, 26, 1), 2, 1},
        {Parsed(kEurope), Moment(1601, 3, 25, 1), 1, 2},
        {Parsed(kAustralia), Moment(2025, 4, 5, 16), 2, 1},
        {Parsed(kAustralia), Moment(2025, 10, 4, 16), 1, 2},
        {Parsed(kNewfoundland), Moment(2028, 3, 12, 5, 30), 1, 2},
        {Parsed(kNewfoundland), Moment(2028, 11, 5, 4, 30), 2, 1},
        {Parsed("AAA-12BBB,M1.1.1/0,M7.1.1/0"), Moment(2023, 1, 1, 12), 1, 2},  // 2 January there
        {once, Moment(2025, 4, 2), 1, 2},
        {once, Moment(2025, 9, 3, 2), 2, 1},
    };
    for (const auto& test : cases) {
        const int64_t at = Ticks(test.change);
        EXPECT_EQ(ZoneStateAt(test.zone, at - kTicksPerMillisecond).id, test.before)
            << TextOf(test.change);
        EXPECT_EQ(ZoneStateAt(test.zone, at).id, test.after) << TextOf(test.change);
    }
    EXPECT_EQ(ZoneStateAt(once, Ticks(Moment(1900, 7, 1))).id, TIME_ZONE_ID_STANDARD);
    EXPECT_EQ(ZoneStateAt(once, Ticks(Moment(2100, 7, 1))).id, TIME_ZONE_ID_STANDARD);
    EXPECT_EQ(ZoneStateAt(Parsed(kAustralia), 0).bias, -660);
    EXPECT_EQ(ZoneStateAt(Parsed("UTC0"), 0).id, TIME_ZONE_ID_UNKNOWN);
}

// For each zone, every change in the host's data of 2025 to 2037, and both sides of it.
TEST(HostZoneData, AgreesWithTheHostsOwnReading) {
    if (!std::filesystem::exists("/usr/share/zoneinfo/Europe/Madrid"))
        GTEST_SKIP() << "the host has no zone data";
    const zelto::test::TempDevice device;
    const Variable tz("TZ", nullptr);
    for (const char* name :
         {"Europe/Madrid", ":America/New_York", "Australia/Lord_Howe", "America/Santiago",
          "Europe/Dublin", "America/St_Johns", "Asia/Jerusalem", "America/Nuuk", "Pacific/Auckland",
          "Asia/Kolkata"}) {
        tz.Set(name);
        tzset();
        const auto offset = [](std::time_t when) {
            std::tm local{};
            localtime_r(&when, &local);
            return local.tm_gmtoff;
        };
        const auto check = [&](std::time_t when) {
            zelto::test::SetHostTime(when);
            SYSTEMTIME local{};
            GetLocalTime(&local);
            const int64_t expected = zelto::test::g_host_time + offset(when) * kTicksPerSecond;
            EXPECT_EQ(TextOf(local), TextOf(SystemTimeFromTicks(expected))) << name;
        };
        constexpr std::time_t kDay = 86'400;
        for (std::time_t day = 1'735'689'600; day < 2'145'916'800; day += kDay) {
            std::time_t low = day;
            std::time_t high = day + kDay;
            if (offset(low) == offset(high))
                continue;
            while (high - low > 1)
                (offset((low + high) / 2) == offset(low) ? low : high) = (low + high) / 2;
            check(low);
            check(high);
            check(high + 90 * kDay);
        }
        check(1'750'000'000);
    }
    tz.Set(nullptr);
    tzset();
}

// A compiled zone file of version 2 with one time type and some transitions.
std::string ZoneFile(const std::string& rule) {
    const auto block = [](int time_size) {
        std::string header = "TZif2" + std::string(15, '\0');
        for (const char count : {'\1', '\1', '\1', '\3', '\1', '\4'})
            header += std::string(3, '\0') + count;
        const int size = 3 * (time_size + 1) + 6 + 4 + (time_size + 4) + 2;
        return header + std::string(static_cast<size_t>(size), '\1');
    };
    return block(4) + block(8) + "\n" + rule + "\n";
}

TEST(HostZoneData, TheRuleEndsAWholeFile) {
    const std::string whole = ZoneFile(kEurope);
    EXPECT_EQ(ZoneFileRule(whole), kEurope);
    for (size_t size = 0; size < whole.size(); ++size)
        EXPECT_EQ(ZoneFileRule(std::string_view(whole).substr(0, size)), "");
    std::string damaged = whole;
    damaged[4] = '\0';  // version 1
    EXPECT_EQ(ZoneFileRule(damaged), "");
    for (const size_t at : {0u, 20u, 35u, 121u}) {
        damaged = whole;
        damaged[at] = '\xFF';
        EXPECT_EQ(ZoneFileRule(damaged), "") << at;
    }
}

TEST(HostZoneData, WhatTheVariableMayName) {
    const zelto::test::TempDevice folder;
    const Variable data("TZDIR", folder.Path().c_str());
    std::ofstream(folder.Path() + "/Own") << ZoneFile("OWN-3");
    const std::string full = folder.Path() + "/Own";
    const struct {
        std::string value;
        LONG bias;
    } cases[] = {{"Own", -180}, {":Own", -180},   {full, -180},    {":" + full, -180},
                 {"XYZ4", 240}, {":XYZ4", 240},   {"", 0},         {"None/Such", 0},
                 {"../Own", 0}, {"device/..", 0}, {"/dev/zero", 0}};
    for (const auto& test : cases) {
        const Variable tz("TZ", test.value.c_str());
        EXPECT_EQ(HostZone(2025).Bias, test.bias) << test.value;
    }
}

bool SameSettings(const ClockSettings& a, const ClockSettings& b) {
    return a.offset == b.offset && a.zone.has_value() == b.zone.has_value() &&
           (!a.zone || std::memcmp(&*a.zone, &*b.zone, sizeof(*a.zone)) == 0);
}

TIME_ZONE_INFORMATION NamedZone(std::u16string_view name) {
    TIME_ZONE_INFORMATION zone = Parsed(kNewfoundland);
    std::fill(zone.StandardName, zone.StandardName + 32, u'\0');
    std::copy(name.begin(), name.end(), zone.StandardName);
    return zone;
}

TEST(ClockSettingsText, RoundTrips) {
    constexpr int64_t kFarthest = int64_t{922'337'203'684} * kTicksPerSecond + 9'999'999;
    const ClockSettings cases[] = {
        {},
        {-1, {}},
        {kFarthest, Parsed("UTC0")},
        {-kFarthest, Parsed(kAustralia)},
        {36'000'000'000, Parsed("IST-2IDT,M3.4.4/26,M10.5.0")},
        {0, NamedZone(u"\"Quoted\" \\ \u00E9\U0001F600\x01\x7F\xD800\n")},
        {0, NamedZone(std::u16string(32, u'\u20AC'))},
    };
    for (const ClockSettings& settings : cases) {
        const std::string text = FormatClockSettings(settings);
        ClockSettings back{5, Parsed("XXX9")};
        ASSERT_TRUE(ParseClockSettings(text, back)) << text;
        EXPECT_TRUE(SameSettings(back, settings)) << text << FormatClockSettings(back);
        for (size_t size = 0; size + 1 < text.size(); ++size) {
            ClockSettings untouched{5, {}};
            ASSERT_FALSE(ParseClockSettings(text.substr(0, size), untouched)) << size;
            ASSERT_EQ(untouched.offset, 5);
        }
    }
}

TEST(ClockSettingsText, TheManualsExample) {
    ClockSettings settings;
    EXPECT_TRUE(
        ParseClockSettings("ZELTO-CLOCK 1\n"
                           "offset +3600.0000000\n"
                           "bias -60\n"
                           "# Two lines.\n\n"
                           "standard 0 \"CET\" every last Sunday of October at 03:00:00.000\n"
                           "daylight -60 \"CEST\" every last Sunday of March at 02:00:00.000\n"
                           "END\n",
                           settings));
    EXPECT_TRUE(SameSettings(settings, {36'000'000'000, Parsed(kEurope)}));
}

TEST(ClockSettingsText, RefusesDamage) {
    const std::string zone = "bias 5\nstandard 0 \"A\" never\ndaylight 0 \"B\" never\n";
    ClockSettings settings;
    ASSERT_TRUE(ParseClockSettings("ZELTO-CLOCK 1\n" + zone + "END", settings));
    const std::string bodies[] = {"offset 1.000000\n",
                                  "offset 1.00000000\n",
                                  "offset 922337203685.0000000\n",
                                  "offset 1.0000000 \n",
                                  "offset 1.0000000\noffset 1.0000000\n",
                                  "bias 5\n",
                                  "size 5\n",
                                  zone + "bias 5\n",
                                  "bias 1441\n" + zone.substr(7),
                                  "bias 9999999999\n" + zone.substr(7),
                                  "bias 5\nstandard 0 \"A\" never\ndaylight 0 \"B\" every first "
                                  "Sunday of May at 02:00:00.000\n"};
    for (const std::string& body : bodies)
        EXPECT_FALSE(ParseClockSettings("ZELTO-CLOCK 1\n" + body + "END\n", settings)) << body;
    const char* const halves[] = {"\"A never",
                                  "\"A\\x\" never",
                                  "\"A\\u12\" never",
                                  "\"\\u0000\" never",
                                  "\"\xC3\" never",
                                  "\"123456789012345678901234567890123\" never",
                                  "\"A\" sometimes",
                                  "\"A\" once 2025-02-29 at 00:00:00.000",
                                  "\"A\" once 2025-01-01 at 24:00:00.000",
                                  "\"A\" every sixth Sunday of May at 02:00:00.000",
                                  "\"A\" every last Sunday of May at 02:60:00.000"};
    for (const std::string half : halves) {
        EXPECT_FALSE(ParseClockSettings(
            "ZELTO-CLOCK 1\nbias 5\nstandard 0 " + half + "\ndaylight 0 " + half + "\nEND\n",
            settings))
            << half;
    }
    for (const char* text : {"", "END\n", "ZELTO-CLOCK 2\nEND\n", "ZELTO-CLOCK 1\nEND\nbias 5\n"})
        EXPECT_FALSE(ParseClockSettings(text, settings)) << text;
    EXPECT_EQ(settings.zone->Bias, 5);
}

TEST(TimeZone, IsKeptAsItWasSetAndCheckedFirst) {
    const zelto::test::TempDevice device;
    zelto::test::SetHostTime(1'750'000'000);
    TIME_ZONE_INFORMATION zone = Parsed(kEurope);
    SetLastError(77);
    EXPECT_TRUE(SetTimeZoneInformation(&zone));
    TIME_ZONE_INFORMATION back{};
    EXPECT_EQ(GetTimeZoneInformation(&back), TIME_ZONE_ID_DAYLIGHT);
    EXPECT_EQ(GetLastError(), 77u);
    EXPECT_EQ(std::memcmp(&back, &zone, sizeof(zone)), 0);
    const auto refused = [&](auto spoil) {
        TIME_ZONE_INFORMATION bad = zone;
        spoil(bad);
        SetLastError(77);
        EXPECT_FALSE(SetTimeZoneInformation(&bad));
        EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
    };
    refused([](auto& bad) { bad.Bias = 1441; });
    refused([](auto& bad) { bad.DaylightBias = -2'147'483'647; });
    refused([](auto& bad) { bad.StandardDate.wMonth = 0; });
    refused([](auto& bad) { bad.DaylightDate.wMonth = 13; });
    refused([](auto& bad) { bad.DaylightDate.wDay = 6; });
    refused([](auto& bad) { bad.DaylightDate.wDay = 0; });
    refused([](auto& bad) { bad.DaylightDate.wDayOfWeek = 7; });
    refused([](auto& bad) { bad.DaylightDate.wHour = 24; });
    refused([](auto& bad) { bad.StandardDate = Moment(2025, 2, 29); });
    EXPECT_FALSE(SetTimeZoneInformation(nullptr));
    EXPECT_EQ(GetTimeZoneInformation(nullptr), TIME_ZONE_ID_UNKNOWN);
    EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
    GetTimeZoneInformation(&back);
    EXPECT_EQ(std::memcmp(&back, &zone, sizeof(zone)), 0);
}

}  // namespace
