// UTF-8 and UTF-16, one character at a time.

#ifndef ZELTO_PLATFORM_COREDLL_LINUX_BASE_UNICODE_H
#define ZELTO_PLATFORM_COREDLL_LINUX_BASE_UNICODE_H

#include "platform/coredll/api/base.h"
#include "platform/coredll/linux/base/ascii.h"

namespace zelto::coredll {

constexpr char32_t kNoCharacter = 0xFFFFFFFF;
constexpr char32_t kReplacement = 0xFFFD;

// The character at the front of a text and the units that it takes, at least one.
struct Taken {
    char32_t value;  // kNoCharacter: the units stand for none
    size_t used;
};

// `left` is at least 1. Of ill-formed bytes, those are taken together that begin a well-formed
// sequence, so that each such beginning counts as one fault.
Taken TakeUtf8(const unsigned char* bytes, size_t left);

// Writes 1 to 4 bytes and returns how many.
size_t PutUtf8(char32_t value, unsigned char* out);

// Letters that differ in case only as the same one: A to Z, and the accented ones of Latin-1.
inline char16_t FoldLetter(char16_t unit) {
    const bool upper = unit >= 0xC0 && unit <= 0xDE && unit != 0xD7;
    return upper ? static_cast<char16_t>(unit + 0x20) : FoldAscii(unit);
}

inline bool IsHighSurrogate(char32_t unit) {
    return (unit & 0xFFFFFC00) == 0xD800;
}
inline bool IsLowSurrogate(char32_t unit) {
    return (unit & 0xFFFFFC00) == 0xDC00;
}

// `left` is at least 1. A surrogate without its partner is no character.
inline Taken TakeUtf16(const WCHAR* units, size_t left) {
    const char32_t unit = units[0];
    if ((unit & 0xFFFFF800) != 0xD800)
        return {unit, 1};
    if (IsHighSurrogate(unit) && left > 1 && IsLowSurrogate(units[1]))
        return {0x10000 + ((unit & 0x3FF) << 10) + (units[1] & 0x3FFu), 2};
    return {kNoCharacter, 1};
}

// Writes 1 or 2 units and returns how many.
inline size_t PutUtf16(char32_t value, WCHAR* out) {
    if (value < 0x10000) {
        out[0] = static_cast<WCHAR>(value);
        return 1;
    }
    out[0] = static_cast<WCHAR>(0xD800 + ((value - 0x10000) >> 10));
    out[1] = static_cast<WCHAR>(0xDC00 + (value & 0x3FF));
    return 2;
}

}  // namespace zelto::coredll

#endif
