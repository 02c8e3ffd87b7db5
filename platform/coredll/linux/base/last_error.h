// The last error of the calling thread, and the one place where errno becomes an error number.

#ifndef ZELTO_PLATFORM_COREDLL_LINUX_BASE_LAST_ERROR_H
#define ZELTO_PLATFORM_COREDLL_LINUX_BASE_LAST_ERROR_H

#include "platform/coredll/api/base.h"

namespace zelto::coredll {

// Sets the last error and returns `result`, the failing call's own answer.
template <class Result>
Result Fail(DWORD error, Result result) {
    SetLastError(error);
    return result;
}
inline BOOL Fail(DWORD error) {
    return Fail(error, BOOL{FALSE});
}
// For the calls that answer INVALID_HANDLE_VALUE, not null.
inline HANDLE FailHandle(DWORD error) {
    return Fail(error, INVALID_HANDLE_VALUE);
}

// A success that tells more by the last error, 0 or 183 as a rule.
template <class Result>
Result Succeed(DWORD told, Result result) {
    SetLastError(told);
    return result;
}

// The error number that stands for an errno value; 31 (general failure) for one without.
// ENOENT is 2: a caller that knows the folder to be missing says 3 itself.
DWORD ErrorFromErrno(int error_number);

}  // namespace zelto::coredll

#endif
