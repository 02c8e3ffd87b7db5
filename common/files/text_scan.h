// Looking at text: blanks, where a line's text stops, digits. Eight characters at a time in a
// 64-bit word, the first in the lowest byte on every host.

#ifndef ZELTO_COMMON_FILES_TEXT_SCAN_H
#define ZELTO_COMMON_FILES_TEXT_SCAN_H

#include <bit>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "common/files/little_endian.h"
#include "common/text/ascii.h"

namespace zelto {

// How many blanks stand at the front.
inline size_t CountBlanks(std::string_view text) {
    size_t count = 0;
    while (count < text.size() && IsBlank(text[count]))
        ++count;
    return count;
}

// How many characters stand in front of the first that ends the text of a line: LF, CR, ";", NUL.
size_t CountText(std::string_view text);

inline constexpr uint64_t kOnes = 0x0101010101010101;
inline constexpr uint64_t kHighBits = 0x8080808080808080;

inline uint64_t LoadEight(const char* text) {
    return LoadLittle<uint64_t>(text);
}

// The high bit of every byte that equals `byte`, and perhaps of some behind the first of them.
inline uint64_t BytesEqual(uint64_t word, unsigned char byte) {
    const uint64_t zeros = word ^ (kOnes * byte);
    return (zeros - kOnes) & ~zeros & kHighBits;
}

// Index of the first byte whose high bit is set; 8 when there is none.
inline size_t FirstMarked(uint64_t marks) {
    return static_cast<unsigned>(std::countr_zero(marks)) / 8;
}

// The high bit of the first byte that is no digit, and perhaps of some behind it: a carry or borrow
// comes only from such a byte.
inline uint64_t NotDigits(uint64_t word) {
    return ((word + kOnes * (0x80 - ('9' + 1))) | (word - kOnes * '0')) & kHighBits;
}

inline constexpr std::ptrdiff_t kDecimalRoom = 9;

// Reads digits that do not go beyond `end`, modulo 2^64; eight bytes must be readable, of which
// those behind `end` do not matter when a non-digit stands there. Returns the character behind the
// digits, `text` when there are none.
inline const char* ReadDigits(const char* text, const char* end, uint64_t& value) {
    const uint64_t word = LoadEight(text);
    const size_t digits = FirstMarked(NotDigits(word));
    if (digits == 0)
        return text;
    // The digits go to the top, zeros below; then pairs, fours and all eight are joined.
    uint64_t sum = (word ^ (kOnes * '0')) << (8 * (8 - digits));
    sum = (sum * 10 + (sum >> 8)) & 0x00FF00FF00FF00FF;
    sum = (sum * 100 + (sum >> 16)) & 0x0000FFFF0000FFFF;
    sum = (sum * 10000 + (sum >> 32)) & 0xFFFFFFFF;
    const char* at = text + digits;
    for (; digits == 8 && at < end && IsDigit(*at); ++at)
        sum = sum * 10 + static_cast<uint64_t>(*at - '0');
    value = sum;
    return at;
}

// The same with a sign; kDecimalRoom bytes must be readable. Branches on the sign, so that where
// the digits begin is not waited for: the next number begins behind this one.
inline const char* ReadDecimal(const char* text, const char* end, uint64_t& value) {
    if (*text != '-') [[likely]]
        return ReadDigits(text, end, value);
    const char* at = ReadDigits(text + 1, end, value);
    value = 0 - value;
    return at == text + 1 ? text : at;
}

}  // namespace zelto

#endif
