#include "common/time/device_clock.h"

#include <cmath>
#include <cstdlib>
#include <ctime>
#include <gtest/gtest.h>
#include <tuple>
#include <utility>

#include "platform/coredll/coredll.h"
#include "tests/support/temp_device.h"
#include "tests/time/date_support.h"

namespace zelto {
namespace {

using std::chrono::year;

TEST(SecondsCount, AgreesWithTheStandardCalendar) {
    int32_t second = 0;
    for (std::chrono::sys_days day = year(1601) / 1 / 1; day < year(2401) / 1 / 1;
         day += std::chrono::days(1)) {
        second = (second + 7919) % 86400;
        const double midnight = static_cast<double>(day.time_since_epoch().count()) * 86400.0;
        for (const auto& [within, fraction] :
             {std::pair{0, 0.0F}, std::pair{86399, 0.0F}, std::pair{second, 0.75F}}) {
            const DDateTime value = OnDay(day, within, fraction);
            const double count = midnight + within + fraction;
            ASSERT_EQ(ToSeconds(value), count) << testing::PrintToString(value);
            ASSERT_EQ(FromSeconds(count), value);
        }
    }
    const DDateTime last(31, 12, 30827, 23, 59, 59);
    EXPECT_EQ(FromSeconds(ToSeconds(last)), last);
}

TEST(SecondsCount, KeepsMilliseconds) {
    for (int millisecond = 0; millisecond < 1000; ++millisecond) {
        const double count = 1261736430.0 + (millisecond + 0.5) / 1000;
        const DDateTime value = FromSeconds(count);
        EXPECT_EQ(value.seconds, static_cast<float>(30 + millisecond / 1000.0));
        EXPECT_NEAR(ToSeconds(value), count - 0.0005, 2e-6);
    }
}

TEST(SecondsCount, WhatIsNoMomentHasNone) {
    using D = DDateTime;
    for (const D& value : {D(), D(31, 2, 2009), D(29, 2, 2100), D(1, 1, 1600), D(1, 13, 2009),
                           D(1, 1, 2009, 0, 0, 60), D(1, 1, 65536 + 2009), D(65537, 1, 2009),
                           D(1, 1, 2009, -1), D(1, 1, 2009, 0, 0, std::nanf(""))}) {
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
    DDuration span = Days(24856);  // beyond 32 bits
    span -= DDuration{3600};
    span += DDuration{0.25};
    EXPECT_EQ(span.seconds, -2147412495.75);
    const DDateTime now(1, 1, 2009, 0, 0, 0.25F);
    EXPECT_EQ(Difference(now, DDateTime(31, 12, 2008)).seconds, 86400.25);
    EXPECT_EQ(Difference({}, {}).seconds, 0.0);
    EXPECT_EQ(Difference({}, now).seconds, -268435455.0);
    EXPECT_EQ(Difference(now, {}).seconds, 268435455.0);
}

// A fresh device, which takes the host's zone.
class ZoneTest : public testing::Test {
  protected:
    static void UseZone(const char* name) {
        setenv("TZ", name, 1);
        tzset();
    }

    // Both in universal seconds: the offset by the C library, and by the clock once it stands
    // there.
    static double HostOffset(double seconds) {
        const auto moment = static_cast<time_t>(seconds);
        tm local = {};
        localtime_r(&moment, &local);
        return -static_cast<double>(local.tm_gmtoff);
    }
    static double OffsetAt(double seconds) {
        EXPECT_TRUE(SetUniversalClock(UniversalTime(seconds)));
        return ZoneOffset();
    }

  private:
    test::TempDevice device_;
};

// Both halves of the year, and both transitions from both sides.
void CheckYear(int32_t of_year, double (*host)(double), double (*ours)(double)) {
    for (const int32_t month : {1, 7}) {
        const double middle = ToSeconds({15, month, of_year, 12});
        ASSERT_EQ(ours(middle), host(middle)) << of_year << '-' << month;
    }
    DDateTime begin;
    DDateTime end;
    ASSERT_TRUE(DaylightPeriod(of_year, begin, end));
    const double standard = host(ToSeconds({15, 1, of_year}));
    const double first = ToSeconds(begin) + standard;
    const double last = ToSeconds(end) + standard - 3600;
    ASSERT_TRUE(host(first - 1) != host(first) && host(last - 1) != host(last)) << of_year;
    for (const double moment : {first - 1, first, last - 1, last + 3600})
        ASSERT_EQ(ours(moment), host(moment)) << of_year << " at " << moment;
    // The clock repeats this hour; the rule takes it for the first one.
    ASSERT_EQ(ours(last + 3599), standard - 3600) << of_year;
}

TEST_F(ZoneTest, EuropeanZonesFollowTheHost) {
    for (const char* zone :
         {"Europe/Madrid", "GMT0BST,M3.5.0/1,M10.5.0", "EET-2EEST,M3.5.0/3,M10.5.0/4"}) {
        SCOPED_TRACE(zone);
        UseZone(zone);
        for (int32_t of_year = 2000; of_year <= 2037; ++of_year)
            CheckYear(of_year, HostOffset, OffsetAt);
    }
}

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

void SetZone(LONG bias, LONG daylight, const SYSTEMTIME& begin, const SYSTEMTIME& end) {
    TIME_ZONE_INFORMATION zone = {};
    zone.Bias = bias;
    zone.DaylightBias = daylight;
    zone.DaylightDate = begin;
    zone.StandardDate = end;
    ASSERT_TRUE(SetTimeZoneInformation(&zone)) << GetLastError();
}

// The last Sunday whatever the rule names, the year's end, a February that the calendar of the
// system alone gets right, a date given once and for all.
TEST_F(ZoneTest, Transitions) {
    const std::tuple<SYSTEMTIME, int32_t, DDateTime> rows[] = {
        {{0, 3, 3, 1, 2, 30, 0, 0}, 2009, {29, 3, 2009, 2, 30}},
        {{0, 12, 0, 5, 0, 0, 0, 0}, 2009, {27, 12, 2009}},
        {{0, 12, 0, 5, 23, 0, 0, 0}, 2000, {31, 12, 2000, 23}},
        {{0, 2, 0, 5, 1, 0, 0, 0}, 2100, {28, 2, 2100, 1}},
        {{2010, 5, 0, 4, 2, 0, 0, 0}, 2009, {4, 5, 2010, 2}}};
    for (const auto& [rule, of_year, moment] : rows) {
        SetZone(60, -60, rule, rule);
        DDateTime begin;
        DDateTime end;
        EXPECT_TRUE(DaylightPeriod(of_year, begin, end));
        EXPECT_EQ(begin, moment);
        EXPECT_EQ(end, moment);
    }
}

// A period across the year's end is never in force: the rule is for those within one year.
TEST_F(ZoneTest, PeriodsLieWithinOneYear) {
    const SYSTEMTIME march = {0, 3, 0, 5, 2, 0, 0, 0};
    const SYSTEMTIME december = {0, 12, 0, 5, 2, 0, 0, 0};
    SetZone(-60, -30, march, december);
    EXPECT_TRUE(SetLocalClock({20, 12, 2009, 12}));
    EXPECT_EQ(ZoneOffset(), -90 * 60.0);
    EXPECT_TRUE(SetLocalClock({27, 12, 2009, 12}));
    EXPECT_EQ(ZoneOffset(), -60 * 60.0);
    SetZone(300, 60, december, march);
    EXPECT_TRUE(SetLocalClock({15, 1, 2009, 12}));
    EXPECT_EQ(ZoneOffset(), 300 * 60.0);
}

TEST_F(ZoneTest, SetZoneOffsetKeepsUniversalTime) {
    UseZone("UTC0");
    const double start = ToSeconds({25, 12, 2009, 10, 20, 30});
    ASSERT_TRUE(SetUniversalClock(UniversalTime(start)));
    const std::pair<double, double> rows[] = {{5400, 90},   {89, 1},   {-89, -1},   {119.6, 2},
                                              {-119.6, -2}, {59.4, 0}, {-3600, -60}};
    for (const auto& [offset, minutes] : rows) {
        EXPECT_TRUE(SetZoneOffset(offset)) << offset;
        double standard = 1;
        bool daylight = true;
        EXPECT_TRUE(GetZone(standard, daylight));
        EXPECT_EQ(standard, minutes * 60) << offset;
        EXPECT_EQ(ZoneOffset(), minutes * 60);
        EXPECT_NEAR(NowSeconds(), start, 30);
        EXPECT_NEAR(ToSeconds(NowLocal()), start - minutes * 60, 30);
        EXPECT_NEAR(ToSeconds(LocalTime(NowUniversal())), start - minutes * 60, 30);
    }
    for (const double offset : {1e300, -1e300, std::nan(""), 1e9}) {
        EXPECT_FALSE(SetZoneOffset(offset)) << offset;
        EXPECT_EQ(ZoneOffset(), -3600.0);
    }
}

TEST_F(ZoneTest, ClocksAreSetToTheMillisecondOrNotAtAll) {
    UseZone("CET-1");
    EXPECT_TRUE(SetLocalClock({25, 12, 2009, 10, 20, 30.25F}));
    EXPECT_FALSE(SetLocalClock({31, 2, 2009}));
    EXPECT_FALSE(SetUniversalClock({25, 12, 2009, 10, 20, -0.5F}));
    const double start = ToSeconds({25, 12, 2009, 9, 20, 30.25F});
    EXPECT_GE(NowSeconds(), start);
    EXPECT_LT(NowSeconds(), start + 30);
    EXPECT_EQ(LocalTime(DDateTime(1, 1, 2009), -3600), DDateTime(1, 1, 2009, 1));
    EXPECT_TRUE(LocalTime(UniversalTime()).IsNull());
}

}  // namespace
}  // namespace zelto
