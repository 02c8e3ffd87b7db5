// The exception that names a thread ends a process in which nobody handles it. While the library is
// loaded it is handled at once: a debugger, which is asked first, has read the name by then, and
// RaiseException returns to its caller.

#include "platform/coredll/coredll.h"

namespace {

constexpr DWORD kThreadNaming = 0x406D1388;

LONG CALLBACK IgnoreThreadNaming(EXCEPTION_POINTERS* raised) {
    return raised->ExceptionRecord->ExceptionCode == kThreadNaming ? EXCEPTION_CONTINUE_EXECUTION
                                                                   : EXCEPTION_CONTINUE_SEARCH;
}

class ThreadNamingHandler {
  public:
    ThreadNamingHandler() : handler_(AddVectoredExceptionHandler(kFirst, IgnoreThreadNaming)) {}
    ~ThreadNamingHandler() { RemoveVectoredExceptionHandler(handler_); }
    ThreadNamingHandler(const ThreadNamingHandler&) = delete;
    ThreadNamingHandler& operator=(const ThreadNamingHandler&) = delete;

  private:
    static constexpr ULONG kFirst = 1;
    void* handler_;
};

const ThreadNamingHandler g_thread_naming_handler;

}  // namespace
