// The host's time of day for the tests of one program, which stands still until a test moves it,
// and shorthands for moments.

#ifndef ZELTO_TESTS_PLATFORM_FAKE_HOST_CLOCK_H
#define ZELTO_TESTS_PLATFORM_FAKE_HOST_CLOCK_H

#include <atomic>
#include <cstdio>
#include <string>

#include "platform/coredll/linux/time/calendar.h"

namespace zelto::test {

inline std::atomic<int64_t> g_host_time{0};  // what HostFileTime says

inline void SetHostTime(int64_t unix_seconds) {
    g_host_time = 116'444'736'000'000'000 + unix_seconds * coredll::kTicksPerSecond;
}

inline SYSTEMTIME Moment(int year, int month, int day, int hour = 0, int minute = 0, int second = 0,
                         int milliseconds = 0) {
    const auto word = [](int value) { return static_cast<WORD>(value); };
    return {word(year), word(month),  word(0),      word(day),
            word(hour), word(minute), word(second), word(milliseconds)};
}

// Without the weekday.
inline std::string TextOf(const SYSTEMTIME& time) {
    char text[64];
    std::snprintf(text, sizeof(text), "%04d-%02d-%02d %02d:%02d:%02d.%03d", time.wYear, time.wMonth,
                  time.wDay, time.wHour, time.wMinute, time.wSecond, time.wMilliseconds);
    return text;
}

}  // namespace zelto::test

#endif
