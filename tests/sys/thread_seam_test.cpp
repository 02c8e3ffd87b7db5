// What the thread wrapper asks of the system, on a system that runs a thread's entry at once.

#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "common/sys/thread.h"

namespace {

DWORD g_result = 0;                // of the thread's entry
std::vector<std::string> g_named;  // "<type> <name> <id>" of each naming exception

}  // namespace

HANDLE CreateThread(SECURITY_ATTRIBUTES*, DWORD, LPTHREAD_START_ROUTINE start, void* parameter,
                    DWORD, DWORD* thread_id) {
    *thread_id = 42;
    g_result = start(parameter);
    return reinterpret_cast<HANDLE>(uintptr_t{4});
}

void RaiseException(DWORD code, DWORD, DWORD count, const uintptr_t* arguments) {
    ASSERT_EQ(code, 0x406D1388u);
    ASSERT_EQ(count, 4u);
    g_named.push_back(std::to_string(arguments[0]) + " " +
                      reinterpret_cast<const char*>(arguments[1]) + " " +
                      std::to_string(static_cast<int32_t>(arguments[2])));
}

int GetThreadPriority(HANDLE) {
    return THREAD_PRIORITY_NORMAL;
}

BOOL SetThreadPriority(HANDLE, int) {
    return TRUE;
}

namespace zelto {
namespace {

class Worker : public Thread {
  public:
    Worker() : Thread(DString("worker")) {}
    int Run() override { return 77; }
};

TEST(ThreadSeam, TheEntryNamesTheThreadAndAnswersOneWhateverTheBody) {
    Worker worker;
    EXPECT_EQ(worker.Start(), 1);
    EXPECT_EQ(g_result, 1u);
    EXPECT_EQ(g_named, (std::vector<std::string>{"4096 worker -1", "4096 worker 42"}));
    EXPECT_EQ(worker.Running(), 0);
}

}  // namespace
}  // namespace zelto
