#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>

#include "common/text/ascii_run.h"
#include "common/text/utf8.h"

namespace zelto {
namespace {

constexpr unsigned kReplacement = 0xFFFD;
constexpr unsigned kFirstBeyondUnit = 0x10000;

using Byte = unsigned char;

constexpr bool IsBetween(unsigned value, unsigned first, unsigned last) {
    return value - first <= last - first;
}

// The six bits of a byte that continues a sequence; 64 or more for any other, and past the end.
inline unsigned TailAt(const Byte* at, const Byte* end) {
    return at < end ? *at ^ 0x80U : 0x80U;
}

// The sequence is no longer than it needs to be, and not above U+10FFFF.
inline bool MayFollow(unsigned lead, unsigned second) {
    switch (lead) {
        case 0xE0:
            return IsBetween(second, 0x20, 0x3F);
        case 0xF0:
            return IsBetween(second, 0x10, 0x3F);
        case 0xF4:
            return second <= 0x0F;
        default:
            return second <= 0x3F;
    }
}

inline unsigned PrivatePair(unsigned second, unsigned third, unsigned fourth) {
    const unsigned high = second << 2 | (third & 3);
    const unsigned low = (third & 0x0C) << 6 | fourth;
    return kFirstBeyondUnit + (high << 10 | low);
}

// Takes a character, or what is to be replaced, from the front of the text.
inline unsigned TakeNext(const Byte*& text, const Byte* end) {
    const unsigned lead = *text++;
    if (lead < 0x80)
        return lead;
    const unsigned second = TailAt(text, end);
    if (!IsBetween(lead, 0xC2, 0xF4) || !MayFollow(lead, second))
        return kReplacement;
    ++text;
    if (lead < 0xE0)
        return (lead & 0x1F) << 6 | second;
    const unsigned third = TailAt(text, end);
    if (third > 0x3F)
        return kReplacement;
    ++text;
    if (lead < 0xF0)
        return (lead & 0x0F) << 12 | second << 6 | third;
    const unsigned fourth = TailAt(text, end);
    if (fourth > 0x3F)
        return kReplacement;
    ++text;
    if (lead == 0xF3 && third >= 0x30)
        return PrivatePair(second, third, fourth);
    return (lead & 7) << 18 | second << 12 | third << 6 | fourth;
}

bool IsAsciiWord(const Byte* text) {
    uint64_t word = 0;
    std::memcpy(&word, text, sizeof word);
    return (word & 0x8080808080808080U) == 0;
}

int64_t Measure(const Byte* text, const Byte* end) {
    constexpr ptrdiff_t kWord = sizeof(uint64_t);
    int64_t units = 0;
    while (text < end) {
        for (; end - text >= kWord && IsAsciiWord(text); text += kWord)
            units += kWord;
        for (const Byte* stop = text + std::min(end - text, kWord); text < stop;)
            units += TakeNext(text, end) < kFirstBeyondUnit ? 1 : 2;
    }
    return units;
}

inline WCHAR* Put(unsigned value, WCHAR* out) {
    if (value < kFirstBeyondUnit) {
        *out++ = static_cast<WCHAR>(value);
    } else {
        value -= kFirstBeyondUnit;
        *out++ = static_cast<WCHAR>(0xD800 + (value >> 10));
        *out++ = static_cast<WCHAR>(0xDC00 + (value & 0x3FF));
    }
    return out;
}

// Takes characters of two and of three bytes, of which most scripts are made, and single ASCII
// between them. Each takes at most three bytes and gives one unit, so neither end is asked for
// until as many may have been used up. Stops at all else.
inline void CopyShortCharacters(const Byte*& text, const Byte* end, WCHAR*& out, int64_t room) {
    for (int64_t most = std::min<int64_t>((end - text) / 3, room); most > 0; --most) {
        const unsigned lead = text[0];
        const unsigned second = text[1] ^ 0x80U;
        const unsigned third = text[2] ^ 0x80U;
        if (IsBetween(lead, 0xE1, 0xEF) && (second | third) <= 0x3F) {
            *out++ = static_cast<WCHAR>((lead & 0x0F) << 12 | second << 6 | third);
            text += 3;
        } else if (IsBetween(lead, 0xC2, 0xDF) && second <= 0x3F) {
            *out++ = static_cast<WCHAR>((lead & 0x1F) << 6 | second);
            text += 2;
        } else if (lead < 0x80 && second <= 0x7F) {
            *out++ = static_cast<WCHAR>(lead);
            ++text;
        } else {
            return;
        }
    }
}

int64_t Write(const Byte* text, const Byte* end, WCHAR* begin, int64_t size) {
    WCHAR* out = begin;
    while (text < end) {
        const int64_t room = size - (out - begin);
        const auto ascii =
            CopyAsciiBlocks(text, static_cast<ptrdiff_t>(std::min<int64_t>(end - text, room)), out);
        text += ascii;
        out += ascii;
        CopyShortCharacters(text, end, out, room - ascii);
        const Byte* stop = text + std::min(end - text, kAsciiBlock);
        while (text < stop) {
            const Byte* start = text;
            const unsigned value = TakeNext(text, end);
            if (size - (out - begin) < (value < kFirstBeyondUnit ? 1 : 2))
                return out - begin + Measure(start, end);
            out = Put(value, out);
        }
    }
    if (out - begin <= size)
        *out = 0;
    return out - begin;
}

}  // namespace

int DecodeUtf8(const char* text, int count, WCHAR* out, int out_size) {
    const auto* begin = reinterpret_cast<const Byte*>(text);
    const Byte* end = begin + count;
    const int64_t units = out != nullptr ? Write(begin, end, out, out_size) : Measure(begin, end);
    return units < std::numeric_limits<int>::max() ? static_cast<int>(units) : 0;
}

}  // namespace zelto
