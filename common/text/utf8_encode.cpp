#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>

#include "common/text/ascii_run.h"
#include "common/text/utf8.h"

namespace zelto {
namespace {

constexpr int64_t kMostBytes = 4;  // of one character

constexpr bool IsHighSurrogate(unsigned unit) {
    return (unit & 0xFC00) == 0xD800;
}

constexpr bool IsLowSurrogate(unsigned unit) {
    return (unit & 0xFC00) == 0xDC00;
}

constexpr char Tail(unsigned bits) {
    return static_cast<char>(0x80 | (bits & 0x3F));
}

int64_t Measure(const WCHAR* text, const WCHAR* end) {
    int64_t bytes = end - text;
    for (; text < end; ++text) {
        const unsigned unit = *text;
        bytes += (unit >= 0x80 ? 1 : 0) + (unit >= 0x800 ? 1 : 0) + (IsHighSurrogate(unit) ? 1 : 0);
    }
    return bytes;
}

// Writes the next character of the text and returns the end of its bytes.
inline char* PutNext(const WCHAR*& text, const WCHAR* end, char* out) {
    const unsigned unit = *text++;
    if (unit < 0x80) {
        *out++ = static_cast<char>(unit);
    } else if (unit < 0x800) {
        *out++ = static_cast<char>(0xC0 | unit >> 6);
        *out++ = Tail(unit);
    } else if (!IsHighSurrogate(unit)) {
        *out++ = static_cast<char>(0xE0 | unit >> 12);
        *out++ = Tail(unit >> 6);
        *out++ = Tail(unit);
    } else if (text < end && IsLowSurrogate(*text)) {
        const unsigned low = *text++;
        *out++ = static_cast<char>(0xF3);
        *out++ = Tail(unit >> 2);
        *out++ = Tail((unit & 3) | low >> 6);
        *out++ = Tail(low);
    } else {
        *out++ = '?';
    }
    return out;
}

// As PutNext into `room` bytes; null, and the text where it was, when that is too few.
char* PutNextWithin(const WCHAR*& text, const WCHAR* end, char* out, int64_t room) {
    char bytes[kMostBytes];
    const WCHAR* next = text;
    const auto count = PutNext(next, end, bytes) - bytes;
    if (room < (IsHighSurrogate(*text) ? kMostBytes : count))
        return nullptr;
    std::memcpy(out, bytes, static_cast<size_t>(count));
    text = next;
    return out + count;
}

int64_t Write(const WCHAR* text, const WCHAR* end, char* begin, int64_t size) {
    char* out = begin;
    PatientBlock block;
    while (text < end) {
        int64_t room = size - (out - begin);
        const auto ascii =
            CopyAsciiBlocks(text, static_cast<ptrdiff_t>(std::min<int64_t>(end - text, room)), out);
        text += ascii;
        out += ascii;
        room -= ascii;
        const auto safe = static_cast<ptrdiff_t>(room / kMostBytes);
        if (safe > 0) {
            const WCHAR* stop = text + std::min({end - text, block.Next(ascii), safe});
            while (text < stop)
                out = PutNext(text, end, out);
        } else if (text < end) {
            out = PutNextWithin(text, end, out, room);
            if (out == nullptr)
                return size - room + Measure(text, end);
        }
    }
    if (out - begin <= size)
        *out = 0;
    return out - begin;
}

}  // namespace

int EncodeUtf8(const WCHAR* text, int count, char* out, int out_size) {
    const WCHAR* end = text + count;
    const int64_t bytes = out != nullptr ? Write(text, end, out, out_size) : Measure(text, end);
    return bytes < std::numeric_limits<int>::max() ? static_cast<int>(bytes) : 0;
}

}  // namespace zelto
