// Another implementation of the platform contract, for tests: a script decides what each call
// answers, a virtual clock makes waits cost nothing, and every call is written down. It covers what
// the connection with the navigator calls; conversions and formatting stay the platform's own.
//
// Link it as an object library in front of everything else. State is process-wide and for one
// thread: start each test with Scripted() = {}.

#ifndef ZELTO_TESTS_SUPPORT_SCRIPTED_COREDLL_H
#define ZELTO_TESTS_SUPPORT_SCRIPTED_COREDLL_H

#include <cstdint>
#include <deque>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "platform/coredll/coredll.h"

namespace zelto::test {

struct ScriptedRead {
    std::string message;
    DWORD error = 0;  // not 0: the read fails, with 1460 after its whole time-out
};

struct ScriptedSystem {
    // The record: one line a call, the times of the virtual clock in milliseconds.
    std::vector<std::string> calls;
    std::vector<std::string> requests;  // the bytes of each queue write that was accepted
    uint32_t clock = 0;

    // The script.
    bool key_present = true;
    std::optional<std::string> registry_value;  // raw bytes of "Path_EXE"
    int finds_without_window = 0;               // so many searches fail before the window is there
    bool start_succeeds = true;
    bool post_succeeds = true;
    std::deque<DWORD> write_errors;  // queue writes, 0 for success; success when used up
    bool takes_null_message = false;
    std::deque<ScriptedRead> reads;  // queue reads; nothing to read when used up

    std::map<std::string, std::string> files;  // by full name
    std::string read_only_folder;              // no file is created below it
    DWORD wait_result = WAIT_OBJECT_0;
    bool file_writes_succeed = true;
    bool file_reads_succeed = true;
    bool invalid_file_works = false;  // as if a handle that was never opened were a file

    DWORD last_error = 0;
    std::map<HANDLE, std::string> open;  // names behind the handles
};

ScriptedSystem& Scripted();

// The recorded calls whose names are among those given, in order.
std::vector<std::string> CallsOf(std::initializer_list<std::string> names);

std::string RawBytes(const std::basic_string<WCHAR>& text);  // as the registry stores it

}  // namespace zelto::test

#endif
