#include "common/time/layout_writer.h"

namespace zelto {

LayoutWriter& LayoutWriter::Number(int32_t value, int width, char padding) {
    constexpr int kMostDigits = 10;
    char digits[kMostDigits];
    int count = 0;
    const bool negative = value < 0;
    auto magnitude = static_cast<uint32_t>(value);
    if (negative)
        magnitude = 0 - magnitude;
    do {
        digits[count++] = static_cast<char>('0' + magnitude % 10);
        magnitude /= 10;
    } while (magnitude != 0);

    int pad = width - count - (negative ? 1 : 0);
    if (negative && padding == '0')
        *end_++ = '-';
    for (; pad > 0; --pad)
        *end_++ = padding;
    if (negative && padding != '0')
        *end_++ = '-';
    while (count > 0)
        *end_++ = digits[--count];
    return *this;
}

}  // namespace zelto
