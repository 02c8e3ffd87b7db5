#include <cstdlib>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <gtest/gtest.h>

#include "platform/coredll/coredll.h"
#include "platform/coredll/linux/time/host_zone.h"
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

// The variable TZ while the object lives.
class HostsZone {
  public:
    explicit HostsZone(const char* text) { setenv("TZ", text, 1); }
    ~HostsZone() { unsetenv("TZ"); }
    HostsZone(const HostsZone&) = delete;
    HostsZone& operator=(const HostsZone&) = delete;
};

TIME_ZONE_INFORMATION ZoneOf(const char* text, const SYSTEMTIME& moment = Moment(2024, 6, 1)) {
    const HostsZone hosts(text);
    int64_t ticks = 0;
    EXPECT_TRUE(TicksFromSystemTime(moment, ticks));
    return HostZone(ticks);
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

TEST(HostZone, BecomesARecord) {
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
        // A day of its own each year, told as dates of the year.
        {"AAA3BBB,59,J300", 180, -60, "2024-02-29 02:00:00.000", "2024-10-27 02:00:00.000"},
    };
    for (const auto& test : cases) {
        const TIME_ZONE_INFORMATION zone = ZoneOf(test.text);
        EXPECT_EQ(zone.Bias, test.bias) << test.text;
        EXPECT_EQ(zone.DaylightBias, test.daylight_bias) << test.text;
        EXPECT_EQ(Summary(zone.DaylightDate), test.to_daylight) << test.text;
        EXPECT_EQ(Summary(zone.StandardDate), test.to_standard) << test.text;
        EXPECT_TRUE(IsValidZone(zone)) << test.text;
    }
    EXPECT_EQ(std::u16string(ZoneOf("IST-1GMT0,M10.5.0,M3.5.0/1").DaylightName), u"IST");
}

TEST(ZoneRule, ChangesAtTheMillisecond) {
    TIME_ZONE_INFORMATION once = ZoneOf(kEurope);
    once.DaylightDate = Moment(2025, 4, 2, 1);
    once.StandardDate = Moment(2025, 9, 3, 4);
    TIME_ZONE_INFORMATION new_year = ZoneOf("AAA-12BBB,M2.1.1/0,M7.1.1/0");
    new_year.DaylightDate.wMonth = 1;
    const struct {
        TIME_ZONE_INFORMATION zone;
        SYSTEMTIME change;  // in UTC
        DWORD after;
    } cases[] = {{ZoneOf(kEurope), Moment(2025, 3, 30, 1), 2},
                 {ZoneOf(kEurope), Moment(2025, 10, 26, 1), 1},
                 {ZoneOf(kEurope), Moment(1601, 3, 25, 1), 2},
                 {ZoneOf(kAustralia), Moment(2025, 4, 5, 16), 1},
                 {ZoneOf(kAustralia), Moment(2025, 10, 4, 16), 2},
                 {ZoneOf(kNewfoundland), Moment(2028, 3, 12, 5, 30), 2},
                 {ZoneOf(kNewfoundland), Moment(2028, 11, 5, 4, 30), 1},
                 {new_year, Moment(2023, 1, 1, 12), 2},
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
    EXPECT_EQ(ZoneStateAt(ZoneOf(kAustralia), 0).bias, -660);
    EXPECT_EQ(ZoneStateAt(ZoneOf("UTC0"), 0).id, TIME_ZONE_ID_UNKNOWN);
}

// Every change in the host's data of 2025 to 2037, both sides of it.
TEST(HostZone, AgreesWithTheHostsOwnReading) {
    if (!std::filesystem::exists("/usr/share/zoneinfo/Europe/Madrid"))
        GTEST_SKIP() << "the host has no zone data (package tzdata)";
    const zelto::test::TempDevice device;
    const auto offset = [](std::time_t when) {
        std::tm local{};
        localtime_r(&when, &local);
        return local.tm_gmtoff;
    };
    for (const char* name :
         {"Europe/Madrid", ":America/New_York", "Australia/Lord_Howe", "America/Santiago",
          "Europe/Dublin", "America/St_Johns", "Africa/Casablanca", "Africa/El_Aaiun",
          "Africa/Cairo", "Asia/Jerusalem", "America/Nuuk", "Pacific/Auckland", "Asia/Kolkata"}) {
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

// Years of one lasting change, and of none: the moment decides.
TEST(HostZone, AYearOfOneChangeHasARecordForEachSide) {
    if (!std::filesystem::exists("/usr/share/zoneinfo/Asia/Colombo"))
        GTEST_SKIP() << "the host has no zone data (package tzdata)";
    EXPECT_EQ(ZoneOf("Asia/Colombo", Moment(2006, 4, 14)).Bias, -360);
    EXPECT_EQ(ZoneOf("Asia/Colombo", Moment(2006, 4, 15)).Bias, -330);
    EXPECT_EQ(ZoneOf("Asia/Colombo", Moment(2006, 4, 14)).Bias, -360);
    EXPECT_EQ(ZoneOf("None/Such").Bias, 0);
    EXPECT_EQ(ZoneOf("").Bias, 0);
}

bool SameZone(const TIME_ZONE_INFORMATION& a, const TIME_ZONE_INFORMATION& b) {
    return std::memcmp(&a, &b, sizeof(a)) == 0;
}

TEST(TimeZone, IsKeptAsItWasSetAndCheckedFirst) {
    const zelto::test::TempDevice device;
    zelto::test::SetHostTime(1'750'000'000);
    const TIME_ZONE_INFORMATION zone = ZoneOf(kEurope);
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
