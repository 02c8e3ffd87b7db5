#include <gtest/gtest.h>
#include <sys/prctl.h>
#include <thread>

#include "common/sys/sync.h"
#include "common/sys/thread.h"

namespace zelto {
namespace {

bool FreeForOthers(Lock& lock) {
    bool got = false;
    std::thread([&] {
        got = lock.TryEnter();
        if (got)
            lock.Leave();
    }).join();
    return got;
}

TEST(LockHolder, ReleasesOnceAndForgetsItsLock) {
    Lock lock;
    lock.Enter();  // a second release would take this one
    {
        LockHolder holder(&lock, true);
        EXPECT_TRUE(holder.TryAcquire());
        lock.Leave();
        holder.Release();
        holder.Release();
        EXPECT_FALSE(FreeForOthers(lock)) << "the second release took what it did not hold";
        holder.Acquire();
    }
    lock.Leave();
    EXPECT_TRUE(FreeForOthers(lock)) << "the holder still had its lock to acquire";
    {
        LockHolder holder(&lock, false);
        EXPECT_TRUE(FreeForOthers(lock));
        holder.Acquire();
        EXPECT_FALSE(FreeForOthers(lock));
    }
    EXPECT_TRUE(FreeForOthers(lock));
}

TEST(LockHolder, WithoutALockEverythingSucceeds) {
    EXPECT_EQ(FileSystemLock(), nullptr);
    LockHolder holder(FileSystemLock(), true);
    holder.Release();
    EXPECT_TRUE(holder.TryAcquire());
}

TEST(Event, LetsOneWaiterThroughUntilClosed) {
    Event event;
    EXPECT_EQ(event.Wait(0), WAIT_TIMEOUT);
    EXPECT_TRUE(event.Set());
    EXPECT_TRUE(event.Signal());
    EXPECT_EQ(event.Wait(0), WAIT_OBJECT_0);
    EXPECT_EQ(event.Wait(0), WAIT_TIMEOUT);
    EXPECT_TRUE(event.Close());
    EXPECT_FALSE(event.Close());
    EXPECT_FALSE(event.Set());
    EXPECT_EQ(event.Wait(0), WAIT_FAILED);
}

class Worker : public Thread {
  public:
    Worker() : Thread(DString("worker")) {}
    int Run() override {
        prctl(PR_GET_NAME, name);
        finish.Wait(INFINITE);
        return 77;
    }
    char name[16] = "";
    Event finish;
};

TEST(Thread, RunsItsBodyAndReportsItsEnd) {
    Worker worker;
    EXPECT_EQ(worker.Running(), 1);
    worker.SetPriority(5);  // nothing to do yet
    ASSERT_EQ(worker.Start(), 1);
    const struct {
        int level, priority;
    } cases[] = {{0, 7}, {1, 5}, {2, 4}, {3, 3}, {4, 2}, {5, 1}, {6, 1}, {-1, 1}};
    for (const auto& c : cases) {
        worker.SetPriority(c.level);
        EXPECT_EQ(GetThreadPriority(worker.Handle()), c.priority) << c.level;
    }
    EXPECT_EQ(worker.Running(), 1);
    worker.finish.Set();
    EXPECT_EQ(WaitForSingleObject(worker.Handle(), 10000), WAIT_OBJECT_0);
    EXPECT_EQ(worker.Running(), 0);
    EXPECT_STREQ(worker.name, "worker");
    EXPECT_TRUE(CloseHandle(worker.Handle()));
}

}  // namespace
}  // namespace zelto
