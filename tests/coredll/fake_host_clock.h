// The host's time of day for the tests of one program: it stands still until a test moves it.

#ifndef ZELTO_TESTS_COREDLL_FAKE_HOST_CLOCK_H
#define ZELTO_TESTS_COREDLL_FAKE_HOST_CLOCK_H

#include <atomic>
#include <cstdlib>
#include <ctime>
#include <string>

#include "platform/coredll/linux/calendar.h"

namespace zelto::test {

constexpr int64_t kTicksTo1970 = 116'444'736'000'000'000;

inline std::atomic<int64_t> g_host_time{0};

inline void SetHostTime(std::time_t unix_seconds) {
    g_host_time = kTicksTo1970 + int64_t{unix_seconds} * coredll::kTicksPerSecond;
}

inline SYSTEMTIME Moment(int year, int month, int day, int hour = 0, int minute = 0, int second = 0,
                         int milliseconds = 0) {
    const auto word = [](int value) { return static_cast<WORD>(value); };
    return {word(year), word(month),  word(0),      word(day),
            word(hour), word(minute), word(second), word(milliseconds)};
}

// The same without the weekday, as text, for comparisons that read well.
inline std::string TextOf(const SYSTEMTIME& time) {
    char text[64];
    std::snprintf(text, sizeof(text), "%04d-%02d-%02d %02d:%02d:%02d.%03d", time.wYear, time.wMonth,
                  time.wDay, time.wHour, time.wMinute, time.wSecond, time.wMilliseconds);
    return text;
}

// An environment variable that is set, or unset for null, until the object goes.
class Variable {
  public:
    Variable(const char* name, const char* value) : name_(name) {
        const char* old = std::getenv(name);
        had_ = old != nullptr;
        old_ = had_ ? old : "";
        Set(value);
    }
    ~Variable() { Set(had_ ? old_.c_str() : nullptr); }
    Variable(const Variable&) = delete;
    Variable& operator=(const Variable&) = delete;

    void Set(const char* value) const {
        if (value == nullptr)
            unsetenv(name_);
        else
            setenv(name_, value, 1);
    }

  private:
    const char* name_;
    bool had_;
    std::string old_;
};

}  // namespace zelto::test

#endif
