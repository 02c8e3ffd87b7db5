// What the exports do with memory: what is kept, and what happens when there is none.

#include <cstdlib>
#include <new>

#include "tests/port/port_fixture.h"

namespace {

int g_arrays = 0;  // alive
bool g_full = false;
int g_blocks_left = -1;  // before there is no memory; below 0: no limit

bool NoneLeft() {
    return g_full || (g_blocks_left >= 0 && g_blocks_left-- == 0);
}

}  // namespace

void* operator new(size_t size) {
    void* block = NoneLeft() ? nullptr : std::malloc(size);
    if (block == nullptr)
        throw std::bad_alloc();
    return block;
}

void operator delete(void* block) noexcept {
    std::free(block);
}

void operator delete(void* block, size_t) noexcept {
    std::free(block);
}

void* operator new[](size_t size) {
    void* block = NoneLeft() ? nullptr : std::malloc(size);
    if (block == nullptr)
        throw std::bad_alloc();
    ++g_arrays;
    return block;
}

void operator delete[](void* block) noexcept {
    g_arrays -= block != nullptr ? 1 : 0;
    std::free(block);
}

void operator delete[](void* block, size_t) noexcept {
    operator delete[](block);
}

namespace zelto::test {
namespace {

TEST_F(PortTest, GetStringKeepsItsReplyUnlessItSucceeds) {
    char text[16];
    for (const char* reply : {"G|x", "G", "A|", ""}) {
        Scripted().reads = {{reply}};
        const int before = g_arrays;
        const bool failed = ZeltoNavPort_GetString("0", sizeof(text), text) != 0;
        EXPECT_EQ(g_arrays - before, failed ? 1 : 0) << reply;
    }
}

TEST_F(PortTest, WithoutMemoryExportsAnswerFourteen) {
    g_full = true;
    const int32_t results[] = {ZeltoNavPort_GetString("0", 8, nullptr), ZeltoNavPort_Cobertura(),
                               ZeltoNavPort_PositionStreet(nullptr), ZeltoNavPort_IsOpen(),
                               ZeltoNavPort_Init()};
    g_full = false;
    for (const int32_t result : results)
        EXPECT_EQ(result, 14);
}

TEST_F(PortTest, AQueueIsClosedOnceWhereverMemoryEnds) {
    for (int blocks = 0; blocks < 30; ++blocks) {
        Restart();
        Scripted().reads = {{"A|"}, {"A|"}, {"A|"}};
        ZeltoNavPort_Cobertura();
        g_blocks_left = blocks;
        ZeltoNavPort_Cobertura();
        g_blocks_left = -1;
        ZeltoNavPort_Cobertura();
        const Lines closed = CallsOf({"CloseMsgQueue"});
        EXPECT_EQ(std::set<std::string>(closed.begin(), closed.end()).size(), closed.size());
    }
}

}  // namespace
}  // namespace zelto::test
