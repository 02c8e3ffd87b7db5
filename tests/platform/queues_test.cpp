#include <vector>

#include "tests/platform/shared_objects.h"

namespace zelto::test {
namespace {

using Queues = SharedObjects;

// Sizes whose blocks do not count in 32 bits.
TEST_F(Queues, MessagesBeyondTheStoreAreRefused) {
    for (const DWORD size : {0xFFFFFFF0u, 0xFFFFFFFFu, 240u * 16384 + 1}) {
        EXPECT_EQ(OpenQueue(TEXT("q"), false, MSGQUEUE_ALLOW_BROKEN, 1, size), nullptr) << size;
        EXPECT_EQ(GetLastError(), ERROR_OUTOFMEMORY) << size;
        HANDLE writer =
            OpenQueue(nullptr, false, MSGQUEUE_ALLOW_BROKEN | MSGQUEUE_NOPRECOMMIT, 1, size);
        char byte = 0;
        EXPECT_FALSE(WriteMsgQueue(writer, &byte, size, 0, 0)) << size;
        EXPECT_EQ(GetLastError(), ERROR_OUTOFMEMORY) << size;
        CloseMsgQueue(writer);
    }
}

TEST_F(Queues, WithAllowBrokenTheContentsStayUntilTheLastHandle) {
    HANDLE writer = OpenQueue(TEXT("q"), false);
    WriteText(writer, "kept");
    HANDLE reader = OpenQueue(TEXT("q"), true, 0);
    CloseMsgQueue(writer);
    EXPECT_EQ(ReadText(reader), "kept");
    EXPECT_EQ(ReadText(reader), "error 1460") << "the creator's flags stay in force";
    CloseMsgQueue(reader);
    EXPECT_EQ(Report().committed_message_memory, 0u);
}

TEST_F(Queues, MemoryIsPromisedAtCreationOrTakenPerMessage) {
    std::vector<HANDLE> queues;
    for (HANDLE queue = nullptr;; queues.push_back(queue)) {
        SetLastError(kMarker);
        queue = OpenQueue(nullptr, false, MSGQUEUE_ALLOW_BROKEN, 20, 1024);
        if (queue == nullptr)
            break;
    }
    EXPECT_EQ(GetLastError(), ERROR_OUTOFMEMORY);
    EXPECT_GT(queues.size(), 100u);
    const std::string message(1024, 'm');
    for (int i = 0; i < 20; ++i)
        EXPECT_TRUE(WriteText(queues.back(), message));
    for (HANDLE queue : queues)
        CloseMsgQueue(queue);

    HANDLE unlimited = OpenQueue(TEXT("u"), false, MSGQUEUE_ALLOW_BROKEN, 0, 1u << 20);
    const std::string large(1u << 20, 'l');
    int written = 0;
    while (WriteText(unlimited, large))
        ++written;
    EXPECT_EQ(GetLastError(), ERROR_OUTOFMEMORY);
    EXPECT_EQ(written, 3);
    EXPECT_EQ(ReadText(OpenQueue(TEXT("u"), true), 0, 1u << 20), large);
    EXPECT_TRUE(WriteText(unlimited, large)) << "the memory of a message read is free again";
}

TEST_F(Queues, ABlockedWriterIsWokenByRoom) {
    HANDLE writer = OpenQueue(TEXT("q"), false, MSGQUEUE_ALLOW_BROKEN, 1);
    WriteText(writer, "first");
    const pid_t child =
        Fork([] { return ReadText(OpenQueue(TEXT("q"), true), 0) == "first" ? 0 : 1; });
    EXPECT_TRUE(WriteText(writer, "second", 5000));
    EXPECT_EQ(ExitStatus(child), 0);
}

TEST_F(Queues, AKilledWriterEndsAWaitThatNeedsIt) {
    HANDLE reader = OpenQueue(TEXT("q"), true, 0);
    HANDLE ready = OpenQueue(TEXT("ready"), true);
    const pid_t child = Fork([] {
        HANDLE writer = OpenQueue(TEXT("q"), false, 0);
        WriteText(OpenQueue(TEXT("ready"), false), "ready");
        pause();
        return writer == nullptr;
    });
    ASSERT_EQ(ReadText(ready, 5000), "ready");
    Kill(child);
    EXPECT_EQ(ReadText(reader, INFINITE), "error 233");
}

}  // namespace
}  // namespace zelto::test
