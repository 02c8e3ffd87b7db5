#include <vector>

#include "tests/platform/shared_objects.h"

namespace zelto::test {
namespace {

using Events = SharedObjects;

TEST_F(Events, NamesAreSharedAndFreedWithTheLastHandle) {
    HANDLE first = CreateEventW(nullptr, FALSE, TRUE, TEXT("e"));
    EXPECT_EQ(GetLastError(), ERROR_SUCCESS);
    HANDLE second = CreateEventW(nullptr, TRUE, FALSE, TEXT("e"));
    EXPECT_EQ(GetLastError(), ERROR_ALREADY_EXISTS);
    EXPECT_NE(first, second);
    EXPECT_EQ(WaitForSingleObject(second, 0), WAIT_OBJECT_0);
    EXPECT_EQ(WaitForSingleObject(first, 0), WAIT_TIMEOUT) << "the first creator's kind holds";
    CloseHandle(first);
    EXPECT_EQ(Report().events.size(), 1u);
    CloseHandle(second);
    EXPECT_TRUE(Report().events.empty());
    // A queue may carry an event's name.
    EXPECT_NE(OpenQueue(TEXT("e"), true), nullptr);
    EXPECT_EQ(GetLastError(), ERROR_SUCCESS);
}

TEST_F(Events, AnotherProcessReleasesAWait) {
    HANDLE event = CreateEventW(nullptr, FALSE, FALSE, TEXT("EventZeltoAPI"));
    const pid_t child = Fork([] {
        HANDLE same = CreateEventW(nullptr, FALSE, FALSE, TEXT("EventZeltoAPI"));
        return EventModify(same, EVENT_SET) ? 0 : 1;
    });
    EXPECT_EQ(WaitForSingleObject(event, 5000), WAIT_OBJECT_0);
    EXPECT_EQ(ExitStatus(child), 0);
}

TEST_F(Events, ThoseThatSomebodyHoldsOutliveAKilledProcess) {
    CreateEventW(nullptr, FALSE, FALSE, TEXT("first"));
    HANDLE ready = CreateEventW(nullptr, FALSE, FALSE, TEXT("ready"));
    const pid_t child = Fork([] {
        CreateEventW(nullptr, FALSE, FALSE, TEXT("first"));
        CreateEventW(nullptr, FALSE, FALSE, TEXT("lost"));
        EventModify(CreateEventW(nullptr, FALSE, FALSE, TEXT("ready")), EVENT_SET);
        pause();
        return 0;
    });
    EXPECT_EQ(WaitForSingleObject(ready, 5000), WAIT_OBJECT_0);
    HANDLE last = CreateEventW(nullptr, TRUE, TRUE, TEXT("last"));
    Kill(child);
    std::vector<std::u16string> names;
    for (const coredll::EventReport& event : Report().events)
        names.push_back(event.name);
    EXPECT_EQ(names, (std::vector<std::u16string>{u"first", u"ready", u"last"}));
    EXPECT_EQ(WaitForSingleObject(last, 0), WAIT_OBJECT_0);
}

}  // namespace
}  // namespace zelto::test
