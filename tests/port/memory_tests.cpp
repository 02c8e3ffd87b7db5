// What the exports do with memory: what is kept, and what happens when there is none.

#include <cstdlib>
#include <new>

#include "tests/port/port_fixture.h"

namespace {

size_t g_watched_size = 0;
void* g_watched_block = nullptr;  // the living block of that size
int g_allocations_left = -1;      // negative: no limit

}  // namespace

void* operator new(size_t size) {
    if (g_allocations_left == 0)
        throw std::bad_alloc();
    if (g_allocations_left > 0)
        --g_allocations_left;
    void* block = std::malloc(size);
    if (block == nullptr)
        throw std::bad_alloc();
    if (size == g_watched_size)
        g_watched_block = block;
    return block;
}

void* operator new[](size_t size) {
    return operator new(size);
}

void operator delete(void* block) noexcept {
    if (block == g_watched_block)
        g_watched_block = nullptr;
    std::free(block);
}

void operator delete(void* block, size_t) noexcept {
    operator delete(block);
}

void operator delete[](void* block) noexcept {
    operator delete(block);
}

void operator delete[](void* block, size_t) noexcept {
    operator delete(block);
}

// What GetString keeps on purpose is no leak of these tests.
extern "C" const char* __lsan_default_suppressions() {
    return "leak:ZeltoNavPort_GetString\n";
}

namespace zelto::test {
namespace {

TEST_F(PortTest, GetStringKeepsItsReplyUnlessItSucceeds) {
    constexpr uint32_t kSize = 7000;
    char text[kSize];
    const struct {
        std::deque<ScriptedRead> reads;
        bool kept;
    } cases[] = {{{{"G|x"}}, false}, {{{"G"}}, true}, {{{"A|"}}, true}, {{{""}}, true}, {{}, true}};
    for (const auto& c : cases) {
        Restart();
        Scripted().reads = c.reads;
        g_watched_size = kSize + 10;
        ZeltoNavPort_GetString("0", kSize, text);
        EXPECT_EQ(g_watched_block != nullptr, c.kept);
        operator delete(g_watched_block);
    }
    g_watched_size = 0;
}

TEST_F(PortTest, WithoutMemoryExportsAnswerFourteenAndThrowNothing) {
    int32_t (*const calls[])() = {
        [] { return ZeltoNavPort_New_Waypoint(u"a long enough name", u"b", 1, 2, 3, u"c"); },
        [] { return ZeltoNavPort_MessageBoxA("a", "b", 1, 2); },
        [] { return ZeltoNavPort_PositionStreet(nullptr); },
        [] { return ZeltoNavPort_Goto(1, 2, nullptr); },
    };
    for (const auto call : calls) {
        int32_t result = 14;
        for (int allowed = 0; result != 0; ++allowed) {
            Restart();
            Scripted().reads = {{"A|"}};
            g_allocations_left = allowed;
            result = call();
            g_allocations_left = -1;
            ASSERT_TRUE(result == 0 || result == 14) << result;
        }
    }
}

}  // namespace
}  // namespace zelto::test
