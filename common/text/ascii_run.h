// Copying runs of ASCII between 8-bit and 16-bit texts, a block at a time.

#ifndef ZELTO_COMMON_TEXT_ASCII_RUN_H
#define ZELTO_COMMON_TEXT_ASCII_RUN_H

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>

namespace zelto {

inline constexpr ptrdiff_t kAsciiBlock = 16;
inline constexpr ptrdiff_t kSmallAsciiBlock = 4;

// Whether the next kCount units are below 128. Looks at them in wide words, which compilers make of
// a loop over the units at their best only.
template <ptrdiff_t kCount, class Source>
inline bool IsAsciiBlock(const Source* text) {
    using Unit = std::make_unsigned_t<Source>;
    constexpr size_t kSize = kCount * sizeof(Unit);
    using Word = std::conditional_t<kSize % sizeof(uint64_t) == 0, uint64_t, uint32_t>;
    constexpr Word kOneEach = static_cast<Word>(-1) / static_cast<Unit>(-1);
    constexpr Word kAbove = kOneEach * static_cast<Unit>(~0x7F);
    Word words[kSize / sizeof(Word)];
    std::memcpy(words, text, kSize);
    Word all = 0;
    for (const Word word : words)
        all |= word;
    return (all & kAbove) == 0;
}

// Copies the next kCount units if all of them are below 128. The copy goes through local arrays,
// which nothing can overlap, so that it is done in wide registers.
template <ptrdiff_t kCount, class Source, class Target>
inline bool CopyAsciiBlock(const Source* text, Target* out) {
    if (!IsAsciiBlock<kCount>(text))
        return false;
    std::make_unsigned_t<Source> units[kCount];
    Target copies[kCount];
    std::memcpy(units, text, sizeof units);
    for (ptrdiff_t i = 0; i < kCount; ++i)
        copies[i] = static_cast<Target>(units[i]);
    std::memcpy(out, copies, sizeof copies);
    return true;
}

// Copies at most `room` units from the front of the text as long as whole blocks of them are below
// 128, and returns how many.
template <class Source, class Target>
inline ptrdiff_t CopyAsciiBlocks(const Source* text, ptrdiff_t room, Target* out) {
    ptrdiff_t done = 0;
    while (room - done >= kAsciiBlock && CopyAsciiBlock<kAsciiBlock>(text + done, out + done))
        done += kAsciiBlock;
    while (room - done >= kSmallAsciiBlock &&
           CopyAsciiBlock<kSmallAsciiBlock>(text + done, out + done))
        done += kSmallAsciiBlock;
    return done;
}

// How many units to take one by one before the next look for ASCII: more and more of them while
// there is none, as in most scripts but the Latin one.
class PatientBlock {
  public:
    ptrdiff_t Next(ptrdiff_t ascii) {
        size_ = ascii != 0 ? kAsciiBlock : (size_ < kMost ? size_ * 2 : kMost);
        return size_;
    }

  private:
    static constexpr ptrdiff_t kMost = 512;
    ptrdiff_t size_ = kAsciiBlock / 2;
};

}  // namespace zelto

#endif
