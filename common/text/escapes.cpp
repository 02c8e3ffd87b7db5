// Byte encodings, in place: encoders widen the text from its end backward, decoders narrow it from
// its front, so neither needs a second buffer.

#include <algorithm>
#include <cstddef>
#include <cstring>

#include "common/text/ascii.h"
#include "common/text/text_utils.h"

namespace zelto {
namespace {

constexpr char kHexDigits[] = "0123456789ABCDEF";

void PutHexByte(char* out, char c) {
    const auto byte = static_cast<unsigned char>(c);
    out[0] = kHexDigits[byte >> 4];
    out[1] = kHexDigits[byte & 15];
}

// Turns the `count` bytes at `text`, which has room for 2 * count + 1, into their digits.
void ExpandToHex(char* text, ptrdiff_t count) {
    text[2 * count] = 0;
    for (ptrdiff_t i = count - 1; i >= 0; --i)
        PutHexByte(text + 2 * i, text[i]);
}

// Both buffers hold at least `capacity` bytes; none that was never allocated is looked at.
int32_t HexByteCount(const DString& text, int32_t count) {
    return count < 0 ? text.length() : std::min(count, static_cast<int32_t>(text.capacity()));
}

template <class IsKept>
void PercentEncodeBytes(DString& text, IsKept is_kept) {
    const int length = text.length();
    const char* old = text.c_str();
    const auto escaped =
        static_cast<int>(std::count_if(old, old + length, [&](char c) { return !is_kept(c); }));
    if (escaped == 0)
        return;
    const int new_length = length + 2 * escaped;
    char* bytes = text.buffer(new_length);
    char* out = bytes + new_length;
    *out = 0;
    for (int i = length - 1; i >= 0; --i) {
        const char c = bytes[i];
        if (is_kept(c)) {
            *--out = c;
        } else {
            out -= 3;
            out[0] = '%';
            PutHexByte(out + 1, c);
        }
    }
}

bool IsPlain(char c) {
    return IsLetter(c) || IsDigit(c) || c == ' ';
}

bool IsListSafe(char c) {
    return c != ',' && c != '\r' && c != '\n' && c != '%';
}

// A NUL would end the text early and is left out.
char* PutByte(char* out, uint32_t value) {
    const auto byte = static_cast<unsigned char>(value);
    if (byte != 0)
        *out++ = static_cast<char>(byte);
    return out;
}

}  // namespace

void HexEncode(DString& text, int32_t count) {
    const int32_t bytes = HexByteCount(text, count);
    if (bytes == 0)
        text.clear();
    else
        ExpandToHex(text.buffer(2 * bytes), bytes);
}

DString& HexEncodeCopy(const DString& source, DString& target, int32_t count) {
    const int32_t bytes = HexByteCount(source, count);
    if (bytes == 0) {
        target.clear();
        return target;
    }
    char* copy = target.buffer(2 * bytes);
    std::memmove(copy, source.c_str(), static_cast<size_t>(bytes));
    ExpandToHex(copy, bytes);
    return target;
}

void PercentEncode(DString& text) {
    PercentEncodeBytes(text, IsPlain);
}

void EscapeListChars(DString& text) {
    PercentEncodeBytes(text, IsListSafe);
}

void PercentDecode(DString& text) {
    const int length = text.length();
    if (length == 0)
        return;
    char* bytes = text.at(0);
    char* out = bytes;
    for (int i = 0; i < length; ++i) {
        if (bytes[i] == '%') {
            const int digits = std::min(2, length - i - 1);
            out = PutByte(out, HexDigitsToInteger(bytes + i + 1, digits));
            i += digits;
        } else {
            *out++ = bytes[i] == '+' ? ' ' : bytes[i];
        }
    }
    *out = 0;
}

void UnescapePercent(DString& text) {
    if (text.find('%') < 0)
        return;
    const int length = text.length();
    char* bytes = text.at(0);
    char* out = bytes;
    for (int i = 0; i < length; ++i) {
        if (bytes[i] != '%') {
            *out++ = bytes[i];
        } else if (i + 2 < length) {
            out = PutByte(out, HexDigitsToInteger(bytes + i + 1, 2));
            i += 2;
        }
    }
    *out = 0;
}

}  // namespace zelto
