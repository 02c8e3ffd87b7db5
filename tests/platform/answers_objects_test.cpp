// Queues, events, windows, the registry, threads and times.

#include <memory>

#include "tests/platform/answers.h"
#include "tests/support/temp_device.h"

namespace zelto::test {
namespace {

// What programs of one device share; one device for all of these, so names are of one test each.
class PlatformObjects : public testing::Test {
  protected:
    static void SetUpTestSuite() { device_ = std::make_unique<TempDevice>(); }
    static void TearDownTestSuite() { device_.reset(); }

    static std::string Close(HANDLE handle) {
        SetLastError(kUntouched);
        return Answer(CloseHandle(handle));
    }
    static std::string Wait(HANDLE handle, DWORD timeout = 0) {
        SetLastError(kUntouched);
        return Answer(static_cast<int32_t>(WaitForSingleObject(handle, timeout)));
    }

    inline static std::unique_ptr<TempDevice> device_;
};

TEST_F(PlatformObjects, MessageQueues) {
    HANDLE reader = nullptr, writer = nullptr, lone = nullptr, other = nullptr, unused = nullptr;
    const auto create = [](LPCWSTR name, MSGQUEUEOPTIONS options, HANDLE& queue) {
        SetLastError(kUntouched);
        queue = CreateMsgQueue(name, &options);
        return Answer(queue != nullptr);
    };
    const auto write = [](HANDLE queue, const char* text, size_t size, DWORD flags = 0) {
        SetLastError(kUntouched);
        return Answer(WriteMsgQueue(queue, text, static_cast<DWORD>(size), 0, flags));
    };
    const auto read = [](HANDLE queue, DWORD size) {
        char buffer[16];
        DWORD count = 99, flags = 99;
        SetLastError(kUntouched);
        const BOOL result = ReadMsgQueue(queue, buffer, size, &count, 0, &flags);
        const std::string text(buffer, count);
        return Answer(result, text + (flags == MSGQUEUE_MSGALERT ? " alert" : ""));
    };
    const std::u16string longest(259, u'n'), too_long(260, u'n');
    constexpr DWORD kBroken = MSGQUEUE_ALLOW_BROKEN;
    char byte = 0;
    DWORD count = 0;
    CheckRows({
        {CALL(create(u"q", {20, kBroken, 2, 4, FALSE}, writer)), "1 error 0"},
        {CALL(create(u"q", {20, 0, 9, 9, TRUE}, reader)), "1 error 183"},
        {CALL(create(u"Q", {20, 0, 9, 9, TRUE}, unused)), "1 error 0"},
        {CALL(create(u"", {20, 0, 9, 9, TRUE}, unused)), "1 error 0"},
        {CALL(create(longest.c_str(), {20, 0, 9, 9, TRUE}, unused)), "1 error 0"},
        {CALL(create(too_long.c_str(), {20, 0, 9, 9, TRUE}, unused)), "0 error 87"},
        {CALL(create(u"bad", {19, 0, 9, 9, TRUE}, unused)), "0 error 87"},
        {CALL(create(u"bad", {20, 4, 9, 9, TRUE}, unused)), "0 error 87"},
        {CALL(create(u"bad", {20, 0, 9, 0, TRUE}, unused)), "0 error 87"},
        {CALL(read(reader, 8)), "0 error 1460"},
        {CALL(write(writer, "abcd", 4)), "1"},
        {CALL(write(writer, "abcde", 5)), "0 error 122"},
        {CALL(write(writer, "e\0", 2)), "1"},
        {CALL(write(writer, "f", 1)), "0 error 1460"},
        {CALL(write(writer, "now", 3, MSGQUEUE_MSGALERT)), "1"},
        {CALL(write(writer, "more", 4, MSGQUEUE_MSGALERT)), "0 error 1460"},
        {CALL(read(reader, 8)), "1 now alert"},
        {CALL(read(reader, 3)), "0 error 122 abc"},
        {CALL(read(reader, 8)), std::string("1 e\0", 4)},
        {CALL(write(writer, nullptr, 5)), "1", "no message: none is stored"},
        {CALL(read(reader, 8)), "0 error 1460"},
        {CALL(write(writer, "", 0)), "0 error 87"},
        {CALL(write(writer, "x", 1, 2)), "0 error 87"},
        {CALL(All({write(reader, "x", 1), write(reader, nullptr, 1)})), "0 error 6, 0 error 6"},
        {CALL(read(writer, 8)), "0 error 6"},
        {CALL(Answer(ReadMsgQueue(reader, nullptr, 1, &count, 0, nullptr))), "0 error 87"},
        {CALL(Answer(ReadMsgQueue(reader, &byte, 1, nullptr, 0, nullptr))), "0 error 87"},
        {CALL(All({Close(reader), Close(reader), read(reader, 8)})), "1, 0 error 6, 0 error 6"},
        {CALL(write(writer, "x", 1)), "1"},
        {CALL(create(u"r", {20, 0, 2, 4, TRUE}, lone)), "1 error 0"},
        {CALL(read(lone, 8)), "0 error 233"},
        {CALL(create(u"r", {20, 0, 2, 4, FALSE}, other)), "1 error 183"},
        {CALL(read(lone, 8)), "0 error 1460"},
        {CALL(All({Close(lone), write(other, "x", 1)})), "1, 0 error 233"},
        {CALL(create(u"r", {20, 0, 2, 4, TRUE}, unused)), "1 error 0", "the name is free again"},
        {CALL(write(other, "x", 1)), "0 error 233"},
        {CALL(Answer(CreateMsgQueue(u"bad", nullptr) != nullptr)), "0 error 87"},
    });
}

TEST_F(PlatformObjects, Events) {
    HANDLE event = nullptr, manual = nullptr, first = nullptr, second = nullptr, unused = nullptr;
    const auto create = [](BOOL by_hand, BOOL set, LPCWSTR name, HANDLE& made) {
        SetLastError(kUntouched);
        made = CreateEventW(nullptr, by_hand, set, name);
        return Answer(made != nullptr);
    };
    const auto modify = [](HANDLE which, DWORD operation) {
        SetLastError(kUntouched);
        return Answer(EventModify(which, operation));
    };
    const std::u16string too_long(260, u'e');
    const MSGQUEUEOPTIONS queue{20, 0, 9, 9, TRUE};
    CheckRows({
        {CALL(create(FALSE, FALSE, nullptr, event)), "1 error 0"},
        {CALL(All({Wait(event), Wait(event, 1)})), "258, 258"},
        {CALL(All({modify(event, EVENT_SET), modify(event, EVENT_SET)})), "1, 1"},
        {CALL(All({Wait(event), Wait(event)})), "0, 258"},
        {CALL(All({modify(event, EVENT_SET), modify(event, EVENT_RESET), Wait(event)})),
         "1, 1, 258"},
        {CALL(create(TRUE, TRUE, nullptr, manual)), "1 error 0"},
        {CALL(All({Wait(manual), Wait(manual)})), "0, 0"},
        {CALL(create(FALSE, TRUE, u"e", first)), "1 error 0"},
        {CALL(create(TRUE, FALSE, u"e", second)), "1 error 183"},
        {CALL(All({Wait(second), Wait(first)})), "0, 258"},
        {CALL(create(FALSE, TRUE, u"E", unused)), "1 error 0"},
        {CALL(All({Close(first), create(FALSE, TRUE, u"e", unused)})), "1, 1 error 183"},
        {CALL(All({Close(second), Close(unused), create(FALSE, TRUE, u"e", unused)})),
         "1, 1, 1 error 0"},
        {CALL(Answer(CreateMsgQueue(u"e", &queue) != nullptr)), "1 error 0", "names of their own"},
        {CALL(create(FALSE, TRUE, too_long.c_str(), unused)), "0 error 87"},
        {CALL(create(FALSE, TRUE, u"a\\b", unused)), "0 error 87"},
        {CALL(modify(event, 4)), "0 error 87"},
        {CALL(modify(event, 1)), "0 error 87", "pulsing is not offered"},
        {CALL(All({Close(event), Close(event)})), "1, 0 error 6"},
        {CALL(All({Wait(event), modify(event, EVENT_SET)})), "-1 error 6, 0 error 6"},
        {CALL(All({Wait(nullptr), Close(INVALID_HANDLE_VALUE)})), "-1 error 6, 0 error 6"},
    });
}

TEST_F(PlatformObjects, Windows) {
    HWND window = nullptr;
    const auto make = [&window](LPCWSTR class_name, LPCWSTR title) {
        SetLastError(kUntouched);
        HWND made = CreateWindowExW(0, class_name, title, WS_VISIBLE, 0, 0, 0, 0, nullptr, nullptr,
                                    nullptr, nullptr);
        window = made != nullptr ? made : window;
        return Answer(made != nullptr);
    };
    const auto find = [](LPCWSTR class_name, LPCWSTR title) {
        SetLastError(kUntouched);
        return Answer(FindWindowW(class_name, title) != nullptr);
    };
    const auto show = [&window](int command) {
        SetLastError(kUntouched);
        return Answer(ShowWindow(window, command));
    };
    const auto post = [&window](UINT message) {
        SetLastError(kUntouched);
        return Answer(PostMessageW(window, message, 15, -1));
    };
    const auto next = [&window] {
        MSG message{};
        SetLastError(kUntouched);
        const BOOL got = GetMessageW(&message, window, 0, 0);
        return Answer(got, std::to_string(message.message) + ' ' + std::to_string(message.wParam) +
                               ' ' + std::to_string(message.lParam));
    };
    const auto destroy = [&window] {
        SetLastError(kUntouched);
        return Answer(DestroyWindow(window));
    };
    const std::u16string longest(63, u'w'), too_long(64, u'w');
    CheckRows({
        {CALL(find(u"ZELTO", nullptr)), "0"},
        {CALL(make(too_long.c_str(), nullptr)), "0 error 87"},
        {CALL(All({make(u"", nullptr), make(nullptr, u"x")})), "0 error 87, 0 error 87"},
        {CALL(All({make(longest.c_str(), longest.c_str()), destroy()})), "1, 1"},
        {CALL(make(u"Zelto", u"Map")), "1"},
        {CALL(All({find(u"ZELTO", nullptr), find(u"zelto", u"mAP"), find(nullptr, u"Map")})),
         "1, 1, 1"},
        {CALL(All({find(u"Zelto", u"Ma"), find(u"Zelto1", nullptr)})), "0, 0"},
        {CALL(All({post(WM_USER), next()})), "1, 1 1024 15 -1"},
        {CALL(All({post(WM_QUIT), next()})), "1, 0 18 15 -1"},
        {CALL(All({show(SW_MINIMIZE), next()})), "1, 1 5 1 0"},
        {CALL(All({show(13), next()})), "1, 1 5 0 0"},
        {CALL(All({show(SW_HIDE), next()})), "1, 1 24 0 0"},
        {CALL(All({show(SW_SHOW), next(), show(SW_SHOW)})), "0, 1 24 1 0, 1"},
        {CALL(All({destroy(), destroy()})), "1, 0 error 1400"},
        {CALL(All({post(WM_USER), show(SW_SHOW)})), "0 error 1400, 0 error 1400"},
        {CALL(All({find(u"ZELTO", nullptr), next()})), "0, -1 error 1400 0 0 0"},
    });
}

TEST_F(PlatformObjects, RegistryValues) {
    HKEY key = nullptr;
    DWORD made = 0;
    BYTE byte = 0;
    const auto create = [&](LPCWSTR name) {
        const LONG result =
            RegCreateKeyExW(HKEY_LOCAL_MACHINE, name, 0, nullptr, 0, 0, nullptr, &key, &made);
        return std::to_string(result) + ' ' + std::to_string(made);
    };
    const auto open = [&](HKEY parent, LPCWSTR name) {
        return std::to_string(RegOpenKeyExW(parent, name, 0, 0, &key));
    };
    const auto set = [&](LPCWSTR name, DWORD type, const char* data, DWORD size) {
        return std::to_string(
            RegSetValueExW(key, name, 0, type, reinterpret_cast<const BYTE*>(data), size));
    };
    const auto query = [&](LPCWSTR name, DWORD room, bool measure = false) {
        BYTE data[16] = {};
        DWORD type = 99, size = room;
        const LONG result =
            RegQueryValueExW(key, name, nullptr, &type, measure ? nullptr : data, &size);
        const std::string text = std::to_string(result);
        return result == 2 || result == 6
                   ? text
                   : text + " type " + std::to_string(type) + " size " + std::to_string(size);
    };
    CheckRows({
        {CALL(open(HKEY_LOCAL_MACHINE, u"SOFTWARE\\None")), "2"},
        {CALL(open(HKEY_LOCAL_MACHINE, u"\\SOFTWARE")), "87"},
        {CALL(All({create(u"Software\\Zelto"), create(u"SOFTWARE\\ZELTO")})), "0 1, 0 2"},
        {CALL(set(u"Value", REG_BINARY, "12345", 5)), "0"},
        {CALL(query(u"VALUE", 16)), "0 type 3 size 5"},
        {CALL(query(u"value", 4)), "234 type 3 size 5"},
        {CALL(query(u"value", 0, true)), "0 type 3 size 5"},
        {CALL(All({query(u"none", 16), query(nullptr, 16)})), "2, 2"},
        {CALL(All({set(nullptr, REG_DWORD, "abcd", 4), query(u"", 16)})), "0, 0 type 4 size 4"},
        {CALL(std::to_string(RegQueryValueExW(key, u"Value", &made, nullptr, nullptr, nullptr))),
         "87"},
        {CALL(std::to_string(RegQueryValueExW(key, u"Value", nullptr, nullptr, &byte, nullptr))),
         "87"},
        {CALL(All({std::to_string(RegCloseKey(key)), std::to_string(RegCloseKey(key))})), "0, 6"},
        {CALL(All({query(u"value", 16), open(key, u"x")})), "6, 6"},
    });
}

TEST_F(PlatformObjects, Threads) {
    HANDLE thread = nullptr;
    const LPTHREAD_START_ROUTINE body = [](void* event) {
        return EventModify(event, EVENT_SET) + 6u;
    };
    HANDLE ran = CreateEventW(nullptr, FALSE, FALSE, nullptr);
    const auto create = [&](LPTHREAD_START_ROUTINE start, DWORD stack, DWORD flags) {
        SetLastError(kUntouched);
        HANDLE made = CreateThread(nullptr, stack, start, ran, flags, nullptr);
        thread = made != nullptr ? made : thread;
        return Answer(made != nullptr);
    };
    const auto priority = [&](int value) {
        SetLastError(kUntouched);
        return Answer(SetThreadPriority(thread, value));
    };
    const auto told = [&] {
        SetLastError(kUntouched);
        return Answer(GetThreadPriority(thread));
    };
    CheckRows({
        {CALL(create(nullptr, 0, 0)), "0 error 87"},
        {CALL(create(body, 0, 4)), "0 error 87", "suspended threads are not offered"},
        {CALL(All({create(body, 5000, 0), Close(thread), Wait(ran, INFINITE)})), "1, 1, 0"},
        {CALL(create(body, 0x10000, STACK_SIZE_PARAM_IS_A_RESERVATION)), "1"},
        {CALL(All({Wait(thread, INFINITE), Wait(thread), Wait(ran)})), "0, 0, 0"},
        {CALL(All({told(), priority(THREAD_PRIORITY_IDLE), told()})), "3, 1, 7"},
        {CALL(All({priority(8), priority(-1), told()})), "0 error 87, 0 error 87, 7"},
        {CALL(All({Close(thread), told(), priority(3)})), "1, 2147483647 error 6, 0 error 6"},
    });
    CloseHandle(ran);
}

TEST(Platform, Times) {
    SYSTEMTIME time{};
    FILETIME ticks{};
    const auto to_ticks = [&](WORD year, WORD month, WORD day, WORD hour = 0, WORD minute = 0,
                              WORD second = 0, WORD milliseconds = 0) {
        time = {year, month, 99, day, hour, minute, second, milliseconds};
        SetLastError(kUntouched);
        const BOOL result = SystemTimeToFileTime(&time, &ticks);
        const int64_t value = int64_t{ticks.dwHighDateTime} << 32 | ticks.dwLowDateTime;
        return Answer(result, result ? std::to_string(value) : "");
    };
    const auto from_ticks = [&](int64_t value) {
        ticks = {static_cast<DWORD>(value), static_cast<DWORD>(value >> 32)};
        SetLastError(kUntouched);
        std::string text;
        const BOOL result = FileTimeToSystemTime(&ticks, &time);
        for (const WORD part : {time.wYear, time.wMonth, time.wDayOfWeek, time.wDay, time.wHour})
            text += (text.empty() ? "" : " ") + std::to_string(part);
        return Answer(result, result ? text : "");
    };
    constexpr int64_t kLast = 0x7FFFFFFFFFFFFFFF;
    CheckRows({
        {CALL(to_ticks(1601, 1, 1)), "1 0"},
        {CALL(to_ticks(1970, 1, 1)), "1 116444736000000000"},
        {CALL(to_ticks(1980, 1, 1, 0, 0, 1, 2)), "1 119600064010020000"},
        {CALL(to_ticks(2024, 2, 29)), "1 133536384000000000"},
        {CALL(All({to_ticks(1600, 12, 31), to_ticks(30828, 1, 1)})), "0 error 87, 0 error 87"},
        {CALL(All({to_ticks(2024, 0, 1), to_ticks(2024, 13, 1)})), "0 error 87, 0 error 87"},
        {CALL(All({to_ticks(2024, 1, 0), to_ticks(2024, 4, 31)})), "0 error 87, 0 error 87"},
        {CALL(All({to_ticks(2023, 2, 29), to_ticks(1900, 2, 29)})), "0 error 87, 0 error 87"},
        {CALL(All({to_ticks(2024, 1, 1, 24), to_ticks(2024, 1, 1, 0, 60)})),
         "0 error 87, 0 error 87"},
        {CALL(All({to_ticks(2024, 1, 1, 0, 0, 60), to_ticks(2024, 1, 1, 0, 0, 0, 1000)})),
         "0 error 87, 0 error 87"},
        {CALL(All({from_ticks(0), from_ticks(119600064000000000)})),
         "1 1601 1 1 1 0, 1 1980 1 2 1 0"},
        {CALL(All({from_ticks(kLast), from_ticks(-1)})), "1 30828 9 4 14 2, 0 error 87"},
    });
}

}  // namespace
}  // namespace zelto::test
