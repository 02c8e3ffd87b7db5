#include "common/time/date_time.h"

#include <gtest/gtest.h>
#include <limits>

#include "tests/time/date_support.h"

namespace zelto {
namespace {

constexpr int32_t kMost = std::numeric_limits<int32_t>::max();
constexpr int32_t kLeast = std::numeric_limits<int32_t>::min();
constexpr float kNan = std::numeric_limits<float>::quiet_NaN();

TEST(DateTime, NullAndValid) {
    for (const DDateTime& null : {DDateTime(), DDateTime(0, 0, 0, 0, 0, -0.0009F)})
        EXPECT_TRUE(null.IsNull() && !null.IsValid());
    EXPECT_FALSE(DDateTime(0, 0, 0, 0, 0, -0.001001F).IsNull());
    EXPECT_FALSE(DDateTime(0, 0, 0, 0, 1, 0).IsNull());
    for (const DDateTime& valid : {DDateTime(1, 1, 1900), DDateTime(31, 2, 2009, 23, 59, 60)})
        EXPECT_TRUE(valid.IsValid() && !valid.IsNull());
    for (const DDateTime& wrong :
         {DDateTime(31, 12, kMost, 23, 59, 60.001F), DDateTime(0, 1, 2009), DDateTime(32, 1, 2009),
          DDateTime(1, 0, 2009), DDateTime(1, 13, 2009), DDateTime(1, 1, 1899),
          DDateTime(1, 1, 2009, -1), DDateTime(1, 1, 2009, 24), DDateTime(1, 1, 2009, 0, 60),
          DDateTime(1, 1, 2009, 0, -1), DDateTime(1, 1, 2009, 0, 0, -0.001F),
          DDateTime(1, 1, 2009, 0, 0, kNan)})
        EXPECT_FALSE(wrong.IsValid()) << testing::PrintToString(wrong);
}

// Pairs: what is carried, and what it comes to.
void Carries() {}
template <class... Rest>
void Carries(DDateTime value, const DDateTime& result, const Rest&... rest) {
    const DDateTime before = value;
    value.Normalize();
    EXPECT_EQ(value, result) << "from " << testing::PrintToString(before);
    Carries(rest...);
}

TEST(DateTime, Normalize) {
    using D = DDateTime;
    Carries(D(32, 1, 2009), D(1, 2, 2009), D(0, 3, 2009), D(28, 2, 2009), D(0, 3, 2100),
            D(29, 2, 2100), D(0, 1, 2009), D(31, 12, 2008), D(31, 12, 2009, 25), D(1, 1, 2010, 1),
            D(1, 1, 2009, 0, 0, 125.5F), D(1, 1, 2009, 0, 2, 5.5F), D(1, 1, 2009, 0, 0, 60),
            D(1, 1, 2009, 0, 1), D(1, 1, 2009, 23, 1500, 3600), D(3, 1, 2009, 1), D(2, 1, 2009, -1),
            D(1, 1, 2009, 23), D(2, 1, 2009, -23), D(1, 1, 2009, 1), D(5, 1, 2009, -24),
            D(3, 1, 2009, 24), D(5, 1, 2009, -49), D(2, 1, 2009, 23), D(1, 1, 2009, 5, -70, -5),
            D(1, 1, 2009, 5, -70, -5), D(1, 13, 2009), D(1, 1, 2010), D(1, 36, 2009),
            D(1, 12, 2011));
    // One step down only; one month's length for the whole carry; -1 for no month's length.
    Carries(D(-31, 1, 2009), D(0, 12, 2008), D(100, 2, 2009), D(16, 5, 2009), D(5, 13, 2009),
            D(1, 9, 2009));
    Carries(D(1, 1, 2009, 0, 0, 1e30F), D(1, 1, 2009, 0, 0, 1e30F));
}

TEST(DateTime, NormalizeIsDefinedForAnyFields) {
    for (const int32_t a : {kLeast, -1, 0, 13, kMost}) {
        for (const int32_t b : {kLeast, -1, 0, 13, kMost}) {
            for (const float s : {0.0F, 1e11F, std::numeric_limits<float>::infinity(), kNan}) {
                DDateTime value(a, b, kMost, b, a, s);
                value.Normalize();
                EXPECT_LE(value.hour, 24);
            }
        }
    }
}

TEST(DateTime, ComparesYearsFirstAndSecondsLast) {
    const DDateTime rising[] = {
        {31, 12, 2008, 23, 59, 59}, {31, 1, 2009, 23, 59, 59},  {1, 2, 2009, 23, 59, 59},
        {2, 2, 2009, 0, 59, 59},    {2, 2, 2009, 1, 0, 59},     {2, 2, 2009, 1, 1, 0},
        {2, 2, 2009, 1, 1, 0.001F}, {-5, -5, 2010, -5, -5, -5},
    };
    for (const DDateTime& a : rising) {
        for (const DDateTime& b : rising) {
            EXPECT_EQ(a == b, &a == &b);
            EXPECT_EQ(a != b, &a != &b);
            EXPECT_EQ(a < b, &a < &b);
            EXPECT_EQ(a <= b, &a <= &b);
            EXPECT_EQ(a > b, &a > &b);
            EXPECT_EQ(a >= b, &a >= &b);
        }
    }
    const DDateTime nan(1, 1, 2009, 0, 0, kNan);
    EXPECT_FALSE(nan == nan || nan < nan || nan <= nan || nan > nan || nan >= nan);
    EXPECT_TRUE(rising[3].SameDay(rising[5]));
    EXPECT_FALSE(rising[2].SameDay(rising[3]));
}

TEST(DateTime, MonthsHaveTheirDays) {
    const int32_t days[] = {-1, 31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31, -1};
    for (int32_t month = 0; month < 14; ++month)
        EXPECT_EQ(DaysInMonth(month, 2009), days[month]) << month;
    EXPECT_EQ(DaysInMonth(2, 1900), 29);
    EXPECT_EQ(DaysInMonth(kLeast, 2009), -1);
}

}  // namespace
}  // namespace zelto
