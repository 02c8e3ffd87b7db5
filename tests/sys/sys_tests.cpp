#include <gtest/gtest.h>
#include <memory>
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

TEST(LockTest, IsRecursiveForItsOwnerAndShutForOthers) {
    Lock lock;
    lock.Enter();
    EXPECT_TRUE(lock.TryEnter());
    lock.Leave();
    EXPECT_FALSE(FreeForOthers(lock));
    lock.Leave();
    EXPECT_TRUE(FreeForOthers(lock));
}

TEST(LockHolderTest, ReleasesOnceAndForgetsItsLock) {
    Lock lock;
    lock.Enter();  // a second release would take this one
    {
        LockHolder holder(&lock, true);
        holder.Release();
        holder.Release();
        EXPECT_FALSE(FreeForOthers(lock));
        holder.Acquire();
        EXPECT_TRUE(holder.TryAcquire());  // as every holder without a lock
    }
    lock.Leave();
    EXPECT_TRUE(FreeForOthers(lock));

    {
        LockHolder holder(&lock, false);
        EXPECT_TRUE(FreeForOthers(lock));
        EXPECT_TRUE(holder.TryAcquire());
        EXPECT_FALSE(FreeForOthers(lock));
    }
    EXPECT_TRUE(FreeForOthers(lock));
}

TEST(LockHolderTest, WithoutALockEverythingSucceeds) {
    EXPECT_EQ(FileSystemLock(), nullptr);
    LockHolder holder(FileSystemLock(), true);
    holder.Acquire();
    EXPECT_TRUE(holder.TryAcquire());
    holder.Release();
    EXPECT_TRUE(holder.TryAcquire());
}

TEST(EventTest, LetsOneWaiterThroughUntilClosed) {
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
        started.Set();
        finish.Wait(INFINITE);
        return 77;
    }
    Event started, finish;
};

TEST(ThreadTest, RunsItsBodyAndReportsItsEnd) {
    Worker worker;
    EXPECT_EQ(worker.Running(), 1);
    EXPECT_EQ(worker.Handle(), nullptr);
    worker.SetPriority(5);  // nothing to do yet
    ASSERT_EQ(worker.Start(), 1);
    EXPECT_EQ(worker.started.Wait(10000), WAIT_OBJECT_0);
    EXPECT_EQ(worker.Running(), 1);

    const int expected[] = {7, 5, 4, 3, 2, 1};
    for (int level = 0; level < 6; ++level) {
        worker.SetPriority(level);
        EXPECT_EQ(GetThreadPriority(worker.Handle()), expected[level]);
    }
    for (const int level : {-1, 6, 100}) {
        worker.SetPriority(level);
        EXPECT_EQ(GetThreadPriority(worker.Handle()), 1);
    }

    worker.finish.Set();
    EXPECT_EQ(WaitForSingleObject(worker.Handle(), 10000), WAIT_OBJECT_0);
    EXPECT_EQ(worker.Running(), 0);
    EXPECT_TRUE(CloseHandle(worker.Handle()));
}

}  // namespace
}  // namespace zelto
