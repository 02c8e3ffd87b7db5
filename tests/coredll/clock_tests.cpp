#include <chrono>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <thread>
#include <vector>

#include "platform/coredll/coredll.h"
#include "platform/coredll/linux/host_clock.h"
#include "tests/coredll/fake_host_clock.h"
#include "tests/support/temp_device.h"

int64_t zelto::coredll::HostFileTime() {
    return zelto::test::g_host_time;
}

namespace {

using zelto::test::Moment;
using zelto::test::TextOf;

constexpr DWORD kPreset = 77;

int64_t Value(const FILETIME& time) {
    return static_cast<int64_t>(uint64_t{time.dwHighDateTime} << 32 | time.dwLowDateTime);
}

FILETIME Halves(uint64_t value) {
    return {static_cast<DWORD>(value), static_cast<DWORD>(value >> 32)};
}

TEST(FileTime, KnownMomentsBothWays) {
    const struct {
        SYSTEMTIME time;
        int64_t value;
        int weekday;
    } cases[] = {{Moment(1601, 1, 1), 0, 1},
                 {Moment(1601, 1, 1, 0, 0, 0, 1), 10'000, 1},
                 {Moment(1970, 1, 1), 116'444'736'000'000'000, 4},
                 {Moment(1980, 1, 1), 0x01A8E79FE1D58000, 2},
                 {Moment(2000, 2, 29, 23, 59, 59, 999), 125'963'423'999'990'000, 2},
                 {Moment(30827, 12, 31, 23, 59, 59, 999), 9'223'149'887'999'990'000, 5}};
    for (const auto& test : cases) {
        FILETIME result{};
        SetLastError(kPreset);
        ASSERT_TRUE(SystemTimeToFileTime(&test.time, &result));
        EXPECT_EQ(Value(result), test.value);
        const FILETIME later = Halves(static_cast<uint64_t>(test.value) + 9'999);  // dropped
        SYSTEMTIME back{};
        ASSERT_TRUE(FileTimeToSystemTime(&later, &back));
        EXPECT_EQ(TextOf(back), TextOf(test.time));
        EXPECT_EQ(back.wDayOfWeek, test.weekday) << TextOf(back);
        EXPECT_EQ(GetLastError(), kPreset);
    }
}

TEST(FileTime, EveryDayAgreesWithTheStandardCalendar) {
    using namespace std::chrono;
    const sys_days last = sys_days{year{30827} / 12 / 31};
    int64_t number = 0;
    for (sys_days day{year{1601} / 1 / 1}; day <= last;) {
        const year_month_day date(day);
        const FILETIME time = Halves(static_cast<uint64_t>(number * zelto::coredll::kTicksPerDay));
        SYSTEMTIME result{};
        FILETIME back{};
        const bool good =
            FileTimeToSystemTime(&time, &result) && SystemTimeToFileTime(&result, &back);
        ASSERT_TRUE(good && int{date.year()} == result.wYear &&
                    unsigned{date.month()} == result.wMonth &&
                    unsigned{date.day()} == result.wDay &&
                    weekday(day).c_encoding() == result.wDayOfWeek && Value(back) == Value(time))
            << TextOf(result);
        const int64_t step = date.year() < year{2401} ? 1 : 61;
        day += days(step);
        number += step;
    }
}

TEST(FileTime, RefusesWhatIsNoMoment) {
    const SYSTEMTIME bad[] = {
        Moment(1600, 12, 31),      Moment(30828, 1, 1),          Moment(2024, 0, 1),
        Moment(2024, 13, 1),       Moment(2024, 1, 0),           Moment(2024, 4, 31),
        Moment(2023, 2, 29),       Moment(1900, 2, 29),          Moment(2024, 1, 1, 24),
        Moment(2024, 1, 1, 0, 60), Moment(2024, 1, 1, 0, 0, 60), Moment(2024, 1, 1, 0, 0, 0, 1000)};
    for (const SYSTEMTIME& time : bad) {
        FILETIME result = Halves(5);
        SetLastError(kPreset);
        EXPECT_FALSE(SystemTimeToFileTime(&time, &result)) << TextOf(time);
        EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
        EXPECT_EQ(Value(result), 5);
    }
    for (const uint64_t value : {uint64_t{1} << 63, ~uint64_t{0}}) {
        const FILETIME time = Halves(value);
        SYSTEMTIME result = Moment(1999, 9, 9);
        SetLastError(kPreset);
        EXPECT_FALSE(FileTimeToSystemTime(&time, &result));
        EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
        EXPECT_EQ(result.wYear, 1999);
    }
    const FILETIME last = Halves(~uint64_t{0} >> 1);
    SYSTEMTIME result{};
    EXPECT_TRUE(FileTimeToSystemTime(&last, &result));
    EXPECT_EQ(TextOf(result), "30828-09-14 02:48:05.477");
}

class DeviceClock : public ::testing::Test {
  protected:
    static constexpr int64_t kNow = 1'750'000'000;  // 2025-06-15 15:06:40 UTC

    DeviceClock() { zelto::test::SetHostTime(kNow); }

    static std::string Universal() {
        SYSTEMTIME time{};
        GetSystemTime(&time);
        return TextOf(time);
    }
    static std::string Local() {
        SYSTEMTIME time{};
        GetLocalTime(&time);
        return TextOf(time);
    }
    [[nodiscard]] std::string SettingsFile() const { return device_.Device() + "/clock"; }

    zelto::test::TempDevice device_;
    zelto::test::Variable zone_{"TZ", "CET-1CEST,M3.5.0,M10.5.0/3"};
};

TEST_F(DeviceClock, RunsWithTheHostsFromWhereItWasSet) {
    EXPECT_EQ(Universal(), "2025-06-15 15:06:40.000");
    EXPECT_EQ(Local(), "2025-06-15 17:06:40.000");
    zelto::test::g_host_time += 1'234'567;  // the offset takes all digits
    SetLastError(kPreset);
    const SYSTEMTIME noon = Moment(2009, 12, 25, 12, 0, 0, 7);
    EXPECT_TRUE(SetSystemTime(&noon));
    EXPECT_EQ(GetLastError(), kPreset);
    EXPECT_EQ(Universal(), "2009-12-25 12:00:00.007");
    EXPECT_EQ(Local(), "2009-12-25 13:00:00.007");
    zelto::test::g_host_time += 90 * zelto::coredll::kTicksPerSecond;
    EXPECT_EQ(Universal(), "2009-12-25 12:01:30.007");
}

TEST_F(DeviceClock, LocalTimeIsSetWithTheBiasInForceAtTheCall) {
    const SYSTEMTIME winter = Moment(2025, 12, 1, 8, 30);  // set in summer: two hours
    EXPECT_TRUE(SetLocalTime(&winter));
    EXPECT_EQ(Universal(), "2025-12-01 06:30:00.000");
    EXPECT_EQ(Local(), "2025-12-01 07:30:00.000");
    EXPECT_TRUE(SetLocalTime(&winter));
    EXPECT_EQ(Local(), "2025-12-01 08:30:00.000");
}

TEST_F(DeviceClock, TheEndsOfTheCalendar) {
    for (const SYSTEMTIME& end : {Moment(1601, 1, 1), Moment(30827, 12, 31, 23, 59, 59, 999)}) {
        EXPECT_TRUE(SetSystemTime(&end));
        EXPECT_EQ(Universal(), TextOf(end));
        EXPECT_FALSE(Local().empty());
    }
    const std::string before = Universal();
    zelto::test::g_host_time = zelto::coredll::kMaxTicks / 2;
    EXPECT_EQ(Universal(), "30828-09-14 02:48:05.477");
    zelto::test::SetHostTime(kNow);
    EXPECT_EQ(Universal(), before);
    const SYSTEMTIME first = Moment(1601, 1, 1);
    EXPECT_FALSE(SetLocalTime(&first));  // an hour earlier in UTC
    EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
}

TEST_F(DeviceClock, InvalidTimesLeaveItAlone) {
    const SYSTEMTIME bad = Moment(2025, 2, 29);
    for (BOOL (*set)(const SYSTEMTIME*) : {SetSystemTime, SetLocalTime}) {
        for (const SYSTEMTIME* time : {&bad, static_cast<const SYSTEMTIME*>(nullptr)}) {
            SetLastError(kPreset);
            EXPECT_FALSE(set(time));
            EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
        }
    }
    EXPECT_FALSE(std::filesystem::exists(SettingsFile()));
}

TEST_F(DeviceClock, WithoutADeviceItIsTheHostsAndCannotBeSet) {
    const zelto::test::Variable device("ZELTO_DEVICE", "/tmp/zelto-none");
    EXPECT_EQ(Local(), "2025-06-15 17:06:40.000");
    const SYSTEMTIME noon = Moment(2009, 12, 25, 12);
    TIME_ZONE_INFORMATION zone{};
    EXPECT_EQ(GetTimeZoneInformation(&zone), TIME_ZONE_ID_DAYLIGHT);
    SetLastError(kPreset);
    EXPECT_FALSE(SetSystemTime(&noon));
    EXPECT_EQ(GetLastError(), ERROR_ACCESS_DENIED);
    SetLastError(kPreset);
    EXPECT_FALSE(SetTimeZoneInformation(&zone));
    EXPECT_EQ(GetLastError(), ERROR_ACCESS_DENIED);
}

TEST_F(DeviceClock, AFileThatIsNoneOfOursCountsAsMissingAndIsReplaced) {
    const SYSTEMTIME noon = Moment(2009, 12, 25, 12);
    for (const std::string& content : {std::string("ZELTO-CLOCK 1\noffset +5.0"),
                                       std::string(10'000, '#'), std::string(1, '\0')}) {
        std::ofstream(SettingsFile()) << content;
        EXPECT_EQ(Universal(), "2025-06-15 15:06:40.000");
        EXPECT_TRUE(SetSystemTime(&noon));
        EXPECT_EQ(Universal(), TextOf(noon));
    }
    std::filesystem::remove(SettingsFile());
    std::filesystem::create_directory(SettingsFile());
    EXPECT_EQ(Universal(), "2025-06-15 15:06:40.000");
    SetLastError(kPreset);
    EXPECT_FALSE(SetSystemTime(&noon));
    EXPECT_EQ(GetLastError(), ERROR_ACCESS_DENIED);
    EXPECT_FALSE(std::filesystem::exists(SettingsFile() + ".new"));
}

TEST_F(DeviceClock, SettersDoNotLoseEachOthersChanges) {
    TIME_ZONE_INFORMATION zone{};
    zone.Bias = 300;
    const SYSTEMTIME noon = Moment(2009, 12, 25, 12);
    const SYSTEMTIME one = Moment(2009, 12, 25, 13);
    for (int turn = 0; turn < 20; ++turn) {
        std::filesystem::remove(SettingsFile());
        std::thread other([&] { EXPECT_TRUE(SetTimeZoneInformation(&zone)); });
        EXPECT_TRUE(SetSystemTime(turn % 2 == 0 ? &noon : &one));
        other.join();
        EXPECT_EQ(Local(), turn % 2 == 0 ? "2009-12-25 07:00:00.000" : "2009-12-25 08:00:00.000");
    }
}

TEST(TickCount, Advances) {
    const DWORD start = GetTickCount();
    while (GetTickCount() == start) {
    }
    EXPECT_LT(GetTickCount() - start, 60'000u);
}

}  // namespace
