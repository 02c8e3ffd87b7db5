#include "platform/coredll/linux/objects/waiting.h"

#include <chrono>

#include "tests/platform/shared_objects.h"

namespace zelto::test {
namespace {

using Waiting = SharedObjects;

// One of two processes that take turns.
struct Side {
    std::function<void()> announce;  // ends the other side's `await`
    std::function<void()> await;
};

Side EventSide(LPCWSTR own, LPCWSTR other) {
    HANDLE mine = CreateEventW(nullptr, FALSE, FALSE, own);
    HANDLE theirs = CreateEventW(nullptr, FALSE, FALSE, other);
    return {[theirs] { EventModify(theirs, EVENT_SET); },
            [mine] { WaitForSingleObject(mine, INFINITE); }};
}

Side QueueSide(LPCWSTR own, LPCWSTR other) {
    HANDLE reader = OpenQueue(own, true);
    HANDLE writer = OpenQueue(other, false);
    return {[writer] { WriteText(writer, "x"); }, [reader] { ReadText(reader, INFINITE); }};
}

Side WindowSide(LPCWSTR own, LPCWSTR other) {
    HWND window =
        CreateWindowExW(0, own, nullptr, 0, 0, 0, 0, 0, nullptr, nullptr, nullptr, nullptr);
    return {[other] {
                while (PostMessageW(FindWindowW(other, nullptr), WM_USER, 0, 0) == FALSE)
                    usleep(1000);
            },
            [window] {
                MSG message;
                GetMessageW(&message, window, 0, 0);
            }};
}

// A sleeper looks for itself each quarter of a second. Turns that needed that would take seconds.
TEST_F(Waiting, SleepersAreWoken) {
    constexpr int kTurns = 20;
    constexpr useconds_t kAsleepBy = 1000;
    using Clock = std::chrono::steady_clock;
    coredll::SetSpinLimit(0);
    for (const auto open_side : {EventSide, QueueSide, WindowSide}) {
        const Side side = open_side(TEXT("one"), TEXT("two"));
        const Clock::time_point start = Clock::now();
        const pid_t child = Fork([&] {
            const Side other = open_side(TEXT("two"), TEXT("one"));
            for (int turn = 0; turn < kTurns; ++turn) {
                other.await();
                usleep(kAsleepBy);
                other.announce();
            }
            return 0;
        });
        for (int turn = 0; turn < kTurns; ++turn) {
            usleep(kAsleepBy);
            side.announce();
            side.await();
        }
        EXPECT_EQ(ExitStatus(child), 0);
        EXPECT_LT(Clock::now() - start, std::chrono::seconds(2));
    }
    coredll::SetSpinLimit(coredll::kDefaultSpinMicroseconds);
}

}  // namespace
}  // namespace zelto::test
