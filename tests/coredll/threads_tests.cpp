#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <string>
#include <sys/resource.h>
#include <thread>
#include <unistd.h>
#include <vector>

#include "platform/coredll/coredll.h"

namespace {

constexpr DWORD kPreset = 77;

std::string TaskFolder(DWORD id) {
    return "/proc/self/task/" + std::to_string(id);
}

std::string NameOf(DWORD id) {
    std::ifstream file(TaskFolder(id) + "/comm");
    std::string name;
    std::getline(file, name);
    return name;
}

void Raise(DWORD code, uintptr_t type, const char* name, uintptr_t id, DWORD count) {
    const uintptr_t words[] = {type, reinterpret_cast<uintptr_t>(name), id, 0};
    RaiseException(code, 0, count, words);
}

// A thread that tells its id and ends when it is let go.
class Sleeper {
  public:
    Sleeper() : go_(CreateEventW(nullptr, TRUE, FALSE, nullptr)) {
        SetLastError(kPreset);
        handle_ = CreateThread(nullptr, 5000, Run, this, 0, &id_);
        EXPECT_NE(handle_, nullptr);
        EXPECT_EQ(GetLastError(), kPreset);
    }
    ~Sleeper() {
        Finish();
        EXPECT_TRUE(CloseHandle(handle_));
        EXPECT_TRUE(CloseHandle(go_));
    }
    Sleeper(const Sleeper&) = delete;
    Sleeper& operator=(const Sleeper&) = delete;

    void Finish() {
        EventModify(go_, EVENT_SET);
        EXPECT_EQ(WaitForSingleObject(handle_, INFINITE), WAIT_OBJECT_0);
    }
    [[nodiscard]] HANDLE Handle() const { return handle_; }
    [[nodiscard]] DWORD Id() const { return id_; }
    [[nodiscard]] DWORD OwnId() const { return own_id_; }  // after Finish

  private:
    static DWORD Run(void* self) {
        auto* sleeper = static_cast<Sleeper*>(self);
        sleeper->own_id_ = static_cast<DWORD>(gettid());
        return WaitForSingleObject(sleeper->go_, INFINITE);
    }

