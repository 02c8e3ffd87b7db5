// What the soak programs share: children with a time limit, the navigator as a process, figures.

#ifndef ZELTO_TESTS_SOAK_SOAK_H
#define ZELTO_TESTS_SOAK_SOAK_H

#include <atomic>
#include <chrono>
#include <functional>
#include <new>
#include <stdexcept>
#include <string>
#include <sys/types.h>
#include <vector>

namespace zelto::soak {

// Something did not hold; the words say what.
struct Failure : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// Throws Failure unless `held`.
void Require(bool held, const std::string& what);

class Stopwatch {
  public:
    double Seconds() const {
        return std::chrono::duration<double>(std::chrono::steady_clock::now() - start_).count();
    }

  private:
    std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
};

// A child process, killed and waited for with the object. A move leaves nothing behind.
class Child {
  public:
    Child() = default;
    // Runs `body` by fork: its result, or 1 with words on standard error when it throws.
    explicit Child(const std::function<int()>& body);
    // Runs a program; `output` receives what it prints.
    Child(const std::vector<std::string>& command, const std::string& output);
    Child(Child&& other) noexcept;
    Child& operator=(Child&& other) noexcept;
    ~Child();

    void Signal(int number) const;
    // Returns once it has stopped itself; throws Failure when it ends instead.
    void AwaitStop() const;
    // The exit status, or minus the signal that ended it; throws Failure when it still runs after
    // `seconds`.
    int Wait(double seconds);
    // Whether it is running still.
    bool Lives() const;

  private:
    pid_t pid_ = 0;  // 0: none
};

// Memory that is this process's and its later children's; throws Failure.
void* SharedPages(size_t size);
void FreeSharedPages(void* pages, size_t size);

// Starts the stand-in navigator on the current device and returns once its window is there; throws
// Failure after five seconds.
Child StartNavigator();

// Runs `rounds(worker, count)` in several processes that share `total` rounds; throws Failure when
// one of them fails.
void InWorkers(int total, const std::function<void(int worker, int count)>& rounds);

// A T that the processes made after it share. T is trivially destructible.
template <class T>
class Shared {
  public:
    Shared() : value_(new (SharedPages(sizeof(T))) T{}) {}
    Shared(const Shared&) = delete;
    Shared& operator=(const Shared&) = delete;
    ~Shared() { FreeSharedPages(value_, sizeof(T)); }

    T* operator->() const { return value_; }
    T& operator*() const { return *value_; }

  private:
    T* value_;
};

// A largest number of seconds, taken by any process that shares it.
class Longest {
  public:
    void Take(double seconds) {
        double before = seconds_.load();
        while (seconds > before && !seconds_.compare_exchange_weak(before, seconds)) {
        }
    }
    double Milliseconds() const { return seconds_.load() * 1000; }

  private:
    std::atomic<double> seconds_{0};
};

// Runs a soak program's body: 0, or 1 with words on standard error when it throws.
int RunSoak(const std::function<void()>& body);

}  // namespace zelto::soak

#endif
