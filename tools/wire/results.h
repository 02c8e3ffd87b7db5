// All results of the library as data: what each means, what brings it about, and a command that
// shows it. The numbers themselves are in the library's public header.

#ifndef ZELTO_TOOLS_WIRE_RESULTS_H
#define ZELTO_TOOLS_WIRE_RESULTS_H

#include <array>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace zelto::wire {

struct Result {
    int32_t code;
    int exit_status;  // of zeltoport
    const char* meaning;
    std::array<const char*, 5> causes;  // the unused ones null
    const char* command;                // shows it on a fresh device; null: see why_not
    const char* why_not = nullptr;      // why no command brings it about here

    std::span<const char* const> Causes() const;
};

// Ascending by code: the library's own, the system's that a request can meet, and the refusals of
// the stand-in navigator.
std::span<const Result> Results();

// Null for a number that the table does not have.
const Result* FindResult(int32_t code);

// What a result of the named export means. Some numbers mean different things with different
// exports; a number that is none of the table's is the navigator's or the system's.
std::string DescribeResult(std::string_view export_name, int32_t result);

// The exit status of zeltoport for a result of the named export.
int ExitStatusOf(std::string_view export_name, int32_t result);

// Whether the result says that the navigator can no longer be reached, so that further calls are
// pointless.
bool ContactLost(int32_t result);

}  // namespace zelto::wire

#endif
