#include "common/files/text_scan.h"

#include "common/text/token_scanner.h"

namespace zelto {
namespace {

constexpr ByteSet kStops(std::string_view("\n\r;\0", 4));
constexpr size_t kBlock = 32;

// Whether there may be a stop among the bytes: all below 0x0E count, which has tabs in it. Written
// so that the compiler makes wide registers of it.
bool MayHaveStop(const char* block) {
    unsigned char any = 0;
    for (size_t i = 0; i < kBlock; ++i) {
        const auto byte = static_cast<unsigned char>(block[i]);
        any = static_cast<unsigned char>(any | (byte <= '\r' ? 1 : 0) | (byte == ';' ? 1 : 0));
    }
    return any != 0;
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
    for (;;) {
        while (text.size() - size >= kBlock && !MayHaveStop(text.data() + size))
            size += kBlock;
        if (text.size() - size < 8)
            return CountUpTo(text, size, text.size());
        const uint64_t maybe = MaybeStops(LoadEight(text.data() + size));
        const size_t stop =
            maybe == 0 ? size + 8 : CountUpTo(text, size + FirstMarked(maybe), size + 8);
        if (stop < size + 8)
            return stop;
        size = stop;
    }
}

}  // namespace zelto
