#include "common/files/text_scan.h"

#include <algorithm>

#include "common/text/token_scanner.h"

namespace zelto {
namespace {

constexpr ByteSet kStops(std::string_view("\n\r;\0", 4));
constexpr size_t kBlock = 64;

// Whether there may be a stop among the bytes: all up to CR count, which has tabs in it. Written as
// two minima, which compilers take in wide registers.
bool MayHaveStop(const char* block) {
    unsigned char lowest = 0xFF;
    unsigned char nearest = 0xFF;
    for (size_t i = 0; i < kBlock; ++i) {
        const auto byte = static_cast<unsigned char>(block[i]);
        lowest = std::min(lowest, byte);
        nearest = std::min(nearest, static_cast<unsigned char>(byte ^ ';'));
    }
    return lowest <= '\r' || nearest == 0;
}

size_t CountUpTo(std::string_view text, size_t size, size_t limit) {
    while (size < limit && !kStops.Contains(text[size]))
        ++size;
    return size;
}

// The high bits of bytes that may be stops, among them all that are.
uint64_t MaybeStops(uint64_t word) {
    constexpr uint64_t kBelow = kOnes * ('\r' + 1);
    return ((word - kBelow) & ~word & kHighBits) | BytesEqual(word, ';');
}

}  // namespace

size_t CountText(std::string_view text) {
    size_t size = 0;
    while (text.size() - size >= kBlock && !MayHaveStop(text.data() + size))
        size += kBlock;
    for (; text.size() - size >= 8; size += 8) {
        const uint64_t maybe = MaybeStops(LoadEight(text.data() + size));
        if (maybe == 0)
            continue;
        const size_t stop = CountUpTo(text, size + FirstMarked(maybe), size + 8);
        if (stop < size + 8)
            return stop;
    }
    return CountUpTo(text, size, text.size());
}

}  // namespace zelto
