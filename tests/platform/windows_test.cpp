#include <vector>

#include "tests/platform/shared_objects.h"

namespace zelto::test {
namespace {

using Windows = SharedObjects;

HWND MakeWindow(LPCWSTR class_name, LPCWSTR title = nullptr) {
    return CreateWindowExW(0, class_name, title, 0, 0, 0, 0, 0, nullptr, nullptr, nullptr, nullptr);
}

std::vector<UINT> TakeMessages(HWND window) {
    PostMessageW(window, WM_QUIT, 0, 0);
    std::vector<UINT> messages;
    for (MSG message{}; GetMessageW(&message, window, 0, 0) > 0;) {
        messages.push_back(message.message);
    }
    return messages;
}

TEST_F(Windows, AStaleHandleNamesNoNewWindow) {
    HWND window = MakeWindow(TEXT("Zelto"));
    EXPECT_TRUE(DestroyWindow(window));
    EXPECT_NE(MakeWindow(TEXT("Zelto")), window);
    EXPECT_FALSE(DestroyWindow(window));
}

TEST_F(Windows, MessagesArriveInOrderAndTheQueueHasAnEnd) {
    HWND window = MakeWindow(TEXT("w"));
    int posted = 0;
    while (PostMessageW(window, WM_USER, static_cast<WPARAM>(posted), -posted) != FALSE)
        ++posted;
    EXPECT_EQ(GetLastError(), ERROR_NOT_ENOUGH_QUOTA);
    EXPECT_EQ(posted, 1024);
    MSG message{};
    for (int i = 0; i < posted; ++i) {
        ASSERT_EQ(GetMessageW(&message, nullptr, 0, 0), 1);
        ASSERT_EQ(message.wParam, static_cast<WPARAM>(i));
        ASSERT_EQ(message.lParam, -i);
        ASSERT_EQ(message.hwnd, window);
    }
    EXPECT_EQ(GetMessageW(&message, window, WM_USER, WM_USER), -1);
    EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(GetMessageW(&message, reinterpret_cast<HWND>(2), 0, 0), -1);
    EXPECT_EQ(GetLastError(), ERROR_INVALID_WINDOW_HANDLE);
}

TEST_F(Windows, ShowingTellsTheOwnerWhatChanged) {
    HWND window = MakeWindow(TEXT("w"));
    ShowWindow(window, SW_SHOW);
    TakeMessages(window);
    EXPECT_TRUE(ShowWindow(window, SW_RESTORE));
    EXPECT_EQ(TakeMessages(window), std::vector<UINT>{}) << "nothing has changed";
    ShowWindow(window, SW_MINIMIZE);
    TakeMessages(window);
    const auto with_bit = reinterpret_cast<HWND>(reinterpret_cast<uintptr_t>(window) | 1);
    EXPECT_TRUE(SetForegroundWindow(with_bit));
    EXPECT_EQ(TakeMessages(window), (std::vector<UINT>{WM_SIZE, WM_ACTIVATE}));
    SetLastError(kMarker);
    EXPECT_FALSE(ShowWindow(nullptr, SW_SHOW));
    EXPECT_EQ(GetLastError(), ERROR_INVALID_WINDOW_HANDLE);
}

TEST_F(Windows, OfAnotherProcessCanBePostedToButNotDestroyed) {
    HWND window = MakeWindow(TEXT("parent"));
    const pid_t child = Fork([] {
        HWND parent = FindWindowW(TEXT("parent"), nullptr);
        const bool refused = DestroyWindow(parent) == FALSE && GetLastError() == 5;
        MSG message{};
        const bool not_ours = GetMessageW(&message, parent, 0, 0) == -1;
        return refused && not_ours && PostMessageW(parent, WM_USER, 15, 5) ? 0 : 1;
    });
    MSG message{};
    EXPECT_EQ(GetMessageW(&message, window, 0, 0), 1);
    EXPECT_EQ(message.lParam, 5);
    EXPECT_EQ(ExitStatus(child), 0);
}

TEST_F(Windows, OfAKilledProcessAreGoneAtOnce) {
    HANDLE ready = OpenQueue(TEXT("ready"), true);
    const pid_t child = Fork([] {
        MakeWindow(TEXT("child"));
        WriteText(OpenQueue(TEXT("ready"), false), "ready");
        pause();
        return 0;
    });
    ASSERT_EQ(ReadText(ready, 5000), "ready");
    HWND window = FindWindowW(TEXT("child"), nullptr);
    EXPECT_TRUE(PostMessageW(window, WM_USER, 0, 0));
    kill(child, SIGKILL);
    // Not waited for: a process that has ended but was not yet asked for counts as gone.
    siginfo_t info{};
    waitid(P_PID, static_cast<id_t>(child), &info, WEXITED | WNOWAIT);
    EXPECT_FALSE(PostMessageW(window, WM_USER, 0, 0));
    EXPECT_EQ(GetLastError(), ERROR_INVALID_WINDOW_HANDLE);
    EXPECT_EQ(FindWindowW(TEXT("child"), nullptr), nullptr);
    waitpid(child, nullptr, 0);
}

}  // namespace
}  // namespace zelto::test
