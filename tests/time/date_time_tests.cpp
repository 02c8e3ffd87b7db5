#include <gtest/gtest.h>
#include <limits>

#include "common/time/date_time.h"
#include "tests/time/date_printing.h"

namespace zelto {
namespace {

constexpr int32_t kMost = std::numeric_limits<int32_t>::max();
constexpr int32_t kLeast = std::numeric_limits<int32_t>::min();
constexpr float kNan = std::numeric_limits<float>::quiet_NaN();

TEST(DateTime, NullAndValidByTheTable) {
    const struct {
        DDateTime value;
        bool null;
        bool valid;
    } cases[] = {
        {{}, true, false},
        {{0, 0, 0, 0, 0, 0.0009F}, true, false},
        {{0, 0, 0, 0, 0, -0.001001F}, false, false},
        {{0, 0, 0, 0, 1, 0}, false, false},
        {{1, 1, 1900, 0, 0, 0}, false, true},
        {{31, 2, 2009, 23, 59, 60.0F}, false, true},
        {{31, 12, kMost, 23, 59, 60.001F}, false, false},
        {{0, 1, 2009}, false, false},
        {{32, 1, 2009}, false, false},
        {{1, 0, 2009}, false, false},
        {{1, 13, 2009}, false, false},
        {{1, 1, 1899}, false, false},
        {{1, 1, 2009, -1}, false, false},
        {{1, 1, 2009, 24}, false, false},
        {{1, 1, 2009, 0, 60}, false, false},
        {{1, 1, 2009, 0, -1}, false, false},
        {{1, 1, 2009, 0, 0, -0.001F}, false, false},
        {{1, 1, 2009, 0, 0, kNan}, false, false},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(c.value.IsNull(), c.null) << testing::PrintToString(c.value);
        EXPECT_EQ(c.value.IsValid(), c.valid) << testing::PrintToString(c.value);
    }
}

TEST(DateTime, NormalizeCarriesByTheTable) {
    const struct {
        DDateTime value;
        DDateTime result;
    } cases[] = {
        {{32, 1, 2009}, {1, 2, 2009}},
        {{0, 3, 2009}, {28, 2, 2009}},
        {{0, 3, 2100}, {29, 2, 2100}},
        {{0, 1, 2009}, {31, 12, 2008}},
        {{-31, 1, 2009}, {0, 12, 2008}},  // one step only
        {{31, 12, 2009, 25}, {1, 1, 2010, 1}},
        {{1, 1, 2009, 0, 0, 125.5F}, {1, 1, 2009, 0, 2, 5.5F}},
        {{1, 1, 2009, 0, 0, 60}, {1, 1, 2009, 0, 1, 0}},
        {{1, 1, 2009, 23, 1500, 3600}, {3, 1, 2009, 1, 0, 0}},
        {{2, 1, 2009, -1}, {1, 1, 2009, 23}},
        {{2, 1, 2009, -23}, {1, 1, 2009, 1}},
        {{5, 1, 2009, -24}, {3, 1, 2009, 24}},
        {{5, 1, 2009, -49}, {2, 1, 2009, 23}},
        {{1, 1, 2009, 5, -70, -5}, {1, 1, 2009, 5, -70, -5}},
        {{100, 2, 2009}, {16, 5, 2009}},  // every step as long as February
        {{1, 13, 2009}, {1, 1, 2010}},
        {{1, 36, 2009}, {1, 12, 2011}},
        {{5, 13, 2009}, {1, 9, 2009}},  // a month of length -1
    };
    for (const auto& c : cases) {
        DDateTime value = c.value;
        value.Normalize();
        EXPECT_EQ(value, c.result) << "from " << testing::PrintToString(c.value);
    }
}

TEST(DateTime, NormalizeIsDefinedForAnyFields) {
    const int32_t integers[] = {kLeast, -1, 0, 13, kMost};
    const float seconds[] = {0, 1e30F, std::numeric_limits<float>::infinity(), kNan};
    for (const int32_t a : integers) {
        for (const int32_t b : integers) {
            for (const float s : seconds) {
                DDateTime value(a, b, kMost, b, a, s);
                value.Normalize();
                EXPECT_LT(value.minute, 60);
                EXPECT_LE(value.hour, 24);
            }
        }
    }
    DDateTime value(1, 1, 2009, 0, 0, 1e30F);
    value.Normalize();
    EXPECT_EQ(value, DDateTime(1, 1, 2009, 0, 0, 1e30F));
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
    for (const int32_t year : {1900, 2000, 2008, 2100, 0, -4})
        EXPECT_EQ(DaysInMonth(2, year), 29) << year;
    EXPECT_EQ(DaysInMonth(kLeast, 2009), -1);
}

}  // namespace
}  // namespace zelto
