#include <fcntl.h>
#include <fstream>
#include <random>
#include <sys/file.h>
#include <vector>

#include "tests/platform/shared_objects.h"

namespace zelto::test {
namespace {

using StoreTest = SharedObjects;

// Every shared operation in turn, for ever.
int HammerTheStore(unsigned seed) {
    std::mt19937 random(seed);
    const std::string text(random() % 1024 + 1, 'h');
    const std::u16string names[] = {u"a", u"b", u"c"};
    for (;;) {
        const std::u16string& name = names[random() % 3];
        const DWORD flags = random() % 2 == 0 ? DWORD{MSGQUEUE_ALLOW_BROKEN} : 0;
        HANDLE writer = OpenQueue(name.c_str(), false, flags, 5);
        HANDLE reader = OpenQueue(name.c_str(), true, flags, 5);
        WriteText(writer, text);
        WriteText(writer, text, 0, MSGQUEUE_MSGALERT);
        ReadText(reader);
        HWND window = CreateWindowExW(0, TEXT("hammer"), nullptr, 0, 0, 0, 0, 0, nullptr, nullptr,
                                      nullptr, nullptr);
        PostMessageW(FindWindowW(TEXT("hammer"), nullptr), WM_USER, 0, 0);
        HANDLE event = CreateEventW(nullptr, FALSE, FALSE, TEXT("hammer"));
        EventModify(event, EVENT_SET);
        CloseHandle(event);
        DestroyWindow(window);
        CloseMsgQueue(reader);
        CloseMsgQueue(writer);
    }
}

TEST_F(StoreTest, ProcessesKilledAtAnyInstantLeaveNothing) {
    constexpr int kRounds = 150;
    std::mt19937 random(20260101);
    const auto pause_up_to = [&random](unsigned microseconds) {
        usleep(static_cast<useconds_t>(random() % microseconds));
    };
    for (int round = 0; round < kRounds; ++round) {
        const unsigned seed = static_cast<unsigned>(random());
        const pid_t first = Fork([seed] { return HammerTheStore(seed); });
        const pid_t second = Fork([seed] { return HammerTheStore(seed + 1); });
        pause_up_to(4000);  // lets them reach some instant
        kill(first, SIGKILL);
        pause_up_to(300);
        Kill(second);
        waitpid(first, nullptr, 0);

        const coredll::StoreReport report = Report();
        ASSERT_EQ(report.processes.size(), 1u) << "round " << round;
        ASSERT_TRUE(report.windows.empty()) << "round " << round;
        ASSERT_TRUE(report.queues.empty()) << "round " << round;
        ASSERT_TRUE(report.events.empty()) << "round " << round;
        ASSERT_EQ(report.committed_message_memory, 0u) << "round " << round;
    }
    // All message memory is there still, and messages come through whole.
    std::vector<HANDLE> queues;
    while (HANDLE queue = OpenQueue(nullptr, false))
        queues.push_back(queue);
    EXPECT_EQ(queues.size(), Report().message_memory / (21 * 5 * 256))
        << "20 messages and the alert";
    for (HANDLE queue : queues)
        CloseMsgQueue(queue);
}

TEST_F(StoreTest, EventsThatSomebodyHoldsOutliveAKilledProcess) {
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

// The next user of a dead process's slot was killed too, in the middle of taking it.
TEST_F(StoreTest, ASlotTakenTwiceByTheDeadIsSwept) {
    coredll::Store* store = coredll::OpenStore();
    const pid_t child = Fork([] {
        CreateWindowExW(0, TEXT("w"), nullptr, 0, 0, 0, 0, 0, nullptr, nullptr, nullptr, nullptr);
        return pause();
    });
    while (Report().windows.empty())
        usleep(1000);
    const uint32_t slot = store->windows[0].owner.Slot();
    Kill(child);
    store->processes[slot].use.fetch_add(coredll::kSlotPhases - coredll::kSlotLive +
                                         coredll::kSlotUnswept);
    EXPECT_TRUE(Report().windows.empty());
    EXPECT_EQ(Report().processes.size(), 1u);
}

TEST_F(StoreTest, AChildByForkIsAProcessOfItsOwn) {
    HANDLE reader = OpenQueue(TEXT("q"), true);
    const pid_t child = Fork([reader] {
        const bool parents_handle_is_nothing = ReadText(reader) == "error 6";
        return parents_handle_is_nothing && Report().processes.size() == 2 ? 0 : 1;
    });
    EXPECT_EQ(ExitStatus(child), 0);
    EXPECT_EQ(Report().queues.size(), 1u) << "the parent's end is still open";
}

TEST_F(StoreTest, ClosingGivesEverythingBack) {
    OpenQueue(TEXT("q"), true);
    CreateEventW(nullptr, FALSE, FALSE, TEXT("e"));
    coredll::CloseStore();
    const coredll::StoreReport report = Report();
    EXPECT_TRUE(report.queues.empty());
    EXPECT_TRUE(report.events.empty());
    EXPECT_EQ(report.processes.size(), 1u);
}

TEST_F(StoreTest, TheFileIsSmallAndHasAllItsBlocksFromTheStart) {
    OpenQueue(TEXT("q"), true);
    struct stat status {};
    ASSERT_EQ(stat((device_.Device() + "/store").c_str(), &status), 0);
    EXPECT_LT(status.st_size, 8 << 20);
    EXPECT_GE(status.st_blocks * 512, status.st_size) << "a write to the mapping needs no room";
    EXPECT_EQ(status.st_mode & 0777, 0600u);
}

// A file in use is lost: nobody ends, all calls fail, and the next program gets a fresh store.
TEST_F(StoreTest, LosingTheFileInUseFailsEveryCallAndNoMore) {
    const std::string path = device_.Device() + "/store";
    const std::function<void()> losses[] = {
        [&] { EXPECT_EQ(truncate(path.c_str(), 0), 0); },
        [&] { EXPECT_EQ(truncate(path.c_str(), 100000), 0); },
        [&] { EXPECT_EQ(unlink(path.c_str()), 0); },
    };
    for (const auto& lose : losses) {
        HANDLE queue = OpenQueue(TEXT("q"), true);
        HANDLE event = CreateEventW(nullptr, FALSE, FALSE, TEXT("e"));
        ASSERT_NE(queue, nullptr);
        lose();
        usleep(120'000);  // by then the file is looked at again
        EXPECT_EQ(ReadText(queue), "error 6");
        EXPECT_EQ(WaitForSingleObject(event, 0), DWORD{WAIT_FAILED});
        EXPECT_EQ(OpenQueue(TEXT("r"), true), nullptr);
        EXPECT_EQ(GetLastError(), ERROR_ACCESS_DENIED);
        EXPECT_EQ(FindWindowW(TEXT("w"), nullptr), nullptr);
        EXPECT_NE(coredll::StoreProblem(), "");
        coredll::CloseStore();
        EXPECT_EQ(coredll::StoreProblem(), "");
        EXPECT_TRUE(Report().queues.empty());
        coredll::CloseStore();
    }
}

// What a stopped holder of a lock costs the others: a bounded wait and a sentence that names it.
TEST_F(StoreTest, AStoppedHolderOfALockIsNamedAndNotWaitedForLong) {
    coredll::Store* store = coredll::OpenStore();
    HANDLE queue = OpenQueue(TEXT("q"), true);
    const pid_t child = Fork([] { return Report().processes.size() == 2 ? pause() : 1; });
    while (Report().processes.size() < 2)
        usleep(1000);
    kill(child, SIGSTOP);
    uint32_t slot = 0;
    while (store->processes[slot].pid != static_cast<uint32_t>(child))
        ++slot;
    store->lock.store(coredll::UserOf(*store, slot).Word());
    EXPECT_EQ(ReadText(queue), "error 170");
    EXPECT_EQ(ReadText(queue), "error 170") << "from now on at once";
    coredll::StoreReport report;
    std::string why;
    EXPECT_FALSE(coredll::DescribeStore(report, &why));
    EXPECT_NE(why.find("Process " + std::to_string(child)), std::string::npos) << why;
    Kill(child);
    EXPECT_EQ(ReadText(queue), "error 1460") << "the lock of a dead one is taken over";

    // The same for one that was stopped while it connected.
    coredll::CloseStore();
    const int file = open((device_.Device() + "/store").c_str(), O_RDWR);
    ASSERT_EQ(flock(file, LOCK_EX), 0);
    why = coredll::StoreProblem();
    EXPECT_NE(why.find("Process " + std::to_string(getpid())), std::string::npos) << why;
    close(file);
    EXPECT_EQ(coredll::StoreProblem(), "");
}

TEST_F(StoreTest, AnotherNamespaceOrStartIsRefusedWhileSomebodyUsesTheStore) {
    const auto seen_by_a_child = [](const char* words) {
        return ExitStatus(Fork([words] {
            const std::string why = coredll::StoreProblem();
            return why.empty() ? 0 : why.find(words) != std::string::npos ? 1 : 2;
        }));
    };
    for (const char* words : {"namespace", "before the host started"}) {
        ASSERT_EQ(coredll::StoreProblem(), "");
        coredll::Store* store = coredll::OpenStore();
        (words[0] == 'n' ? store->pid_namespace[0] : reinterpret_cast<uint32_t&>(store->boot_id)) ^=
            1;
        EXPECT_EQ(seen_by_a_child(words), 1);
        EXPECT_EQ(Report().processes.size(), 1u) << "nobody was swept";
        coredll::CloseStore();
        EXPECT_EQ(seen_by_a_child(words), 0) << "with all users gone it is made anew";
    }
}

// Files in the store's place, and what the refusal says of them.
TEST_F(StoreTest, AStoreThatIsNotOursIsRefusedWithAdvice) {
    const std::string path = device_.Device() + "/store";
    ASSERT_TRUE(coredll::StoreProblem().empty());
    coredll::CloseStore();
    struct Case {
        const char* what;
        std::function<void()> damage;
        const char* said;
    };
    const auto poke = [&](off_t place, const std::string& bytes) {
        const int file = open(path.c_str(), O_RDWR);
        EXPECT_EQ(pwrite(file, bytes.data(), bytes.size(), place),
                  static_cast<ssize_t>(bytes.size()));
        close(file);
    };
    const Case cases[] = {
        {"foreign", [&] { poke(0, "SOMEBODY"); }, "not made by this system"},
        {"a text file", [&] { std::ofstream(path, std::ios::trunc) << "hello, hello, hello"; },
         "not made by this system"},
        {"open to others", [&] { chmod(path.c_str(), 0644); }, "open to other users"},
        {"a link", [&] { EXPECT_EQ(symlink("/dev/null", path.c_str()), 0); }, "cannot be opened"},
        {"a folder", [&] { mkdir(path.c_str(), 0700); }, "cannot be opened"},
    };
    for (const Case& c : cases) {
        std::filesystem::remove_all(path);
        const std::string what = c.what;
        if (what != "a link" && what != "a folder") {
            ASSERT_TRUE(coredll::StoreProblem().empty());
            coredll::CloseStore();
        }
        c.damage();
        EXPECT_NE(coredll::StoreProblem().find(c.said), std::string::npos)
            << c.what << ": " << coredll::StoreProblem();
        EXPECT_EQ(FindWindowW(TEXT("w"), nullptr), nullptr) << c.what;
        SetLastError(kMarker);
        EXPECT_EQ(OpenQueue(TEXT("q"), true), nullptr) << c.what;
        EXPECT_EQ(GetLastError(), ERROR_ACCESS_DENIED) << c.what;
    }
    std::filesystem::remove_all(path);
    EXPECT_TRUE(coredll::StoreProblem().empty()) << "the advice works";
}

TEST_F(StoreTest, ADirectoryThatIsNotPrivateIsRefused) {
    struct Case {
        std::function<void()> damage;
        const char* said;
    };
    const std::string path = device_.Device();
    const Case cases[] = {
        {[&] { chmod(path.c_str(), 0755); }, "chmod 0700"},
        {[&] { std::filesystem::remove_all(path); }, "zeltoport device init"},
        {[&] { std::ofstream(path) << "x"; }, "not a directory"},
        {[&] {
             std::filesystem::remove_all(path);
             std::filesystem::create_directory_symlink("/tmp", path);
         },
         "links are not followed"},
        {[&] { setenv("ZELTO_DEVICE", "relative/path", 1); }, "full path"},
    };
    for (const Case& c : cases) {
        c.damage();
        EXPECT_NE(coredll::StoreProblem().find(c.said), std::string::npos)
            << coredll::StoreProblem();
    }
}

}  // namespace
}  // namespace zelto::test
