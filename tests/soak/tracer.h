// Runs a piece of work in a process of its own and stops it at each of its system calls.

#ifndef ZELTO_TESTS_SOAK_TRACER_H
#define ZELTO_TESTS_SOAK_TRACER_H

#include <array>
#include <cstdint>
#include <functional>
#include <string>
#include <sys/types.h>

namespace zelto::soak {

// A system call of a stopped process.
struct TracedCall {
    pid_t process = 0;
    long number = 0;  // SYS_...
    std::array<uint64_t, 6> arguments{};

    // What an argument points to, as a path; of a relative one with the folder that it starts from.
    // `folder` is the argument with that folder's descriptor; below 0 the working folder.
    std::string Path(int argument, int folder = -1) const;
    // The path of an open descriptor, as /proc names it.
    std::string OpenPath(int64_t descriptor) const;
};

// Called before a call is made; false ends the process there.
using BeforeCall = std::function<bool(const TracedCall& call)>;
// Called after it; below 0 the result is minus an errno value.
using AfterCall = std::function<void(const TracedCall& call, int64_t result)>;

constexpr int kEndedByTracer = -1000;

// The exit status of `work`, minus the signal that ended it, or kEndedByTracer. Throws Failure
// where the host allows no tracing.
int RunTraced(const std::function<int()>& work, const BeforeCall& before, const AfterCall& after);

}  // namespace zelto::soak

#endif
