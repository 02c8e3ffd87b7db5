// Copying runs of ASCII between 8-bit and 16-bit texts, sixteen at a time.

#ifndef ZELTO_COMMON_TEXT_ASCII_RUN_H
#define ZELTO_COMMON_TEXT_ASCII_RUN_H

#include <cstddef>
#include <type_traits>

namespace zelto {

inline constexpr ptrdiff_t kAsciiBlock = 16;

// Copies the next kAsciiBlock units if all of them are below 128. If not, what has been written to
// `out` has no meaning.
template <class Source, class Target>
inline bool CopyAsciiBlock(const Source* text, Target* out) {
    using Unit = std::make_unsigned_t<Source>;
    unsigned all = 0;
    for (ptrdiff_t i = 0; i < kAsciiBlock; ++i) {
        all |= static_cast<Unit>(text[i]);
        out[i] = static_cast<Target>(text[i]);
    }
    return all < 0x80;
}

}  // namespace zelto

#endif