    HANDLE go_;
    HANDLE handle_ = nullptr;
    DWORD id_ = 0;
    DWORD own_id_ = 0;
};

TEST(Threads, RunUntilTheirEndIsWaitedFor) {
    Sleeper sleeper;
    SetLastError(kPreset);
    EXPECT_EQ(WaitForSingleObject(sleeper.Handle(), 0), WAIT_TIMEOUT);
    EXPECT_EQ(WaitForSingleObject(sleeper.Handle(), 1), WAIT_TIMEOUT);
    EXPECT_TRUE(std::filesystem::exists(TaskFolder(sleeper.Id())));
    sleeper.Finish();
    EXPECT_EQ(sleeper.OwnId(), sleeper.Id());
    EXPECT_EQ(WaitForSingleObject(sleeper.Handle(), 0), WAIT_OBJECT_0);
    EXPECT_EQ(GetLastError(), kPreset);
}

TEST(Threads, GoOnWithoutTheirHandle) {
    const HANDLE done = CreateEventW(nullptr, FALSE, FALSE, nullptr);
    const HANDLE thread = CreateThread(
        nullptr, 0, [](void* event) -> DWORD { return EventModify(event, EVENT_SET) ? 0 : 1; },
        done, 0, nullptr);
    ASSERT_NE(thread, nullptr);
    EXPECT_TRUE(CloseHandle(thread));
    EXPECT_EQ(WaitForSingleObject(done, INFINITE), WAIT_OBJECT_0);
    SetLastError(kPreset);
    EXPECT_EQ(WaitForSingleObject(thread, 0), WAIT_FAILED);
    EXPECT_EQ(GetLastError(), ERROR_INVALID_HANDLE);
    EXPECT_FALSE(CloseHandle(thread));
    CloseHandle(done);
}

TEST(Threads, SeveralWaitersSeeOneEnd) {
    Sleeper sleeper;
    std::vector<std::thread> waiters;
    for (int i = 0; i < 4; ++i) {
        waiters.emplace_back([&] {
            EXPECT_EQ(WaitForSingleObject(sleeper.Handle(), INFINITE), WAIT_OBJECT_0);
            // Ended means gone: the code that it ran may be unloaded.
            EXPECT_FALSE(std::filesystem::exists(TaskFolder(sleeper.Id())));
        });
    }
    sleeper.Finish();
    for (std::thread& waiter : waiters)
        waiter.join();
}

TEST(Threads, RefusedArguments) {
    const LPTHREAD_START_ROUTINE start = [](void*) -> DWORD { return 0; };
    for (const auto& [routine, flags] : {std::pair{LPTHREAD_START_ROUTINE{}, DWORD{0}},
                                         std::pair{start, DWORD{CREATE_SUSPENDED}}}) {
        SetLastError(kPreset);
        EXPECT_EQ(CreateThread(nullptr, 0, routine, nullptr, flags, nullptr), nullptr);
        EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
    }
}

TEST(Priority, IsRecordedAndLowersTheHostsToo) {
    const Sleeper sleeper;
    EXPECT_EQ(GetThreadPriority(sleeper.Handle()), THREAD_PRIORITY_NORMAL);
    int last_nice = getpriority(PRIO_PROCESS, sleeper.Id());
    for (int priority = THREAD_PRIORITY_TIME_CRITICAL; priority <= THREAD_PRIORITY_IDLE;
         ++priority) {
        SetLastError(kPreset);
        EXPECT_TRUE(SetThreadPriority(sleeper.Handle(), priority));
        EXPECT_EQ(GetThreadPriority(sleeper.Handle()), priority);
        EXPECT_EQ(GetLastError(), kPreset);
        const int nice = getpriority(PRIO_PROCESS, sleeper.Id());
        EXPECT_GE(nice, last_nice);
        last_nice = nice;
    }
    EXPECT_EQ(last_nice, 19);
    EXPECT_NE(getpriority(PRIO_PROCESS, 0), 19) << "only that thread's";
    for (const int priority : {-1, 8}) {
        EXPECT_FALSE(SetThreadPriority(sleeper.Handle(), priority));
        EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
    }
    EXPECT_EQ(GetThreadPriority(sleeper.Handle()), THREAD_PRIORITY_IDLE);
}

TEST(Priority, HandlesOfOtherKindsAreRefused) {
    const HANDLE event = CreateEventW(nullptr, FALSE, FALSE, nullptr);
    for (const HANDLE handle : {event, HANDLE{}, INVALID_HANDLE_VALUE}) {
        SetLastError(kPreset);
        EXPECT_EQ(GetThreadPriority(handle), THREAD_PRIORITY_ERROR_RETURN);
        EXPECT_EQ(GetLastError(), ERROR_INVALID_HANDLE);
        SetLastError(kPreset);
        EXPECT_FALSE(SetThreadPriority(handle, THREAD_PRIORITY_NORMAL));
        EXPECT_EQ(GetLastError(), ERROR_INVALID_HANDLE);
    }
    CloseHandle(event);
}

TEST(ThreadName, IsGivenByTheException) {
    constexpr DWORD kNaming = 0x406D1388;
    const Sleeper sleeper;
    Raise(kNaming, 0x1000, "worker", sleeper.Id(), 4);
    EXPECT_EQ(NameOf(sleeper.Id()), "worker");
    Raise(kNaming, 0x1000, "a name of twenty byt", sleeper.Id(), 3);
    EXPECT_EQ(NameOf(sleeper.Id()), "a name of twent");
    const auto own = static_cast<DWORD>(gettid());
    Raise(kNaming, 0x1000, "own", 0xFFFFFFFF, 3);
    EXPECT_EQ(NameOf(own), "own");
    // Records that say nothing usable.
    Raise(kNaming, 0x1001, "wrong", sleeper.Id(), 4);
    Raise(kNaming, 0x1000, "short", sleeper.Id(), 2);
    Raise(kNaming, 0x1000, nullptr, sleeper.Id(), 4);
    Raise(kNaming, 0x1000, "nobody", 0x7FFFFFFF, 4);
    EXPECT_EQ(NameOf(sleeper.Id()), "a name of twent");
    EXPECT_EQ(NameOf(own), "own");
}

TEST(ThreadNameDeathTest, OtherExceptionsEndTheProcess) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_DEATH(RaiseException(0xC0000005, 0, 0, nullptr), "0xC0000005");
}

class CriticalSection : public ::testing::Test {
  protected:
    CriticalSection() { InitializeCriticalSection(&section_); }
    ~CriticalSection() override { DeleteCriticalSection(&section_); }

    // TryEnter on another thread, which leaves again.
    BOOL TryElsewhere() {
        BOOL entered = FALSE;
        std::thread([&] {
            entered = TryEnterCriticalSection(&section_);
            if (entered)
                LeaveCriticalSection(&section_);
        }).join();
        return entered;
    }

    CRITICAL_SECTION section_;
};

TEST_F(CriticalSection, TakesOneLeaveForEachEntry) {
    EXPECT_TRUE(TryElsewhere());
    EnterCriticalSection(&section_);
    EXPECT_TRUE(TryEnterCriticalSection(&section_));
    EXPECT_FALSE(TryElsewhere());
    LeaveCriticalSection(&section_);
    EXPECT_FALSE(TryElsewhere());
    LeaveCriticalSection(&section_);
    EXPECT_TRUE(TryElsewhere());
}

TEST_F(CriticalSection, AdmitsOneThreadAtATime) {
    int count = 0;
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&] {
            for (int turn = 0; turn < 5000; ++turn) {
                EnterCriticalSection(&section_);
                ++count;
                LeaveCriticalSection(&section_);
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(count, 20000);
}

}  // namespace
