// What the tests of shared objects have in common: a device of their own, a connection that goes
// with it, and children made by fork.

#ifndef ZELTO_TESTS_PLATFORM_SHARED_OBJECTS_H
#define ZELTO_TESTS_PLATFORM_SHARED_OBJECTS_H

#include <functional>
#include <gtest/gtest.h>
#include <signal.h>
#include <string>
#include <sys/wait.h>
#include <unistd.h>

#include "platform/coredll/coredll.h"
#include "platform/coredll/linux/objects/store.h"
#include "platform/coredll/linux/objects/store_report.h"
#include "tests/support/temp_device.h"

namespace zelto::test {

constexpr DWORD kMarker = 0xABCD;  // a last error that no call sets

class SharedObjects : public testing::Test {
  protected:
    ~SharedObjects() override { coredll::CloseStore(); }

    // What a survivor finds; fails the test when the store cannot be used.
    static coredll::StoreReport Report() {
        coredll::StoreReport report;
        std::string why;
        EXPECT_TRUE(coredll::DescribeStore(report, &why)) << why;
        return report;
    }

    TempDevice device_;
};

// Runs `body` in a child process that ends with its result.
inline pid_t Fork(const std::function<int()>& body) {
    const pid_t child = fork();
    if (child == 0)
        _exit(body());
    return child;
}

inline int ExitStatus(pid_t child) {
    int status = -1;
    waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

inline void Kill(pid_t child) {
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
}

// A queue end with the given options, ALLOW_BROKEN unless said otherwise.
inline HANDLE OpenQueue(LPCWSTR name, bool read, DWORD flags = MSGQUEUE_ALLOW_BROKEN,
                        DWORD max_messages = 20, DWORD message_bytes = 1024) {
    const MSGQUEUEOPTIONS options{sizeof options, flags, max_messages, message_bytes, read};
    return CreateMsgQueue(name, &options);
}

inline bool WriteText(HANDLE queue, const std::string& text, DWORD timeout = 0, DWORD flags = 0) {
    return WriteMsgQueue(queue, text.data(), static_cast<DWORD>(text.size()), timeout, flags) != 0;
}

// The next message, or "error <number>".
inline std::string ReadText(HANDLE queue, DWORD timeout = 0, DWORD size = 4096) {
    std::string text(size, '\0');
    DWORD read = 77;
    DWORD flags = 77;
    if (ReadMsgQueue(queue, text.data(), size, &read, timeout, &flags) == FALSE) {
        return "error " + std::to_string(GetLastError());
    }
    text.resize(read);
    return flags == MSGQUEUE_MSGALERT ? "alert " + text : text;
}

}  // namespace zelto::test

#endif
