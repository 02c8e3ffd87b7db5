// The layer takes no memory from the heap on the way of a request.

#include <cstdlib>
#include <new>

#include "tests/platform/shared_objects.h"

namespace {

size_t g_allocations = 0;

}  // namespace

void* operator new(size_t size, const std::nothrow_t&) noexcept {
    ++g_allocations;
    return std::malloc(size);
}
void* operator new(size_t size) {
    if (void* memory = operator new(size, std::nothrow))
        return memory;
    throw std::bad_alloc();
}
void operator delete(void* memory) noexcept {
    std::free(memory);
}
void operator delete(void* memory, size_t) noexcept {
    std::free(memory);
}

namespace zelto::test {
namespace {

using Allocation = SharedObjects;

bool OneRequest(HWND window) {
    HANDLE writer = OpenQueue(TEXT("ZeltoApiMsgQ2_tx"), false);
    HANDLE reader = OpenQueue(TEXT("ZeltoApiMsgQ2_tx"), true);
    MSG message{};
    char buffer[1024] = "S|1.0000000,2.0000000,,,0\n";
    DWORD read = 0;
    const bool done = PostMessageW(window, 17698, 15, 5) != FALSE &&
                      WriteMsgQueue(writer, buffer, 26, 4000, 0) != FALSE &&
                      GetMessageW(&message, window, 0, 0) > 0 &&
                      ReadMsgQueue(reader, buffer, sizeof buffer, &read, 500, nullptr) != FALSE;
    return CloseMsgQueue(writer) != FALSE && CloseMsgQueue(reader) != FALSE && done && read == 26;
}

TEST_F(Allocation, ARequestTakesNothingFromTheHeap) {
    HWND window =
        CreateWindowExW(0, TEXT("w"), nullptr, 0, 0, 0, 0, 0, nullptr, nullptr, nullptr, nullptr);
    ASSERT_TRUE(OneRequest(window));
    const size_t before = g_allocations;
    const bool done = OneRequest(window);
    const size_t after = g_allocations;
    EXPECT_TRUE(done);
    EXPECT_EQ(after, before);
}

}  // namespace
}  // namespace zelto::test
