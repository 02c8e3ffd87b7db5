#include <chrono>
#include <cmath>
#include <cstdlib>
#include <ctime>
#include <gtest/gtest.h>
#include <limits>

#include "common/time/device_clock.h"
#include "platform/coredll/coredll.h"
#include "tests/support/temp_device.h"
#include "tests/time/date_printing.h"

namespace zelto {
namespace {

using std::chrono::sys_days;
using std::chrono::year;

DDateTime OnDay(sys_days day, int32_t second_of_day, float fraction) {
    const std::chrono::year_month_day date(day);
    return {static_cast<int32_t>(static_cast<unsigned>(date.day())),
            static_cast<int32_t>(static_cast<unsigned>(date.month())),
            static_cast<int>(date.year()),
            second_of_day / 3600,
            second_of_day / 60 % 60,
            static_cast<float>(second_of_day % 60) + fraction};
}

TEST(SecondsCount, AgreesWithTheStandardCalendar) {
    int32_t second = 0;
    for (sys_days day = year(1601) / 1 / 1; day < year(2401) / 1 / 1; day += std::chrono::days(1)) {
        second = (second + 7919) % 86400;
        const double midnight = static_cast<double>(day.time_since_epoch().count()) * 86400.0;
        ASSERT_EQ(ToSeconds(OnDay(day, 0, 0)), midnight);
        ASSERT_EQ(FromSeconds(midnight), OnDay(day, 0, 0));
        const DDateTime last = OnDay(day, 86399, 0);
        ASSERT_EQ(ToSeconds(last), midnight + 86399);
        ASSERT_EQ(FromSeconds(midnight + 86399), last);
        const DDateTime within = OnDay(day, second, 0.75F);
        ASSERT_EQ(ToSeconds(within), midnight + second + 0.75);
        ASSERT_EQ(FromSeconds(midnight + second + 0.75), within);
    }
}

TEST(SecondsCount, KeepsFractionsAndTheFarFuture) {
    EXPECT_EQ(ToSeconds({1, 1, 1970}), 0.0);
    EXPECT_EQ(ToSeconds({25, 12, 2009, 10, 20, 30.5F}), 1261736430.5);
    const DDateTime last(31, 12, 30827, 23, 59, 59);
    EXPECT_EQ(FromSeconds(ToSeconds(last)), last);
    for (int millisecond = 0; millisecond < 1000; ++millisecond) {
        const double count = 1261736430.0 + (millisecond + 0.5) / 1000;
        const DDateTime value = FromSeconds(count);
        EXPECT_EQ(value.seconds, static_cast<float>(30 + millisecond / 1000.0));
        EXPECT_NEAR(ToSeconds(value), count - 0.0005, 2e-6);
    }
}

TEST(SecondsCount, WhatIsNoMomentHasNone) {
    const DDateTime wrong[] = {{},
                               {31, 2, 2009},
                               {29, 2, 2100},
                               {1, 1, 1600},
                               {1, 13, 2009},
                               {1, 1, 2009, 0, 0, 60},
                               {1, 1, 65536 + 2009},
                               {65537, 1, 2009},
                               {1, 1, 2009, -1},
                               {1, 1, 2009, 0, 0, std::numeric_limits<float>::quiet_NaN()}};
    for (const DDateTime& value : wrong) {
        EXPECT_TRUE(std::isnan(ToSeconds(value))) << testing::PrintToString(value);
        EXPECT_TRUE((value + DDuration{1}).IsNull()) << testing::PrintToString(value);
        EXPECT_FALSE(SetUniversalClock(value)) << testing::PrintToString(value);
    }
    for (const double count : {-11644473601.0, 9.3e11, 1e300, std::nan("")})
        EXPECT_TRUE(FromSeconds(count).IsNull()) << count;
}

TEST(SecondsCount, Arithmetic) {
    EXPECT_EQ(DDateTime(28, 2, 2100, 12) + Days(1), DDateTime(1, 3, 2100, 12));
    EXPECT_EQ(DDateTime(1, 3, 2008) - DDuration{0.5}, DDateTime(29, 2, 2008, 23, 59, 59.5F));
    DDuration span = Days(2);
    span -= DDuration{3600};
    span += DDuration{0.25};
    EXPECT_EQ(Difference(DDateTime(3, 1, 2009), DDateTime(1, 1, 2009, 1) - DDuration{0.25}).seconds,
              span.seconds);
    EXPECT_EQ(Days(24855).seconds, 2147472000.0);
    EXPECT_EQ(Days(24856).seconds, -2147408896.0);

    const DDateTime now(1, 1, 2009);
    EXPECT_EQ(Difference({}, {}).seconds, 0.0);
    EXPECT_EQ(Difference({}, now).seconds, -268435455.0);
    EXPECT_EQ(Difference(now, {}).seconds, 268435455.0);
}

// A fresh device in the host's zone `name`, set to moments of universal time.
class ZoneTest : public testing::Test {
  protected:
    void UseZone(const char* name) {
        setenv("TZ", name, 1);
        tzset();
    }

