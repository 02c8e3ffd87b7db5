// The messages of a Windows queue in their memory; the rest of that layer runs on its system alone.

#include "platform/coredll/windows/queue_ring.h"

#include <gtest/gtest.h>
#include <vector>

namespace zelto::coredll {
namespace {

constexpr MSGQUEUEOPTIONS kThreeOfFive{sizeof(MSGQUEUEOPTIONS), 0, 3, 5, TRUE};

class QueueRingTest : public testing::Test {
  protected:
    QueueRingTest() { Bind(memory_.size() * sizeof(uint32_t)); }
    void Bind(uint64_t bytes) { ring_.Bind(memory_.data(), bytes); }
    void Push(const std::string& text, bool alert = false) {
        ring_.Push(text.data(), static_cast<uint32_t>(text.size()), alert);
    }
    std::string Pop(uint32_t size = 5) {
        std::string text(size, '.');
        bool alert = false;
        const uint32_t full_size = ring_.Pop(text.data(), size, alert);
        return text.substr(0, full_size) + (alert ? "!" : "") + std::to_string(full_size);
    }

    std::vector<uint32_t> memory_ = std::vector<uint32_t>(
        static_cast<size_t>(QueueRing::BytesFor(kThreeOfFive) / sizeof(uint32_t)));
    QueueRing ring_;
};

TEST_F(QueueRingTest, KeepsOrderAndLengthRoundAfterRound) {
    ASSERT_TRUE(ring_.Make(kThreeOfFive));
    for (int round = 0; round < 20; ++round) {
        EXPECT_TRUE(ring_.IsEmpty());
        for (const char* text : {"one", "two", "three"})
            Push(text);
        EXPECT_TRUE(ring_.IsFull());
        Push("late", true);
        EXPECT_EQ(Pop(), "late!4");
        EXPECT_EQ(Pop(), "one3");
        Push("four", round % 2 != 0);
        EXPECT_EQ(Pop(), round % 2 != 0 ? "four!4" : "two3");
        EXPECT_EQ(Pop(2), round % 2 != 0 ? "tw3" : "th5");
        Pop();
    }
}

TEST_F(QueueRingTest, TakesNoQueueThatLeadsOutOfItsMemory) {
    EXPECT_FALSE(ring_.IsBound());
    ASSERT_TRUE(ring_.Make(kThreeOfFive));
    ring_.Break();
    const uint64_t bytes = QueueRing::BytesFor(kThreeOfFive);
    Bind(bytes - 1);
    EXPECT_FALSE(ring_.IsBound());
    EXPECT_FALSE(ring_.Make(kThreeOfFive));
    Bind(bytes);
    EXPECT_TRUE(ring_.IsBound() && ring_.IsBroken());
    ASSERT_TRUE(ring_.Make(kThreeOfFive));
    EXPECT_TRUE(ring_.IsEmpty() && !ring_.IsBroken());
    EXPECT_EQ(ring_.Incarnation(), 2u);
    reinterpret_cast<QueueHeader*>(memory_.data())->capacity = 0;
    Bind(bytes);
    EXPECT_FALSE(ring_.IsBound());
}

}  // namespace
}  // namespace zelto::coredll
