// Another implementation of the platform contract, for tests: a script decides what each call
// answers, a virtual clock makes waits cost nothing, and every call is written down. It covers what
// the connection with the navigator calls; conversions, formatting and the last error stay the
// platform's own. Link it as objects, which win over the platform's archive. For one thread.

#ifndef ZELTO_TESTS_SUPPORT_SCRIPTED_COREDLL_H
#define ZELTO_TESTS_SUPPORT_SCRIPTED_COREDLL_H

#include <deque>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "platform/coredll/coredll.h"

namespace zelto::test {

struct ScriptedRead {
    std::string message;
    DWORD error = 0;  // not 0: the read fails, with 1460 after its whole time-out
};

// Start each test with Scripted() = {}.
struct ScriptedSystem {
    std::vector<std::string> calls;     // one line a call
    std::vector<std::string> requests;  // the bytes of each accepted queue write
    DWORD clock = 0;                    // ms

    std::set<std::string> failing;              // calls that fail; the event wait runs out
    std::optional<std::string> registry_value;  // raw bytes of "Path_EXE"
    int finds_without_window = 0;               // so many searches fail before the window is there
    std::deque<DWORD> write_errors;             // of queue writes, 0 for success as when used up
    bool takes_null_message = false;
    std::deque<ScriptedRead> reads;            // of queues; nothing comes when used up
    std::map<std::string, std::string> files;  // by full name

    std::map<HANDLE, std::string> open;  // names behind the handles
};

ScriptedSystem& Scripted();

// The recorded calls whose names are among those given, in order.
std::vector<std::string> CallsOf(const std::set<std::string>& names);

}  // namespace zelto::test

#endif
