// Numbers as text.

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdarg>
#include <cstring>

#include "common/text/codepage.h"
#include "common/text/dstring.h"

namespace zelto {
namespace {

constexpr size_t kLongestInteger = 20;  // -9223372036854775808

template <class Integer>
int PutDigits(char (&digits)[kLongestInteger], Integer value) {
    return static_cast<int>(std::to_chars(digits, digits + kLongestInteger, value).ptr - digits);
}

// The magnitude that is written for a value: within the range of an int64_t, never NaN.
double Writable(double value) {
    constexpr double kLargest = 9223372036854774784.0;  // the largest double below 2^63
    return std::isnan(value) ? 0.0 : std::min(std::fabs(value), kLargest);
}

}  // namespace

DString& DString::append_int32(int32_t value) {
    char digits[kLongestInteger];
    return append(digits, PutDigits(digits, value), 1);
}

DString& DString::append_int64(int64_t value) {
    char digits[kLongestInteger];
    const int n = PutDigits(digits, value);
    adopt_codepage(CurrentCodepage());
    return append(digits, n, 0);
}

DString& DString::operator+=(double value) {
    const double magnitude = Writable(value);
    const auto whole = static_cast<int64_t>(magnitude);
    char digits[kLongestInteger];
    const int whole_digits = PutDigits(digits, whole);
    const int fraction_digits = decimals() >= 0 ? decimals() : 1;
    const int sign = value < 0 ? 1 : 0;

    adopt_codepage(CurrentCodepage());
    const int start = length();
    const int total = sign + whole_digits + (fraction_digits > 0 ? 1 + fraction_digits : 0);
    reserve(start + total, true);
    char* out = text_ + start;
    if (sign != 0)
        *out++ = '-';
    std::memcpy(out, digits, static_cast<size_t>(whole_digits));
    out += whole_digits;
    if (fraction_digits > 0)
        *out++ = '.';
    double fraction = magnitude - static_cast<double>(whole);
    for (int i = 0; i < fraction_digits; ++i) {
        fraction *= 10;
        const int digit = static_cast<int>(fraction);
        *out++ = static_cast<char>('0' + digit);
        fraction -= digit;
    }
    end_at(start + total);
    return *this;
}

int DString::format(const char* format, ...) {
    constexpr size_t kScratch = 1000;
    char scratch[kScratch] = {};
    va_list arguments;
    va_start(arguments, format);
    const int count = _vsnprintf(scratch, kScratch - 1, format, arguments);
    va_end(arguments);
    const int length = static_cast<int>(std::strlen(scratch));
    put(0, scratch, length, length, true);
    return count;
}

}  // namespace zelto
