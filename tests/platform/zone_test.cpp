#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>

#include "platform/coredll/coredll.h"
#include "platform/coredll/linux/time/clock_settings.h"
#include "platform/coredll/linux/time/host_zone.h"
#include "platform/coredll/linux/time/posix_zone.h"
#include "platform/coredll/linux/time/zone_rule.h"
#include "tests/platform/fake_host_clock.h"
#include "tests/support/temp_device.h"

namespace {

using namespace zelto::coredll;
using zelto::test::Moment;
using zelto::test::TextOf;

constexpr const char* kEurope = "CET-1CEST,M3.5.0,M10.5.0/3";
constexpr const char* kAustralia = "AEST-10AEDT,M10.1.0,M4.1.0/3";
constexpr const char* kNewfoundland = "NST3:30NDT,M3.2.0,M11.1.0";

TIME_ZONE_INFORMATION Parsed(const char* text) {
    TIME_ZONE_INFORMATION zone{};
    EXPECT_TRUE(ParsePosixZone(text, 2024, zone)) << text;
    return zone;
}

// "month/week/weekday time" each year, else the date.
std::string Summary(const SYSTEMTIME& date) {
    if (date.wMonth == 0)
        return "none";
    if (date.wYear != 0)
        return TextOf(date);
    return std::to_string(date.wMonth) + '/' + std::to_string(date.wDay) + '/' +
           std::to_string(date.wDayOfWeek) + TextOf(date).substr(10);
}

TEST(PosixZone, BecomesARecord) {
    const struct {
        const char* text;
        LONG bias;
        LONG daylight_bias;
        const char* to_daylight;
        const char* to_standard;
    } cases[] = {
        {"<+0545>-5:45:40", -346, 0, "none", "none"},
        {kEurope, -60, -60, "3/5/0 02:00:00.000", "10/5/0 03:00:00.000"},
        {kNewfoundland, 210, -60, "3/2/0 02:00:00.000", "11/1/0 02:00:00.000"},
        {"EST5EDT", 300, -60, "3/2/0 02:00:00.000", "11/1/0 02:00:00.000"},
        {"<+1030>-10:30<+11>-11,M10.1.0,M4.1.0", -630, -30, "10/1/0 02:00:00.000",
         "4/1/0 02:00:00.000"},
        {"<-04>4<-03>,M9.1.6/24,M4.1.6/24", 240, -60, "9/1/6 23:59:59.999", "4/1/6 23:59:59.999"},
        // Its winter time is the one called daylight time.
        {"IST-1GMT0,M10.5.0,M3.5.0/1", 0, -60, "3/5/0 01:00:00.000", "10/5/0 02:00:00.000"},
        {"IST-2IDT,M3.4.4/26,M10.5.0", -120, -60, "2024-03-29 02:00:00.000",
         "2024-10-27 02:00:00.000"},
        {"AAA2BBB,M3.5.0/-1,J60/0:0:30", 120, -60, "2024-03-30 23:00:00.000",
         "2024-03-01 00:00:30.000"},
        {"AAA3BBB,59,J59", 180, -60, "2024-02-29 02:00:00.000", "2024-02-28 02:00:00.000"},
    };
    for (const auto& test : cases) {
        const TIME_ZONE_INFORMATION zone = Parsed(test.text);
        EXPECT_EQ(zone.Bias, test.bias) << test.text;
        EXPECT_EQ(zone.DaylightBias, test.daylight_bias) << test.text;
        EXPECT_EQ(Summary(zone.DaylightDate), test.to_daylight) << test.text;
        EXPECT_EQ(Summary(zone.StandardDate), test.to_standard) << test.text;
        EXPECT_TRUE(IsValidZone(zone)) << test.text;
    }
    EXPECT_EQ(std::u16string(Parsed("IST-1GMT0,M10.5.0,M3.5.0/1").DaylightName), u"IST");
}

TEST(PosixZone, OtherTextsAreRefused) {
    for (const char* text : {"", "CET", "C1", "CET-", "CET-25", "CET-1:60", "<CET-1", "CET-1x",
                             "CET-1CEST,M3.5.0", "CET-1CEST,M13.5.0,J5", "CET-1CEST,M3.0.0,J5",
                             "CET-1CEST,M3.6.0,J5", "CET-1CEST,M3.5.7,J5", "CET-1CEST,J0,J5",
                             "CET-1CEST,366,5", "CET-1CEST,J5/168,J5", "CET-1CEST,J5,J5 "}) {
        TIME_ZONE_INFORMATION zone{7, {}, {}, 0, {}, {}, 0};
        EXPECT_FALSE(ParsePosixZone(text, 2024, zone)) << text;
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
        DWORD after;
    } cases[] = {{Parsed(kEurope), Moment(2025, 3, 30, 1), 2},
                 {Parsed(kEurope), Moment(2025, 10, 26, 1), 1},
                 {Parsed(kEurope), Moment(1601, 3, 25, 1), 2},
                 {Parsed(kAustralia), Moment(2025, 4, 5, 16), 1},
                 {Parsed(kAustralia), Moment(2025, 10, 4, 16), 2},
                 {Parsed(kNewfoundland), Moment(2028, 3, 12, 5, 30), 2},
                 {Parsed(kNewfoundland), Moment(2028, 11, 5, 4, 30), 1},
                 {Parsed("AAA-12BBB,M1.1.1/0,M7.1.1/0"), Moment(2023, 1, 1, 12), 2},
                 {once, Moment(2025, 4, 2), 2},
                 {once, Moment(2025, 9, 3, 2), 1}};
    for (const auto& test : cases) {
        int64_t at = 0;
        ASSERT_TRUE(TicksFromSystemTime(test.change, at));
        EXPECT_EQ(ZoneStateAt(test.zone, at - kTicksPerMillisecond).id, 3 - test.after);
        EXPECT_EQ(ZoneStateAt(test.zone, at).id, test.after) << TextOf(test.change);
    }
    EXPECT_EQ(ZoneStateAt(once, 0).id, TIME_ZONE_ID_STANDARD);
    EXPECT_EQ(ZoneStateAt(once, kMaxTicks).id, TIME_ZONE_ID_STANDARD);
    EXPECT_EQ(ZoneStateAt(Parsed(kAustralia), 0).bias, -660);
    EXPECT_EQ(ZoneStateAt(Parsed("UTC0"), 0).id, TIME_ZONE_ID_UNKNOWN);
}

// Every change in the host's data of 2025 to 2037, both sides of it.
TEST(HostZone, AgreesWithTheHostsOwnReading) {
    if (!std::filesystem::exists("/usr/share/zoneinfo/Europe/Madrid"))
        GTEST_SKIP() << "the host has no zone data";
    const zelto::test::TempDevice device;
    const auto offset = [](std::time_t when) {
        std::tm local{};
        localtime_r(&when, &local);
        return local.tm_gmtoff;
    };
    for (const char* name :
         {"Europe/Madrid", ":America/New_York", "Australia/Lord_Howe", "America/Santiago",
          "Europe/Dublin", "America/St_Johns", "Asia/Jerusalem", "America/Nuuk", "Pacific/Auckland",
          "Asia/Kolkata"}) {
        setenv("TZ", name, 1);
        tzset();
        constexpr std::time_t kDay = 86'400;
        for (std::time_t day = 1'735'689'600; day < 2'145'916'800; day += kDay) {
            std::time_t low = day;
            std::time_t high = day + kDay;
            if (offset(low) == offset(high) && day % (50 * kDay) != 0)
                continue;
            while (high - low > 1)
                (offset((low + high) / 2) == offset(low) ? low : high) = (low + high) / 2;
            for (const std::time_t when : {low, high}) {
                zelto::test::SetHostTime(when);
                SYSTEMTIME local{};
                GetLocalTime(&local);
                zelto::test::SetHostTime(when + offset(when));
                EXPECT_EQ(TextOf(local), TextOf(SystemTimeFromTicks(zelto::test::g_host_time)))
                    << name;
            }
        }
    }
    unsetenv("TZ");
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

TEST(HostZone, FilesAndWhatTheVariableMayName) {
    const std::string whole = ZoneFile(kEurope);
    EXPECT_EQ(ZoneFileRule(whole), kEurope);
    for (size_t size = 0; size < whole.size(); ++size)
        EXPECT_EQ(ZoneFileRule(std::string_view(whole).substr(0, size)), "");
    for (const size_t at : {0u, 20u, 35u, 121u}) {
        std::string damaged = whole;
        damaged[at] = '\xFF';
        EXPECT_EQ(ZoneFileRule(damaged), "") << at;
    }
    const zelto::test::TempDevice folder;
    setenv("TZDIR", folder.Path().c_str(), 1);
    std::ofstream(folder.Path() + "/Own") << ZoneFile("OWN-3");
    for (const auto& [value, bias] : {std::pair<std::string, LONG>{"Own", -180},
                                      {":" + folder.Path() + "/Own", -180},
                                      {":XYZ4", 240},
                                      {"", 0},
                                      {"None/Such", 0},
                                      {"device/../Own", 0},
                                      {"/dev/zero", 0}}) {
        setenv("TZ", value.c_str(), 1);
        EXPECT_EQ(HostZone(2024).Bias, bias) << value;
    }
    unsetenv("TZ");
    unsetenv("TZDIR");
}

bool SameZone(const TIME_ZONE_INFORMATION& a, const TIME_ZONE_INFORMATION& b) {
    return std::memcmp(&a, &b, sizeof(a)) == 0;
}

TEST(ClockSettings, RoundTripAndAreRefusedWhenCut) {
    const int64_t farthest = int64_t{922'337'203'684} * kTicksPerSecond + 9'999'999;
    TIME_ZONE_INFORMATION quoted = Parsed(kNewfoundland);
    std::u16string(u"\"A\" \\ \u00E9\U0001F600\x01\x7F\xD800").copy(quoted.StandardName, 32);
    std::u16string(32, u'\u20AC').copy(quoted.DaylightName, 32);
    const ClockSettings cases[] = {{-1, {}},
                                   {farthest, Parsed("UTC0")},
                                   {-farthest, Parsed("IST-2IDT,M3.4.4/26,M10.5.0")},
                                   {0, quoted}};
    for (const ClockSettings& settings : cases) {
        const std::string text = FormatClockSettings(settings);
        ClockSettings back{5, Parsed("XXX9")};
        for (size_t size = 0; size + 1 < text.size(); ++size)
            ASSERT_FALSE(ParseClockSettings(text.substr(0, size), back)) << text.substr(0, size);
        ASSERT_TRUE(back.offset == 5 && back.zone->Bias == 540);
        ASSERT_TRUE(ParseClockSettings(text, back)) << text;
        EXPECT_EQ(back.offset, settings.offset);
        EXPECT_TRUE(settings.zone ? SameZone(*back.zone, *settings.zone) : !back.zone) << text;
    }
}

TEST(ClockSettings, FollowTheManual) {
    const std::string standard =
        "standard 0 \"CET\" every last Sunday of October at 03:00:00.000\n";
    const std::string daylight =
        "daylight -60 \"CEST\" every last Sunday of March at 02:00:00.000\n";
    const auto parse = [&](const std::string& body) {
        ClockSettings settings{5, {}};
        const bool good = ParseClockSettings("ZELTO-CLOCK 1\n" + body + "END\n", settings);
        EXPECT_EQ(good, settings.offset != 5) << body;
        EXPECT_TRUE(!settings.zone || SameZone(*settings.zone, Parsed(kEurope)));
        return good;
    };
    EXPECT_TRUE(parse(daylight + "# Any order.\n\noffset +3600.0000000\nbias -60\n" + standard));
    for (const char* body : {"offset 1.000000\n", "offset 1.00000000\n",
                             "offset 922337203685.0000000\n", "offset 1.0000000 \n",
                             "offset 1.0000000\noffset 1.0000000\n", "size 5\n", "END\n# \n5\n"})
        EXPECT_FALSE(parse(body)) << body;
    EXPECT_FALSE(parse(standard + daylight));
    for (const char* bias : {"1441", "9999999999", "", "x", "-60\nbias -60"})
        EXPECT_FALSE(parse(standard + daylight + "bias " + bias + "\n")) << bias;
    const auto with_standard = [&](const std::string& half) {
        return parse("bias -60\n" + daylight + "standard 0 " + half + "\n");
    };
    const std::string october = " every last Sunday of October at 03:00:00.000";
    EXPECT_TRUE(with_standard("\"\\u0043ET\"" + october));
    for (const char* name : {"\"CET", "\"CET\\x\"", "\"\\u04zT\"", "\"CET\\u0000\"", "\"CET\xC3\"",
                             "\"CET\t\"", "\"123456789012345678901234567890123\"", "CET"})
        EXPECT_FALSE(with_standard(name + october)) << name;
    for (const char* when :
         {"never", "sometimes", "once 2025-02-29 at 00:00:00.000",
          "once 2025-01-01 at 24:00:00.000", "every fifth Sunday of May at 02:00:00.000",
          "every last Sunday of May at 02:60:00.000"})
        EXPECT_FALSE(with_standard(std::string("\"CET\" ") + when)) << when;
    ClockSettings settings;
    EXPECT_FALSE(ParseClockSettings("ZELTO-CLOCK 2\nEND\n", settings));
}

TEST(TimeZone, IsKeptAsItWasSetAndCheckedFirst) {
    const zelto::test::TempDevice device;
    zelto::test::SetHostTime(1'750'000'000);
    const TIME_ZONE_INFORMATION zone = Parsed(kEurope);
    SetLastError(77);
    EXPECT_TRUE(SetTimeZoneInformation(&zone));
    const auto refused = [&](auto spoil) {
        TIME_ZONE_INFORMATION bad = zone;
        spoil(bad);
        SetLastError(77);
        EXPECT_FALSE(SetTimeZoneInformation(&bad));
        EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
        SetLastError(77);
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
    TIME_ZONE_INFORMATION back{};
    EXPECT_EQ(GetTimeZoneInformation(&back), TIME_ZONE_ID_DAYLIGHT);
    EXPECT_EQ(GetLastError(), 77u);
    EXPECT_TRUE(SameZone(back, zone));
}

}  // namespace
