// What the exports do with memory: what is kept, and what happens when there is none.

#include <cstdlib>
#include <new>

#include "tests/port/port_fixture.h"

namespace {

int g_arrays = 0;  // alive
bool g_full = false;

}  // namespace

void* operator new[](size_t size) {
    void* block = g_full ? nullptr : std::malloc(size);
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
                               ZeltoNavPort_PositionStreet(nullptr)};
    g_full = false;
    for (const int32_t result : results)
        EXPECT_EQ(result, 14);
}

}  // namespace
}  // namespace zelto::test
