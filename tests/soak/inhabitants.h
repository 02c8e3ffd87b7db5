// Processes that live on a device while something is done to it.

#ifndef ZELTO_TESTS_SOAK_INHABITANTS_H
#define ZELTO_TESTS_SOAK_INHABITANTS_H

#include "tests/soak/shared_calls.h"

namespace zelto::soak {

constexpr double kProcessTime = 60;  // seconds in which a process must have made its calls

// What a process found, as its exit status.
enum Found : int { kServed = 0, kRefused = 3, kSomeFailed = 4 };

// Makes every call in this process and gives its place back.
Found UseDevice(Longest& longest);

// Two processes: one holds objects until it is stopped, the other makes calls all the time.
// Stopped, each makes every call once more and ends with what it found.
class Inhabitants {
  public:
    // Returns once both are there; throws Failure when they cannot be.
    explicit Inhabitants(Longest& longest);

    void Stop() { flags_->stop.store(true); }
    Child& Holder() { return holder_; }
    Child& Worker() { return worker_; }

  private:
    struct Flags {
        std::atomic<int> ready;
        std::atomic<bool> stop;
    };

    int Hold(Longest& longest);
    int Work(Longest& longest);

    Shared<Flags> flags_;  // before the children that use it
    Child holder_;
    Child worker_;
};

}  // namespace zelto::soak

#endif
