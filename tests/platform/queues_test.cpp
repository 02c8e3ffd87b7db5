#include <vector>

#include "tests/platform/shared_objects.h"

namespace zelto::test {
namespace {

using Queues = SharedObjects;

TEST_F(Queues, MessagesKeepOrderAndBoundsAndTheAlertGoesFirst) {
    HANDLE writer = OpenQueue(TEXT("q"), false, MSGQUEUE_ALLOW_BROKEN, 3, 700);
    HANDLE reader = OpenQueue(TEXT("q"), true);
    const std::string longest(700, 'x');
    SetLastError(kMarker);
    EXPECT_TRUE(WriteText(writer, "one"));
    EXPECT_TRUE(WriteText(writer, longest));
    EXPECT_TRUE(WriteText(writer, std::string("\0\n", 2)));
    EXPECT_EQ(GetLastError(), kMarker) << "success leaves the last error alone";
    EXPECT_FALSE(WriteText(writer, "full"));
    EXPECT_EQ(GetLastError(), ERROR_TIMEOUT);
    EXPECT_TRUE(WriteText(writer, "now", 0, MSGQUEUE_MSGALERT)) << "the alert has its own place";
    EXPECT_FALSE(WriteText(writer, "again", 0, MSGQUEUE_MSGALERT));
    EXPECT_FALSE(WriteText(writer, longest + "x"));
    EXPECT_EQ(GetLastError(), ERROR_INSUFFICIENT_BUFFER);

    EXPECT_EQ(ReadText(reader), "alert now");
    EXPECT_EQ(ReadText(reader), "one");
    EXPECT_EQ(ReadText(reader), longest);
    EXPECT_EQ(ReadText(reader), std::string("\0\n", 2));
    EXPECT_EQ(ReadText(reader), "error 1460");
}

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

TEST_F(Queues, WithoutAllowBrokenASideThatLeavesBreaksTheQueue) {
    HANDLE reader = OpenQueue(TEXT("q"), true, 0);
    EXPECT_EQ(ReadText(reader), "error 233") << "nobody writes yet";
    HANDLE writer = OpenQueue(TEXT("q"), false, 0);
    EXPECT_EQ(ReadText(reader), "error 1460") << "a queue without a peer is not spoilt";
    WriteText(writer, "lost");
    CloseMsgQueue(reader);
    EXPECT_FALSE(WriteText(writer, "x"));
    EXPECT_EQ(GetLastError(), ERROR_PIPE_NOT_CONNECTED);
    HANDLE again = OpenQueue(TEXT("q"), true, 0);
    EXPECT_EQ(GetLastError(), ERROR_SUCCESS) << "the name makes a queue of its own again";
    EXPECT_FALSE(WriteText(writer, "x")) << "the old handle stays useless";
    CloseMsgQueue(writer);
    CloseMsgQueue(again);
    EXPECT_TRUE(Report().queues.empty());
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

TEST_F(Queues, ABlockedReaderIsWokenByAnotherProcess) {
    HANDLE reader = OpenQueue(TEXT("q"), true);
    const pid_t child = Fork([] {
        HANDLE writer = OpenQueue(TEXT("q"), false);
        return WriteText(writer, "from afar") ? 0 : 1;
    });
    EXPECT_EQ(ReadText(reader, 5000), "from afar");
    EXPECT_EQ(ExitStatus(child), 0);
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

TEST_F(Queues, ADeadProcessesMessagesDoNotPassForOurs) {
    HANDLE reader = OpenQueue(TEXT("q"), true);
    const pid_t child = Fork([] {
        WriteText(OpenQueue(TEXT("only mine"), false), "stale");
        WriteText(OpenQueue(TEXT("q"), false), "ready");
        pause();
        return 0;
    });
    ASSERT_EQ(ReadText(reader, 5000), "ready");
    Kill(child);
    HANDLE writer = OpenQueue(TEXT("only mine"), false);
    EXPECT_EQ(GetLastError(), ERROR_SUCCESS);
    EXPECT_NE(writer, nullptr);
    EXPECT_EQ(ReadText(OpenQueue(TEXT("only mine"), true)), "error 1460");
}

}  // namespace
}  // namespace zelto::test
