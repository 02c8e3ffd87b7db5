#include "common/time/date_parse.h"

#include <algorithm>
#include <charconv>
#include <limits>
#include <string_view>
#include <utility>

#include "common/text/ascii.h"
#include "common/text/numbers.h"
#include "common/text/token_scanner.h"
#include "common/time/month_names.h"
#include "platform/coredll/coredll.h"

namespace zelto {
namespace {

constexpr ByteSet kDayFirstSeparators("-/.");
constexpr ByteSet kYearFirstSeparators("-/.:");
constexpr ByteSet kDateTimeSeparators("-/.: ");

// Ends in a NUL behind its end.
std::string_view View(const char* text) {
    return text != nullptr ? text : "";
}

// True when the text has all `count` fields; the last one takes what is left.
template <int count>
bool ReadFields(std::string_view text, const ByteSet& separators, int32_t (&fields)[6]) {
    TokenScanner scanner(text, separators, count, false);
    Token token;
    for (int i = 0; i < count; ++i) {
        if (!scanner.Next(token))
            return false;
        fields[i] = IntegerValue(token.Whole());
    }
    return true;
}

int32_t PivotYear(int32_t year) {
    if (year < 0 || year >= 100)
        return year;
    return year < 51 ? year + 2000 : year + 1900;
}

void SetDate(DDateTime& out, int32_t day, int32_t month, int32_t year) {
    out.day = day;
    out.month = month;
    out.year = PivotYear(year);
}

bool AcceptDayMonthYear(DDateTime& out, int32_t day, int32_t month, int32_t year) {
    if (day < 1 || month < 1)
        return false;
    if (month > 12 && day < 12)
        std::swap(day, month);
    SetDate(out, day, month, year);
    return true;
}

bool AcceptYearMonthDay(DDateTime& out, int32_t year, int32_t month, int32_t day) {
    if (day < 1 || day > 31 || month < 1 || month > 12)
        return false;
    SetDate(out, day, month, year);
    return true;
}

bool AcceptDateAndTime(DDateTime& out, const int32_t (&fields)[6]) {
    if (!AcceptYearMonthDay(out, fields[0], fields[1], fields[2]))
        return false;
    out.hour = fields[3];
    out.minute = fields[4];
    out.seconds = static_cast<float>(fields[5]);
    return true;
}

// Above 9 for anything but a digit.
uint32_t DigitOf(char c) {
    return static_cast<uint32_t>(static_cast<unsigned char>(c)) - '0';
}

// The usual texts in one pass: nothing but digits with single separators, the first two such as
// every form splits at. Then all forms see these same numbers, and the first three also those that
// stop at the third. Returns how many, 3 or 6; 0 leaves the text to the general rule.
int ReadPlainNumbers(const char* at, int32_t (&fields)[6]) {
    for (int count = 1; count <= 6; ++count) {
        uint32_t digit = DigitOf(*at);
        if (digit > 9)
            return 0;
        uint32_t value = 0;
        for (; digit <= 9; digit = DigitOf(*++at))
            value = value * 10 + digit;
        fields[count - 1] = static_cast<int32_t>(value);
        if (*at == 0)
            return count == 3 || count == 6 ? count : 0;
        const ByteSet& separators = count < 3 ? kDayFirstSeparators : kDateTimeSeparators;
        if (!separators.Contains(*at++))
            return 0;
    }
    return 0;
}

bool ReadDayMonthYear(DDateTime& out, std::string_view text) {
    int32_t fields[6];
    return (ReadPlainNumbers(text.data(), fields) != 0 ||
            ReadFields<3>(text, kDayFirstSeparators, fields)) &&
           AcceptDayMonthYear(out, fields[0], fields[1], fields[2]);
}

bool ReadYearMonthDay(DDateTime& out, std::string_view text) {
    int32_t fields[6];
    return (ReadPlainNumbers(text.data(), fields) != 0 ||
            ReadFields<3>(text, kYearFirstSeparators, fields)) &&
           AcceptYearMonthDay(out, fields[0], fields[1], fields[2]);
}

bool ReadYearMonthDayTime(DDateTime& out, std::string_view text, const ByteSet& separators) {
    int32_t fields[6];
    return ReadFields<6>(text, separators, fields) && AcceptDateAndTime(out, fields);
}

// What stands from `column` on, at most `count` characters; empty past the end.
std::string_view Columns(std::string_view text, size_t column, size_t count) {
    return column < text.size() ? text.substr(column, count) : std::string_view();
}

// 0 to 12, or 13 when the name is none of theirs.
int32_t FindMonth(std::string_view name) {
    int32_t month = 0;
    while (month < 13 &&
           (name.size() != 3 || _strnicmp(name.data(), MonthAbbreviation(month), name.size()) != 0))
        ++month;
    return month;
}

bool ReadDayMonthNameYear(DDateTime& out, std::string_view text) {
    out.day = DecimalValue(text.substr(0, 2));
    out.month = FindMonth(Columns(text, 3, 3));
    if (out.month == 13) {
        out.month = 0;
        return false;
    }
    const int32_t year = DecimalValue(Columns(text, 7, 5));
    out.year = out.day >= 1 && out.month >= 1 ? PivotYear(year) : year;
    return true;
}

// The leading number of at most 15 characters: so short, it leaves the range of a double only by
// its exponent. Infinities, not-a-numbers and hexadecimal, which the host's atof might read, are 0.
double ReadSeconds(std::string_view text) {
    std::string_view number = text.substr(0, 15);
    const bool negative = TakeSign(number);
    if (number.empty() || !(IsDigit(number[0]) || number[0] == '.'))
        return 0;
    double value = 0;
    const auto result = std::from_chars(number.data(), number.data() + number.size(), value);
    if (result.ec == std::errc::result_out_of_range && number.find('-') == std::string_view::npos)
        value = std::numeric_limits<double>::infinity();
    return negative ? -value : value;
}

// A finite double beyond the range of a float would have no defined conversion.
float Narrow(double value) {
    constexpr float kInfinity = std::numeric_limits<float>::infinity();
    constexpr double kLargest = std::numeric_limits<float>::max();
    if (value > kLargest)
        return kInfinity;
    return value < -kLargest ? -kInfinity : static_cast<float>(value);
}

// The usual text, HH:MM:SS and nothing else.
bool ReadPlainTime(DDateTime& out, std::string_view text) {
    if (text.size() != 8 || text[2] != ':' || text[5] != ':')
        return false;
    uint32_t fields[3];
    for (size_t i = 0; i < 3; ++i) {
        const uint32_t tens = DigitOf(text[3 * i]);
        const uint32_t ones = DigitOf(text[3 * i + 1]);
        if (tens > 9 || ones > 9)
            return false;
        fields[i] = tens * 10 + ones;
    }
    out.hour = static_cast<int32_t>(fields[0]);
    out.minute = static_cast<int32_t>(fields[1]);
    out.seconds = static_cast<float>(fields[2]);
    return true;
}

bool IsTimeOfDay(const DDateTime& value) {
    return value.hour < 24 && value.minute < 60 && value.seconds < 60.0F;
}

bool ReadTimeOfDay(DDateTime& out, std::string_view text) {
    if (ReadPlainTime(out, text))
        return IsTimeOfDay(out);
    const bool negative = !text.empty() && text[0] == '-';
    if (negative)
        text.remove_prefix(1);
    text.remove_prefix(std::min(text.find_first_not_of(" \t"), text.size()));
    const size_t first = text.find(':');
    if (first == std::string_view::npos)
        return false;
    const size_t second = text.find(':', first + 1);
    if (second == std::string_view::npos)
        return false;
    const int32_t hours = DecimalValue(text.substr(0, 2));
    out.hour = negative ? -hours : hours;
    out.minute = DecimalValue(text.substr(first + 1, 2));
    out.seconds = Narrow(ReadSeconds(text.substr(second + 1)));
    return IsTimeOfDay(out);
}

bool ReadTimeAfterBlank(DDateTime& out, std::string_view text) {
    const size_t blank = text.find(' ');
    return blank != std::string_view::npos && ReadTimeOfDay(out, text.substr(blank + 1));
}

}  // namespace

bool ParseDayMonthYear(DDateTime& out, const char* text) {
    return ReadDayMonthYear(out, View(text));
}

bool ParseYearMonthDay(DDateTime& out, const char* text) {
    return ReadYearMonthDay(out, View(text));
}

bool ParseYearMonthDayTime(DDateTime& out, const char* text, const char* separators) {
    int32_t fields[6];
    if (separators == nullptr && text != nullptr && ReadPlainNumbers(text, fields) == 6)
        return AcceptDateAndTime(out, fields);
    if (separators == nullptr)
        return ReadYearMonthDayTime(out, View(text), kDateTimeSeparators);
    return ReadYearMonthDayTime(out, View(text), ByteSet(separators));
}

bool ParseDate(DDateTime& out, const char* text) {
    int32_t fields[6];
    const int count = text != nullptr ? ReadPlainNumbers(text, fields) : 0;
    if (count == 0) {
        const std::string_view view = View(text);
        return ReadYearMonthDayTime(out, view, kDateTimeSeparators) ||
               ReadYearMonthDay(out, view) || ReadDayMonthYear(out, view);
    }
    return (count == 6 && AcceptDateAndTime(out, fields)) ||
           AcceptYearMonthDay(out, fields[0], fields[1], fields[2]) ||
           AcceptDayMonthYear(out, fields[0], fields[1], fields[2]);
}

bool ParseDayMonthNameYear(DDateTime& out, const char* text) {
    return ReadDayMonthNameYear(out, View(text));
}

bool ParseTimeOfDay(DDateTime& out, const char* text) {
    return ReadTimeOfDay(out, View(text));
}

bool ParseDayMonthYearThenTime(DDateTime& out, const char* text) {
    const std::string_view view = View(text);
    return ReadDayMonthYear(out, view) && ReadTimeAfterBlank(out, view);
}

bool ParseDayMonthNameYearThenTime(DDateTime& out, const char* text) {
    const std::string_view view = View(text);
    return ReadDayMonthNameYear(out, view) && ReadTimeAfterBlank(out, view);
}

bool ParseDuration(DDuration& out, const char* text) {
    std::string_view rest = View(text);
    const bool negative = !rest.empty() && rest[0] == '-';
    if (negative)
        rest.remove_prefix(1);
    const size_t colon = rest.find(':');
    if (colon == std::string_view::npos || colon == 0)
        return false;
    const int64_t hours = DecimalValue(rest.substr(0, colon));
    rest.remove_prefix(colon + 1);
    const size_t second = rest.find(':');
    out.seconds = 0.0;
    if (second != std::string_view::npos && second != 0) {
        const int64_t minutes = DecimalValue(rest.substr(0, second));
        const int64_t seconds = DecimalValue(rest.substr(second + 1));
        const auto total = static_cast<double>(hours * 3600 + minutes * 60 + seconds);
        out.seconds = negative ? -total : total;
    }
    return true;
}

}  // namespace zelto