    // Universal time less local time by the C library.
    static double HostOffset(double seconds) {
        const auto moment = static_cast<time_t>(seconds);
        tm local = {};
        localtime_r(&moment, &local);
        return -static_cast<double>(local.tm_gmtoff);
    }

    // The library's, once the device's clock stands there.
    static double OffsetAt(double seconds) {
        EXPECT_TRUE(SetUniversalClock(UniversalTime(seconds)));
        return ZoneOffset();
    }

  private:
    test::TempDevice device_;
};

class EuropeanZone : public ZoneTest, public testing::WithParamInterface<const char*> {};

// Both transitions of every year, from both sides; and once a month.
TEST_P(EuropeanZone, FollowsTheHostsRule) {
    UseZone(GetParam());
    for (int32_t y = 2000; y <= 2037; ++y) {
        for (int32_t month = 1; month <= 12; ++month) {
            const double middle = ToSeconds({15, month, y, 12});
            ASSERT_EQ(OffsetAt(middle), HostOffset(middle)) << y << '-' << month;
        }
        DDateTime begin;
        DDateTime end;
        ASSERT_TRUE(DaylightPeriod(y, begin, end));
        const double standard = HostOffset(ToSeconds({15, 1, y}));
        const double first = ToSeconds(begin) + standard;
        const double last = ToSeconds(end) + standard - 3600;
        for (const double moment : {first - 1, first, last - 1, last + 3600})
            ASSERT_EQ(OffsetAt(moment), HostOffset(moment)) << y << " at " << moment;
        ASSERT_NE(HostOffset(first - 1), HostOffset(first)) << y;
        ASSERT_NE(HostOffset(last - 1), HostOffset(last)) << y;
        // The clock repeats this hour; the rule takes it for the first one.
        ASSERT_EQ(OffsetAt(last + 3599), standard - 3600) << y;
    }
}

INSTANTIATE_TEST_SUITE_P(Zones, EuropeanZone,
                         testing::Values("Europe/Madrid", "GMT0BST,M3.5.0/1,M10.5.0",
                                         "CET-1CEST,M3.5.0,M10.5.0/3",
                                         "EET-2EEST,M3.5.0/3,M10.5.0/4"),
                         [](const auto& zone) { return "Zone" + std::to_string(zone.index); });

TEST_F(ZoneTest, WithoutDaylightTheBiasIsAll) {
    for (const auto& [name, bias] : {std::pair{"MST7", 420.0}, std::pair{"IST-5:30", -330.0}}) {
        UseZone(name);
        EXPECT_EQ(OffsetAt(ToSeconds({1, 7, 2009})), bias * 60);
        double offset = 0;
        bool daylight = true;
        EXPECT_TRUE(GetZone(offset, daylight));
        EXPECT_EQ(offset, bias * 60);
        EXPECT_FALSE(daylight);
        DDateTime begin(1, 1, 2009);
        DDateTime end(1, 1, 2009);
        EXPECT_FALSE(DaylightPeriod(2009, begin, end));
        EXPECT_TRUE(begin.IsNull() && end.IsNull());
    }
}

TIME_ZONE_INFORMATION ZoneOf(LONG bias, LONG daylight, const SYSTEMTIME& begin,
                             const SYSTEMTIME& end) {
    TIME_ZONE_INFORMATION zone = {};
    zone.Bias = bias;
    zone.DaylightBias = daylight;
    zone.DaylightDate = begin;
    zone.StandardDate = end;
    return zone;
}

// The last Sunday whatever the rule says, the December rule, February of a year that is no leap
// year, and dates given once and for all.
TEST_F(ZoneTest, TransitionsByTheTable) {
    const struct {
        SYSTEMTIME rule;
        int32_t year;
        DDateTime moment;
    } cases[] = {
        {{0, 3, 3, 1, 2, 30, 0, 0}, 2009, {29, 3, 2009, 2, 30}},
        {{0, 12, 0, 5, 0, 0, 0, 0}, 2009, {27, 12, 2009}},
        {{0, 12, 0, 5, 23, 0, 0, 0}, 2000, {31, 12, 2000, 23}},
        {{0, 2, 0, 5, 1, 0, 0, 0}, 2100, {28, 2, 2100, 1}},
        {{2010, 5, 0, 4, 2, 0, 0, 0}, 2009, {4, 5, 2010, 2}},
    };
    for (const auto& c : cases) {
        const TIME_ZONE_INFORMATION zone = ZoneOf(60, -60, c.rule, c.rule);
        ASSERT_TRUE(SetTimeZoneInformation(&zone)) << GetLastError();
        DDateTime begin;
        DDateTime end;
        EXPECT_TRUE(DaylightPeriod(c.year, begin, end));
        EXPECT_EQ(begin, c.moment);
        EXPECT_EQ(end, c.moment);
    }
}

// A period across the year's end is outside the rule: never in force, as the rule has it.
TEST_F(ZoneTest, PeriodsAreStrictAndWithinOneYear) {
    const SYSTEMTIME march = {0, 3, 0, 5, 2, 0, 0, 0};
    const SYSTEMTIME december = {0, 12, 0, 5, 2, 0, 0, 0};
    TIME_ZONE_INFORMATION zone = ZoneOf(-60, -30, march, december);
    ASSERT_TRUE(SetTimeZoneInformation(&zone));
    EXPECT_TRUE(SetLocalClock({20, 12, 2009, 12}));
    EXPECT_EQ(ZoneOffset(), -90 * 60.0);
    EXPECT_TRUE(SetLocalClock({27, 12, 2009, 12}));
    EXPECT_EQ(ZoneOffset(), -60 * 60.0);

    zone = ZoneOf(300, 60, december, march);
    ASSERT_TRUE(SetTimeZoneInformation(&zone));
    EXPECT_TRUE(SetLocalClock({15, 1, 2009, 12}));
    EXPECT_EQ(ZoneOffset(), 300 * 60.0);
}

TEST_F(ZoneTest, SetZoneOffsetKeepsUniversalTime) {
    UseZone("UTC0");
    const double start = ToSeconds({25, 12, 2009, 10, 20, 30});
    const struct {
        double offset;
        double minutes;
    } cases[] = {{5400, 90}, {89, 1}, {-89, -1}, {119.6, 2}, {-119.6, -2}, {59.4, 0}, {-3600, -60}};
    for (const auto& c : cases) {
        ASSERT_TRUE(SetUniversalClock(UniversalTime(start)));
        EXPECT_TRUE(SetZoneOffset(c.offset)) << c.offset;
        double offset = 1;
        bool daylight = true;
        GetZone(offset, daylight);
        EXPECT_EQ(offset, c.minutes * 60);
        EXPECT_EQ(ZoneOffset(), c.minutes * 60);
        EXPECT_NEAR(NowSeconds(), start, 30);
        EXPECT_NEAR(ToSeconds(NowLocal()), start - c.minutes * 60, 30);
        EXPECT_NEAR(ToSeconds(LocalTime(NowUniversal())), start - c.minutes * 60, 30);
    }
    for (const double offset : {1e300, -1e300, std::nan(""), 1e9}) {
        EXPECT_FALSE(SetZoneOffset(offset)) << offset;
        EXPECT_EQ(ZoneOffset(), -3600.0);
    }
}

TEST_F(ZoneTest, ClocksAreSetToTheMillisecondOrNotAtAll) {
    UseZone("CET-1");
    EXPECT_TRUE(SetLocalClock({25, 12, 2009, 10, 20, 30.25F}));
    EXPECT_EQ(ZoneOffset(), -3600.0);
    const double start = ToSeconds({25, 12, 2009, 9, 20, 30.25F});
    EXPECT_GE(NowSeconds(), start);
    EXPECT_LT(NowSeconds(), start + 30);
    EXPECT_FALSE(SetLocalClock({31, 2, 2009}));
    EXPECT_FALSE(SetUniversalClock({25, 12, 2009, 10, 20, -0.5F}));
    EXPECT_GE(NowSeconds(), start);
    EXPECT_LT(NowSeconds(), start + 30);
    EXPECT_EQ(LocalTime(DDateTime(1, 1, 2009), -3600), DDateTime(1, 1, 2009, 1));
    EXPECT_TRUE(LocalTime(UniversalTime()).IsNull());
}

}  // namespace
}  // namespace zelto
