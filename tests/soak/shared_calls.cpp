#include "tests/soak/shared_calls.h"

#include <string>
#include <thread>
#include <unistd.h>

#include "platform/coredll/coredll.h"
#include "tests/support/temp_device.h"

namespace zelto::soak {
namespace {

constexpr DWORD kShortWait = 10;  // milliseconds
constexpr double kTooLong = 1;    // seconds

// Times calls and counts the failed ones. After one that took too long the rest is not made.
class Caller {
  public:
    explicit Caller(Longest& longest) : longest_(longest) {}

    template <class Call>
    auto operator()(Call call) -> decltype(call()) {
        if (stopped_)
            return {};
        const Stopwatch watch;
        const auto result = call();
        longest_.Take(watch.Seconds());
        stopped_ = watch.Seconds() > kTooLong;
        failed_ += result ? 0 : 1;
        return result;
    }
    bool Stopped() const { return stopped_; }
    int Failed() const { return failed_; }

  private:
    Longest& longest_;
    bool stopped_ = false;
    int failed_ = 0;
};

HANDLE OpenQueue(LPCWSTR name, bool read, DWORD flags) {
    const MSGQUEUEOPTIONS options{sizeof options, flags, 4, 1000, read};
    return CreateMsgQueue(name, &options);
}

HWND OpenWindow(LPCWSTR name) {
    return CreateWindowExW(0, name, TEXT("title"), WS_VISIBLE, 0, 0, 0, 0, nullptr, nullptr,
                           nullptr, nullptr);
}

bool Write(HANDLE queue, DWORD size, DWORD flags) {
    static const char bytes[1000] = {};
    return WriteMsgQueue(queue, bytes, size, kShortWait, flags) != FALSE;
}

bool Read(HANDLE queue) {
    char bytes[1000];
    DWORD size = 0;
    DWORD flags = 0;
    return ReadMsgQueue(queue, bytes, sizeof bytes, &size, kShortWait, &flags) != FALSE;
}

// Both ends of a queue in turn; a nameless one has its writer alone.
void CallQueues(Caller& call, LPCWSTR name, DWORD flags) {
    HANDLE writer = call([&] { return OpenQueue(name, false, flags); });
    call([&] { return Write(writer, 700, 0); });
    call([&] { return Write(writer, 1, MSGQUEUE_MSGALERT); });
    if (name != nullptr) {
        HANDLE reader = call([&] { return OpenQueue(name, true, flags); });
        call([&] { return Read(reader); });
        call([&] { return Read(reader); });
        call([&] { return CloseMsgQueue(reader); });
    }
    call([&] { return CloseMsgQueue(writer); });
}

void CallEvents(Caller& call, LPCWSTR name) {
    HANDLE event = call([&] { return CreateEventW(nullptr, FALSE, FALSE, name); });
    call([&] { return EventModify(event, EVENT_SET); });
    call([&] { return WaitForSingleObject(event, kShortWait) == WAIT_OBJECT_0; });
    call([&] { return EventModify(event, EVENT_RESET); });
    call([&] { return CloseHandle(event); });
}

// A thread takes the window's messages until the window goes.
void CallWindows(Caller& call, LPCWSTR name) {
    HWND window = call([&] { return OpenWindow(name); });
    std::thread taker([window] {
        MSG message;
        while (GetMessageW(&message, window, 0, 0) >= 0) {
        }
    });
    HWND found = call([&] { return FindWindowW(name, TEXT("title")); });
    call([&] { return PostMessageW(found, WM_USER, 1, 2); });
    call([&] { return ShowWindow(found, SW_MINIMIZE) != FALSE; });
    call([&] { return SetForegroundWindow(found); });
    call([&] { return DestroyWindow(window); });
    call([&] {
        taker.join();
        return true;
    });
    if (taker.joinable())
        taker.detach();  // the process is about to end
}

}  // namespace

int MakeEveryCall(Longest& longest) {
    // What others take part in may fail on a sound device too.
    Caller shared(longest);
    CallQueues(shared, TEXT("left"), MSGQUEUE_ALLOW_BROKEN);
    CallEvents(shared, TEXT("left"));
    CallWindows(shared, TEXT("left"));
    if (shared.Stopped())
        return 1;
    Caller own(longest);
    const std::u16string name = test::WideFromUtf8("own" + std::to_string(getpid()));
    CallQueues(own, name.c_str(), MSGQUEUE_ALLOW_BROKEN);
    CallQueues(own, nullptr, MSGQUEUE_NOPRECOMMIT | MSGQUEUE_ALLOW_BROKEN);
    CallEvents(own, name.c_str());
    CallWindows(own, name.c_str());
    return own.Failed();
}

void LeaveObjects() {
    OpenQueue(TEXT("left"), true, MSGQUEUE_ALLOW_BROKEN);
    HANDLE writer = OpenQueue(TEXT("left"), false, MSGQUEUE_ALLOW_BROKEN);
    Write(writer, 1000, 0);
    Write(writer, 300, 0);
    Write(writer, 5, MSGQUEUE_MSGALERT);
    HANDLE loose = OpenQueue(TEXT("loose"), false, MSGQUEUE_NOPRECOMMIT | MSGQUEUE_ALLOW_BROKEN);
    Write(loose, 900, 0);
    CreateEventW(nullptr, TRUE, TRUE, TEXT("left"));
    HWND window = OpenWindow(TEXT("left"));
    PostMessageW(window, WM_USER, 1, 2);
    OpenWindow(TEXT("other"));
}

}  // namespace zelto::soak
