#include <algorithm>
#include <atomic>
#include <fstream>
#include <gtest/gtest.h>
#include <sched.h>
#include <sys/resource.h>
#include <thread>
#include <unistd.h>
#include <vector>

#include "platform/coredll/coredll.h"

namespace {

constexpr DWORD kPreset = 77;

std::string NameOf(DWORD id) {
    std::ifstream file("/proc/self/task/" + std::to_string(id) + "/comm");
    std::string name;
    std::getline(file, name);
    return name;
}

// Of a thread: its last act, and no quick one.
struct AtEnd {
    ~AtEnd() {
        for (int i = 0; i < 1000; ++i)
            sched_yield();
        *gone = true;
    }
    std::atomic<bool>* gone;
};

// A thread that tells its id and ends when it is let go.
struct Sleeper {
    Sleeper() {
        SetLastError(kPreset);
        handle = CreateThread(nullptr, 5000, Run, this, 0, &id);
        EXPECT_NE(handle, nullptr);
        EXPECT_EQ(GetLastError(), kPreset);
    }
    ~Sleeper() {
        Finish();
        EXPECT_TRUE(CloseHandle(handle));
        EXPECT_FALSE(CloseHandle(handle));
        CloseHandle(go);
    }
    Sleeper(const Sleeper&) = delete;
    Sleeper& operator=(const Sleeper&) = delete;

    void Finish() const {
        EventModify(go, EVENT_SET);
        EXPECT_EQ(WaitForSingleObject(handle, INFINITE), WAIT_OBJECT_0);
    }
    static DWORD Run(void* self) {
        auto* sleeper = static_cast<Sleeper*>(self);
        sleeper->own_id = static_cast<DWORD>(gettid());
        static thread_local AtEnd at_end;
        at_end.gone = &sleeper->gone;
        return WaitForSingleObject(sleeper->go, INFINITE);
    }

    HANDLE go = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    HANDLE handle = nullptr;
    DWORD id = 0;
    DWORD own_id = 0;  // after Finish, as the next
    std::atomic<bool> gone = false;
};

TEST(Threads, EndForAllWaitersAndAreGoneThen) {
    const Sleeper sleeper;
    EXPECT_EQ(WaitForSingleObject(sleeper.handle, 0), WAIT_TIMEOUT);
    EXPECT_EQ(WaitForSingleObject(sleeper.handle, 1), WAIT_TIMEOUT);
    std::vector<std::thread> waiters;
    for (int i = 0; i < 4; ++i) {
        waiters.emplace_back([&] {
            EXPECT_EQ(WaitForSingleObject(sleeper.handle, INFINITE), WAIT_OBJECT_0);
            EXPECT_TRUE(sleeper.gone);
        });
    }
    sleeper.Finish();
    EXPECT_EQ(sleeper.own_id, sleeper.id);
    EXPECT_EQ(GetLastError(), kPreset);
    for (std::thread& waiter : waiters)
        waiter.join();
}

TEST(Threads, PriorityIsRecordedAndLowersTheHostsToo) {
    setpriority(PRIO_PROCESS, 0, getpriority(PRIO_PROCESS, 0) + 3);
    const int process = getpriority(PRIO_PROCESS, 0);
    const Sleeper sleeper;
    EXPECT_EQ(GetThreadPriority(sleeper.handle), THREAD_PRIORITY_NORMAL);
    for (int priority = THREAD_PRIORITY_TIME_CRITICAL; priority <= THREAD_PRIORITY_IDLE;
         ++priority) {
        EXPECT_TRUE(SetThreadPriority(sleeper.handle, priority));
        EXPECT_EQ(GetThreadPriority(sleeper.handle), priority);
        const int nicer = priority == THREAD_PRIORITY_IDLE ? 19 : std::max(0, priority * 5 - 15);
        EXPECT_EQ(getpriority(PRIO_PROCESS, sleeper.id), std::min(19, process + nicer));
    }
    EXPECT_EQ(GetLastError(), kPreset);
    EXPECT_EQ(getpriority(PRIO_PROCESS, 0), process) << "only that thread's";
}

TEST(Threads, AreNamedByOneException) {
    const Sleeper sleeper;
    const auto own = static_cast<DWORD>(gettid());
    const auto raise = [](uintptr_t type, const char* name, uintptr_t id, DWORD count) {
        const uintptr_t words[] = {type, reinterpret_cast<uintptr_t>(name), id, 0};
        RaiseException(0x406D1388, 0, count, words);
    };
    raise(0x1000, "own", 0xFFFFFFFF, 3);
    raise(0x1000, "worker", sleeper.id, 4);
    EXPECT_EQ(NameOf(sleeper.id), "worker");
    raise(0x1000, "a name of twenty byt", sleeper.id, 3);
    raise(0x1001, "wrong", sleeper.id, 4);  // from here on: records that say nothing usable
    raise(0x1000, "short", sleeper.id, 2);
    raise(0x1000, nullptr, sleeper.id, 4);
    raise(0x1000, "nobody", 0x7FFFFFFF, 4);
    EXPECT_EQ(NameOf(sleeper.id), "a name of twent");
    EXPECT_EQ(NameOf(own), "own");
}

TEST(ThreadsDeathTest, AnyOtherExceptionEndsTheProcess) {
    EXPECT_DEATH(RaiseException(0xC0000005, 0, 0, nullptr), "0xC0000005");
}

}  // namespace
