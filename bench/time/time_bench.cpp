// Dates, the device's clock and its registry against the C library and fmt on the same texts,
// fields and moments.

#include <cstdio>
#include <ctime>
#include <fmt/format.h>

#include "bench/contest.h"
#include "common/time/date_format.h"
#include "common/time/date_parse.h"
#include "common/time/device_clock.h"
#include "platform/coredll/coredll.h"
#include "tests/support/temp_device.h"

namespace zelto::bench {
namespace {

constexpr int kCalls = 50'000;

template <class Work>
std::function<void()> Calls(Work work) {
    return [=] {
        for (int i = 0; i < kCalls; ++i)
            work();
    };
}

struct Form {
    const char* name;
    bool (*parse)(DDateTime&, const char*);
    const char* text;
    const char* format;
};

constexpr Form kForms[] = {
    {"any form, with time", ParseDate, "2009-12-25 10:20:30", "%Y-%m-%d %H:%M:%S"},
    {"any form, year first", ParseDate, "2009/12/25", "%Y/%m/%d"},
    {"any form, day first", ParseDate, "25.12.2009", "%d.%m.%Y"},
    {"day-month-year", ParseDayMonthYear, "25-12-2009", "%d-%m-%Y"},
    {"year-month-day", ParseYearMonthDay, "2009-12-25", "%Y-%m-%d"},
    {"year-month-day and time",
     [](DDateTime& out, const char* text) { return ParseYearMonthDayTime(out, text); },
     "2009-12-25 10:20:30", "%Y-%m-%d %H:%M:%S"},
    {"month's name", ParseDayMonthNameYear, "25-DEC-2009", "%d-%b-%Y"},
    {"time of day", ParseTimeOfDay, "10:20:30", "%H:%M:%S"},
    {"day-month-year, then time", ParseDayMonthYearThenTime, "25-12-2009 10:20:30",
     "%d-%m-%Y %H:%M:%S"},
    {"month's name, then time", ParseDayMonthNameYearThenTime, "25-DEC-2009 10:20:30",
     "%d-%b-%Y %H:%M:%S"},
};

void Parse(benchmark::State& state, const Form& form) {
    Contest(state, kCalls, "0.67 strptime",
            {{"ours", Calls([form] {
                  DDateTime value;
                  const char* text = form.text;
                  benchmark::DoNotOptimize(text);
                  benchmark::DoNotOptimize(form.parse(value, text));
                  benchmark::DoNotOptimize(value);
              })},
             {"strptime", Calls([form] {
                  tm value = {};
                  const char* text = form.text;
                  benchmark::DoNotOptimize(text);
                  benchmark::DoNotOptimize(strptime(text, form.format, &value));
                  benchmark::DoNotOptimize(value);
              })}});
}

void Format(benchmark::State& state) {
    static DDateTime value(25, 12, 2009, 10, 20, 30.5F);
    static tm fields = {};
    fields.tm_mday = 25;
    fields.tm_mon = 11;
    fields.tm_year = 109;
    fields.tm_hour = 10;
    static DString out;
    Contest(state, kCalls, "0.5 strftime",
            {{"ours", Calls([] {
                  benchmark::DoNotOptimize(value);
                  FormatDateTimeIso(value, out);
                  benchmark::DoNotOptimize(out.c_str());
              })},
             {"strftime", Calls([] {
                  char text[32];
                  benchmark::DoNotOptimize(fields);
                  std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S", &fields);
                  benchmark::DoNotOptimize(text);
              })},
             {"fmt", Calls([] {
                  char text[32];
                  benchmark::DoNotOptimize(value);
                  fmt::format_to(text, "{}-{:02}-{:02} {:02}:{:02}:{:02}", value.year, value.month,
                                 value.day, value.hour, value.minute,
                                 static_cast<int>(value.seconds));
                  benchmark::DoNotOptimize(text);
              })},
             {"snprintf", Calls([] {
                  char text[64];
                  benchmark::DoNotOptimize(value);
                  std::snprintf(text, sizeof text, "%d-%02d-%02d %02d:%02d:%02d", value.year,
                                value.month, value.day, value.hour, value.minute,
                                static_cast<int>(value.seconds));
                  benchmark::DoNotOptimize(text);
              })}});
}

// One for the whole program, since a process has but one device's store.
void UseDevice() {
    static const test::TempDevice device;
}

void Now(benchmark::State& state, void (*now)()) {
    UseDevice();
    Contest(state, kCalls, "150 ns",
            {{"ours", Calls(now)},
             {"clock_gettime", Calls([] {
                  timespec time{};
                  clock_gettime(CLOCK_REALTIME, &time);
                  benchmark::DoNotOptimize(time);
              })},
             {"and localtime_r", Calls([] {
                  timespec time{};
                  tm fields{};
                  clock_gettime(CLOCK_REALTIME, &time);
                  localtime_r(&time.tv_sec, &fields);
                  benchmark::DoNotOptimize(fields);
              })}});
}

constexpr WCHAR kKey[] = TEXT("SOFTWARE\\ZeltoNav\\General");
constexpr WCHAR kValue[] = TEXT("Path_EXE");

void ReadRegistry(benchmark::State& state) {
    UseDevice();
    HKEY made = nullptr;
    RegCreateKeyExW(HKEY_LOCAL_MACHINE, kKey, 0, nullptr, 0, KEY_SET_VALUE, nullptr, &made,
                    nullptr);
    const WCHAR path[] = TEXT("\\opt\\zelto\\bin\\zelto-navigator");
    RegSetValueExW(made, kValue, 0, REG_SZ, reinterpret_cast<const BYTE*>(path), sizeof path);
    RegCloseKey(made);
    Contest(state, kCalls, "2000 ns", {{"ours", Calls([] {
                                            HKEY key = nullptr;
                                            BYTE data[256];
                                            DWORD size = sizeof data;
                                            RegOpenKeyExW(HKEY_LOCAL_MACHINE, kKey, 0, 0, &key);
                                            RegQueryValueExW(key, kValue, nullptr, nullptr, data,
                                                             &size);
                                            RegCloseKey(key);
                                            benchmark::DoNotOptimize(data);
                                        })}});
}

const bool kAdded = [] {
    AddRow("clock/NowLocal", [](benchmark::State& state) {
        Now(state, [] { benchmark::DoNotOptimize(NowLocal()); });
    });
    AddRow("clock/NowSeconds", [](benchmark::State& state) {
        Now(state, [] { benchmark::DoNotOptimize(NowSeconds()); });
    });
    AddRow("registry/open, query, close", ReadRegistry);
    for (const Form& form : kForms)
        AddRow(std::string("date parsed/") + form.name,
               [form](benchmark::State& state) { Parse(state, form); });
    AddRow("date formatted/ISO with time", Format);
    return true;
}();

}  // namespace
}  // namespace zelto::bench
