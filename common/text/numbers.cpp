#include "common/text/numbers.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "common/text/ascii.h"
#include "common/text/text_utils.h"

namespace zelto {
namespace {

// Unsigned all the way: an overflow wraps instead of being undefined.
template <class Unsigned>
Unsigned ReadDecimal(std::string_view text) {
    const bool negative = TakeSign(text);
    Unsigned value = 0;
    for (const char c : text) {
        if (!IsDigit(c))
            break;
        value = value * 10 + static_cast<Unsigned>(c - '0');
    }
    return negative ? Unsigned{0} - value : value;
}

// -1 for anything but a hexadecimal digit.
int HexDigit(char c) {
    if (IsDigit(c))
        return c - '0';
    const char lower = static_cast<char>(c | 0x20);
    return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

bool HasHexPrefix(std::string_view text) {
    return text.size() >= 2 && text[0] == '0' && text[1] == 'x';
}

uint32_t LooseHexDigit(char c) {
    if (c >= 'a' && c <= 'z')
        c = static_cast<char>(c - 'a' + 'A');
    const uint32_t byte = static_cast<unsigned char>(c);
    return IsDigit(c) ? byte - '0' : byte - '7';
}

// The decimals behind the point as a fraction. Digits past the range of a double add nothing.
double ReadFraction(const char* digits) {
    constexpr double kLargestScale = 1e300;
    double fraction = 0;
    double scale = 1;
    for (; IsDigit(*digits) && scale < kLargestScale; ++digits) {
        fraction = fraction * 10 + (*digits - '0');
        scale *= 10;
    }
    return fraction / scale;
}

}  // namespace

bool TakeSign(std::string_view& text) {
    size_t at = 0;
    while (at < text.size() && IsSpace(text[at]))
        ++at;
    const bool negative = at < text.size() && text[at] == '-';
    if (negative || (at < text.size() && text[at] == '+'))
        ++at;
    text.remove_prefix(at);
    return negative;
}

int32_t DecimalValue(std::string_view text) {
    return static_cast<int32_t>(ReadDecimal<uint32_t>(text));
}

int64_t DecimalValue64(std::string_view text) {
    return static_cast<int64_t>(ReadDecimal<uint64_t>(text));
}

uint32_t HexValue(std::string_view text) {
    const bool negative = TakeSign(text);
    if (HasHexPrefix(text) || (text.size() >= 2 && text[0] == '0' && text[1] == 'X'))
        text.remove_prefix(2);
    uint32_t value = 0;
    for (const char c : text) {
        const int digit = HexDigit(c);
        if (digit < 0)
            break;
        value = value * 16 + static_cast<uint32_t>(digit);
    }
    return negative ? 0 - value : value;
}

int32_t IntegerValue(std::string_view text) {
    if (HasHexPrefix(text))
        return static_cast<int32_t>(HexValue(text.substr(2)));
    return DecimalValue(text);
}

int32_t WholePart(double value) {
    if (std::isnan(value))
        return 0;
    constexpr double kLowest = std::numeric_limits<int32_t>::min();
    constexpr double kHighest = std::numeric_limits<int32_t>::max();
    return static_cast<int32_t>(std::clamp(value, kLowest, kHighest));
}

int32_t TextToInteger(const DString& text) {
    return IntegerValue(text.c_str());
}

int64_t TextToInt64(const DString& text) {
    constexpr size_t kLowDigits = 8;
    std::string_view digits = text.c_str();
    const bool negative = !digits.empty() && digits[0] == '-';
    if (negative)
        digits.remove_prefix(1);
    uint64_t value = 0;
    if (digits.size() > kLowDigits) {
        const std::string_view high = digits.substr(0, digits.size() - kLowDigits);
        const std::string_view low = digits.substr(high.size());
        value = static_cast<uint64_t>(DecimalValue64(high)) * 100000000U +
                static_cast<uint64_t>(DecimalValue64(low));
    } else {
        value = static_cast<uint64_t>(DecimalValue64(digits));
    }
    return static_cast<int64_t>(negative ? 0 - value : value);
}

uint32_t HexDigitsToInteger(const char* digits, int32_t count) {
    uint32_t value = 0;
    for (int32_t i = 0; digits != nullptr && i < count; ++i)
        value = value * 16 | LooseHexDigit(digits[i]);
    return value;
}

uint32_t HexToInteger(const DString& text) {
    std::string_view digits = text.c_str();
    if (digits.size() > 2 && HasHexPrefix(digits))
        digits.remove_prefix(2);
    return HexDigitsToInteger(digits.data(), static_cast<int32_t>(digits.size()));
}

double TextToDouble(const char* text, bool accept_comma) {
    if (text == nullptr)
        return 0;
    while (*text == ' ')
        ++text;
    const bool negative = *text == '-';
    if (negative)
        ++text;
    const std::string_view number = text;
    double value = DecimalValue(number);
    const size_t point = number.find_first_of(accept_comma ? ".," : ".");
    if (point != std::string_view::npos)
        value += ReadFraction(text + point + 1);
    return negative ? -value : value;
}

}  // namespace zelto
