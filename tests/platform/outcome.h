// What a call answered and what it did to the last error, in a form that tests compare.

#ifndef ZELTO_TESTS_PLATFORM_OUTCOME_H
#define ZELTO_TESTS_PLATFORM_OUTCOME_H

#include <string>

#include "platform/coredll/api/base.h"

namespace zelto::test {

// "ok": succeeded and left the last error alone; "ok 183": succeeded and set it; "32": failed with
// it. `call` answers BOOL.
template <class Call>
std::string Outcome(Call call) {
    constexpr DWORD kPreset = 4711;
    SetLastError(kPreset);
    const bool succeeded = call() != FALSE;
    const DWORD error = GetLastError();
    return (succeeded ? "ok" : "") +
           (succeeded && error == kPreset ? "" : (succeeded ? " " : "") + std::to_string(error));
}

}  // namespace zelto::test

#endif
