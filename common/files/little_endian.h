// Unsigned words as bytes, the lowest first on every host.

#ifndef ZELTO_COMMON_FILES_LITTLE_ENDIAN_H
#define ZELTO_COMMON_FILES_LITTLE_ENDIAN_H

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace zelto {

template <class Word>
inline Word LoadLittle(const void* bytes) {
    Word word = 0;
    if constexpr (std::endian::native == std::endian::little) {
        std::memcpy(&word, bytes, sizeof word);
    } else {
        for (size_t i = 0; i < sizeof word; ++i)
            word |= Word{static_cast<const uint8_t*>(bytes)[i]} << (8 * i);
    }
    return word;
}

template <class Word>
inline void StoreLittle(Word word, void* bytes) {
    for (size_t i = 0; i < sizeof word; ++i)
        static_cast<uint8_t*>(bytes)[i] = static_cast<uint8_t>(word >> (8 * i));
}

}  // namespace zelto

#endif
