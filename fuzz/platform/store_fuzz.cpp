// Any words in the tables of the object store, written before this process connects or while it
// is: every call is served or fails, and the store's own memory is all that is touched.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

#include "platform/coredll/coredll.h"
#include "platform/coredll/linux/objects/store.h"
#include "platform/coredll/linux/objects/store_report.h"
#include "tests/support/temp_device.h"

namespace {

using namespace zelto;
using coredll::Store;

// The tables that may be damaged. The lock's word is not: it could name this very process.
struct Span {
    size_t offset;
    size_t size;
};
constexpr Span kSpans[] = {
    {0, 64},
    {offsetof(Store, queue_top), 20},
    {offsetof(Store, processes), 4 * sizeof(coredll::ProcessSlot)},
    {offsetof(Store, windows), 4 * sizeof(coredll::WindowSlot)},
    {offsetof(Store, ends), 12 * sizeof(coredll::EndSlot)},
    {offsetof(Store, queues), 4 * sizeof(coredll::QueueSlot)},
    {offsetof(Store, events), 4 * sizeof(coredll::EventSlot)},
    {offsetof(Store, blocks), 32 * sizeof(coredll::Block)},
};

HANDLE OpenQueue(LPCWSTR name, bool read) {
    const MSGQUEUEOPTIONS options{sizeof options, MSGQUEUE_ALLOW_BROKEN, 4, 1000, read};
    return CreateMsgQueue(name, &options);
}

HWND OpenWindow(LPCWSTR name) {
    return CreateWindowExW(0, name, nullptr, 0, 0, 0, 0, 0, nullptr, nullptr, nullptr, nullptr);
}

// A sound store with objects of another process, and this process's way to its bytes.
class Bench {
  public:
    Bench() {
        neighbour_ = fork();
        if (neighbour_ == 0)
            LiveBeside();
        const std::string path = device_.Device() + "/store";
        while (FindWindowW(TEXT("beside"), nullptr) == nullptr)
            usleep(1000);
        coredll::CloseStore();
        const int file = open(path.c_str(), O_RDWR | O_CLOEXEC);
        void* memory = mmap(nullptr, sizeof(Store), PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
        close(file);
        if (memory == MAP_FAILED)
            std::abort();
        bytes_ = static_cast<unsigned char*>(memory);
        tables_.assign(bytes_, bytes_ + offsetof(Store, rings));
        const unsigned char* blocks = bytes_ + offsetof(Store, blocks);
        blocks_.assign(blocks, blocks + kBlocksKept);
    }
    ~Bench() {
        kill(neighbour_, SIGKILL);
        waitpid(neighbour_, nullptr, 0);
    }
    Bench(const Bench&) = delete;
    Bench& operator=(const Bench&) = delete;

    void Restore() {
        std::memcpy(bytes_, tables_.data(), tables_.size());
        std::memcpy(bytes_ + offsetof(Store, blocks), blocks_.data(), blocks_.size());
    }

    // Each word is a table, a place in it and a value: 1, 2 and 4 bytes.
    void Damage(const uint8_t* data, size_t size) {
        for (; size >= 7; data += 7, size -= 7) {
            const Span& span = kSpans[data[0] % std::size(kSpans)];
            const size_t word = (data[1] | size_t{data[2]} << 8) % (span.size / 4);
            std::memcpy(bytes_ + span.offset + word * 4, data + 3, 4);
        }
    }

  private:
    static constexpr size_t kBlocksKept = 64 * sizeof(coredll::Block);

    [[noreturn]] static void LiveBeside() {
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        char bytes[600] = {};
        OpenQueue(TEXT("q"), true);
        HANDLE writer = OpenQueue(TEXT("q"), false);
        WriteMsgQueue(writer, bytes, sizeof bytes, 0, 0);
        WriteMsgQueue(writer, bytes, 1, 0, MSGQUEUE_MSGALERT);
        CreateEventW(nullptr, TRUE, TRUE, TEXT("e"));
        OpenWindow(TEXT("beside"));
        for (;;)
            pause();
    }

    test::TempDevice device_;
    pid_t neighbour_ = 0;
    unsigned char* bytes_ = nullptr;
    std::vector<unsigned char> tables_;
    std::vector<unsigned char> blocks_;
};

void CallQueues(LPCWSTR name) {
    char bytes[1000] = {};
    DWORD size = 0;
    DWORD flags = 0;
    HANDLE writer = OpenQueue(name, false);
    HANDLE reader = OpenQueue(name, true);
    WriteMsgQueue(writer, bytes, 700, 0, 0);
    for (int i = 0; i < 3; ++i)
        ReadMsgQueue(reader, bytes, sizeof bytes, &size, 0, &flags);
    if (size > sizeof bytes)
        std::abort();
    CloseMsgQueue(reader);
    CloseMsgQueue(writer);
}

void CallEvents() {
    HANDLE event = CreateEventW(nullptr, FALSE, FALSE, TEXT("e"));
    EventModify(event, EVENT_SET);
    WaitForSingleObject(event, 0);
    CloseHandle(event);
}

void CallWindows() {
    HWND window = OpenWindow(TEXT("own"));
    MSG message;
    if (PostMessageW(window, WM_USER, 1, 2) != FALSE)
        GetMessageW(&message, window, 0, 0);
    PostMessageW(FindWindowW(TEXT("beside"), nullptr), WM_USER, 1, 2);
    ShowWindow(window, SW_MINIMIZE);
    DestroyWindow(window);
}

void MakeCalls() {
    coredll::StoreReport report;
    coredll::DescribeStore(report, nullptr);
    CallQueues(TEXT("q"));
    CallQueues(TEXT("own"));
    CallEvents();
    CallWindows();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static Bench bench;
    if (size == 0)
        return 0;
    const bool before_connecting = data[0] % 2 == 0;
    bench.Restore();
    if (!before_connecting)
        coredll::OpenStore();
    bench.Damage(data + 1, size - 1);
    MakeCalls();
    coredll::CloseStore();
    return 0;
}
