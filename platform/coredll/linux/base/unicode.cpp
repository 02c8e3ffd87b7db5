#include "platform/coredll/linux/base/unicode.h"

#include <algorithm>

namespace zelto::coredll {
namespace {

// What a lead byte promises: the length, and the range of the second byte, which excludes long
// forms, surrogates and values past U+10FFFF. The further bytes are 80 to BF.
struct Lead {
    size_t length;  // 0: no lead byte
    unsigned char low = 0x80;
    unsigned char high = 0xBF;
};

Lead LeadOf(unsigned char byte) {
    if (byte < 0xC2 || byte > 0xF4)
        return {0};
    if (byte < 0xE0)
        return {2};
    switch (byte) {
        case 0xE0:
            return {3, 0xA0, 0xBF};
        case 0xED:
            return {3, 0x80, 0x9F};
        case 0xF0:
            return {4, 0x90, 0xBF};
        case 0xF4:
            return {4, 0x80, 0x8F};
        default:
            return {byte < 0xF0 ? size_t{3} : size_t{4}};
    }
}

}  // namespace

Taken TakeUtf8(const unsigned char* bytes, size_t left) {
    if (bytes[0] < 0x80)
        return {bytes[0], 1};
    const Lead lead = LeadOf(bytes[0]);
    if (lead.length == 0)
        return {kNoCharacter, 1};
    char32_t value = bytes[0] & (0x7Fu >> lead.length);
    const size_t end = std::min(left, lead.length);
    for (size_t i = 1; i < end; ++i) {
        const unsigned char low = i == 1 ? lead.low : 0x80;
        const unsigned char high = i == 1 ? lead.high : 0xBF;
        if (bytes[i] < low || bytes[i] > high)
            return {kNoCharacter, i};
        value = (value << 6) | (bytes[i] & 0x3Fu);
    }
    return {end == lead.length ? value : kNoCharacter, end};
}

size_t PutUtf8(char32_t value, unsigned char* out) {
    const auto tail = [value](unsigned shift) {
        return static_cast<unsigned char>(0x80 | ((value >> shift) & 0x3F));
    };
    if (value < 0x80) {
        out[0] = static_cast<unsigned char>(value);
        return 1;
    }
    if (value < 0x800) {
        out[0] = static_cast<unsigned char>(0xC0 | (value >> 6));
        out[1] = tail(0);
        return 2;
    }
    if (value < 0x10000) {
        out[0] = static_cast<unsigned char>(0xE0 | (value >> 12));
        out[1] = tail(6);
        out[2] = tail(0);
        return 3;
    }
    out[0] = static_cast<unsigned char>(0xF0 | (value >> 18));
    out[1] = tail(12);
    out[2] = tail(6);
    out[3] = tail(0);
    return 4;
}

}  // namespace zelto::coredll
