#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

#include "platform/coredll/coredll.h"
#include "platform/coredll/linux/objects/registry_changes.h"
#include "platform/coredll/linux/time/host_clock.h"
#include "tests/platform/fake_host_clock.h"
#include "tests/support/temp_device.h"

int64_t zelto::coredll::HostFileTime() {
    return zelto::test::g_host_time;
}

namespace {

using zelto::test::Moment;
using zelto::test::TextOf;

constexpr DWORD kPreset = 77;

class DeviceClock : public ::testing::Test {
  protected:
    DeviceClock() {
        setenv("TZ", "CET-1CEST,M3.5.0,M10.5.0/3", 1);
        zelto::test::SetHostTime(1'750'000'000);
    }
    ~DeviceClock() override { unsetenv("TZ"); }

    static std::string Read(void (*get)(SYSTEMTIME*)) {
        SYSTEMTIME time{};
        get(&time);
        return TextOf(time);
    }
    static std::string Universal() { return Read(GetSystemTime); }
    static std::string Local() { return Read(GetLocalTime); }

    // A setter that must fail with the error and change nothing.
    template <class Setter, class Value>
    static void Refuses(Setter set, const Value* value, DWORD error) {
        const std::string before = Local();
        SetLastError(kPreset);
        EXPECT_FALSE(set(value));
        EXPECT_EQ(GetLastError(), error);
        EXPECT_EQ(Local(), before);
    }

    const std::string host_now_ = "2025-06-15 15:06:40.000";
    const SYSTEMTIME noon_ = Moment(2009, 12, 25, 12, 0, 0, 7);
    const SYSTEMTIME no_day_ = Moment(2025, 2, 29);
    zelto::test::TempDevice device_;
    const std::string file_ = device_.Device() + "/registry";
};

TEST_F(DeviceClock, RunsWithTheHostsFromWhereItWasSet) {
    EXPECT_EQ(Universal(), host_now_);
    EXPECT_EQ(Local(), "2025-06-15 17:06:40.000");
    Refuses(SetSystemTime, &no_day_, ERROR_INVALID_PARAMETER);
    Refuses(SetLocalTime, &no_day_, ERROR_INVALID_PARAMETER);
    zelto::test::g_host_time += 1'234'567;  // the offset takes all digits
    SetLastError(kPreset);
    EXPECT_TRUE(SetSystemTime(&noon_));
    EXPECT_EQ(GetLastError(), kPreset);
    EXPECT_EQ(Universal(), TextOf(noon_));
    zelto::test::g_host_time += 90 * zelto::coredll::kTicksPerSecond;
    EXPECT_EQ(Local(), "2009-12-25 13:01:30.007");
}

TEST_F(DeviceClock, LocalTimeIsSetWithTheBiasInForceAtTheCall) {
    const SYSTEMTIME winter = Moment(2025, 12, 1, 8, 30);  // set in summer: two hours
    EXPECT_TRUE(SetLocalTime(&winter));
    EXPECT_EQ(Local(), "2025-12-01 07:30:00.000");
    EXPECT_TRUE(SetLocalTime(&winter));
    EXPECT_EQ(Local(), "2025-12-01 08:30:00.000");
}

TEST_F(DeviceClock, TheEndsOfTheCalendar) {
    const SYSTEMTIME first = Moment(1601, 1, 1);
    const SYSTEMTIME last = Moment(30827, 12, 31, 23, 59, 59, 999);
    Refuses(SetLocalTime, &first, ERROR_INVALID_PARAMETER);  // an hour earlier in UTC
    for (const SYSTEMTIME& end : {first, last}) {
        EXPECT_TRUE(SetSystemTime(&end));
        EXPECT_EQ(Universal(), TextOf(end));
    }
    zelto::test::g_host_time = zelto::coredll::kMaxTicks / 2;
    EXPECT_EQ(Universal(), "30828-09-14 02:48:05.477");
}

TEST_F(DeviceClock, WithoutAGoodDeviceOrFileItIsTheHosts) {
    EXPECT_TRUE(SetSystemTime(&noon_));
    EXPECT_EQ(Universal(), TextOf(noon_));
    std::ofstream(file_, std::ios::app) << "damage";
    EXPECT_EQ(Universal(), host_now_);
    Refuses(SetSystemTime, &noon_, ERROR_ACCESS_DENIED);
    std::filesystem::remove(file_);
    std::filesystem::create_directory(file_);
    EXPECT_EQ(Universal(), host_now_);
    Refuses(SetSystemTime, &noon_, ERROR_ACCESS_DENIED);
    EXPECT_FALSE(std::filesystem::exists(file_ + ".new"));
    std::filesystem::remove_all(device_.Device());
    EXPECT_EQ(Universal(), host_now_);
    TIME_ZONE_INFORMATION zone{};
    EXPECT_EQ(GetTimeZoneInformation(&zone), TIME_ZONE_ID_DAYLIGHT);
    Refuses(SetTimeZoneInformation, &zone, ERROR_ACCESS_DENIED);
}

// Values of the right name that another program wrote in another form.
TEST_F(DeviceClock, ValuesOfAnotherFormCountAsNone) {
    HKEY key = nullptr;
    DWORD disposition = 0;
    ASSERT_EQ(RegCreateKeyExW(HKEY_LOCAL_MACHINE, TEXT("Time"), 0, nullptr, 0, 0, nullptr, &key,
                              &disposition),
              0);
    const BYTE bytes[172] = {1};
    const struct {
        const WCHAR* name;
        DWORD type;
        DWORD size;
    } values[] = {{TEXT("HostOffset"), REG_BINARY, 7},
                  {TEXT("HostOffset"), REG_SZ, 8},
                  {TEXT("TimeZoneInformation"), REG_BINARY, 171},
                  {TEXT("TimeZoneInformation"), REG_SZ, 172}};
    for (const auto& value : values) {
        EXPECT_EQ(RegSetValueExW(key, value.name, 0, value.type, bytes, value.size), 0);
        EXPECT_EQ(Universal(), host_now_);
        EXPECT_EQ(Local(), "2025-06-15 17:06:40.000");
    }
    BYTE impossible[172] = {};
    impossible[68 + 2] = 13;  // a month, of the change to standard time
    EXPECT_EQ(RegSetValueExW(key, TEXT("TimeZoneInformation"), 0, REG_BINARY, impossible, 172), 0);
    EXPECT_EQ(Local(), "2025-06-15 17:06:40.000");
    RegCloseKey(key);
}

TEST_F(DeviceClock, AProcessThatReadsOftenIsToldOfChanges) {
    using zelto::coredll::RegistryChanges;
    for (int i = 0; i < 1000; ++i)
        Universal();
    const std::optional<uint32_t> before = RegistryChanges(device_.Device());
    ASSERT_TRUE(before);
    const pid_t child = fork();
    if (child == 0)
        _exit(SetSystemTime(&noon_) ? 0 : 1);
    int status = -1;
    EXPECT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(Universal(), TextOf(noon_));
    EXPECT_EQ(RegistryChanges(device_.Device()), *before + 1);
    EXPECT_FALSE(RegistryChanges(device_.Device() + "/other"));
}

TEST_F(DeviceClock, SettersDoNotLoseEachOthersChanges) {
    TIME_ZONE_INFORMATION zone{};
    zone.Bias = 300;
    for (int turn = 0; turn < 20; ++turn) {
        std::filesystem::remove(file_);
        std::thread other([&] { EXPECT_TRUE(SetTimeZoneInformation(&zone)); });
        EXPECT_TRUE(SetSystemTime(&noon_));
        other.join();
        EXPECT_EQ(Local(), "2009-12-25 07:00:00.007");
    }
    const DWORD start = GetTickCount();
    while (GetTickCount() == start) {  // which advances by itself
    }
}

}  // namespace
