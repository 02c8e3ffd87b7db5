// Cutting the lines of a text reader into tokens and numbers.
//
// A token takes a whole line, is what stands before its first delimiter, and puts the rest back, to
// be read by the same rules. The rest is held where it is: as long as reading it again would yield
// the same text, the next token is taken from there, at the cost of its own length.

#include <algorithm>

#include "common/files/text_reader.h"
#include "common/files/text_scan.h"
#include "common/text/numbers.h"

namespace zelto {
namespace {

constexpr double kPowersOfTen[] = {1e0, 1e1, 1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                   1e8, 1e9, 1e10, 1e11, 1e12, 1e13, 1e14, 1e15};
constexpr size_t kExactDigits = 15;  // of a whole number that a double holds, whatever they are

// In the manner of atoi, with no end of the range. The first 19 digits are one whole number, so
// that what was written from a double gives that one.
double WholeNumber(std::string_view text) {
    constexpr uint64_t kMostToJoin = UINT64_MAX / 10 - 1;
    const bool negative = TakeSign(text);
    uint64_t front = 0;
    size_t at = 0;
    for (; at < text.size() && IsDigit(text[at]) && front <= kMostToJoin; ++at)
        front = front * 10 + static_cast<uint64_t>(text[at] - '0');
    auto value = static_cast<double>(front);
    for (; at < text.size() && IsDigit(text[at]); ++at)
        value = value * 10 + (text[at] - '0');
    return negative ? -value : value;
}

// The decimals behind the point. Digits past the range of a double add nothing.
double Fraction(std::string_view digits) {
    constexpr double kLargestScale = 1e300;
    double fraction = 0;
    double scale = 1;
    for (const char c : digits) {
        if (!IsDigit(c) || scale >= kLargestScale)
            break;
        fraction = fraction * 10 + (c - '0');
        scale *= 10;
    }
    return fraction / scale;
}

// What TextToDouble (text_utils.h) reads, but for a whole part beyond 32 bits.
double NumberOf(std::string_view text) {
    text.remove_prefix(std::min(text.find_first_not_of(' '), text.size()));
    const bool negative = text.starts_with('-');
    text.remove_prefix(negative ? 1 : 0);
    double value = WholeNumber(text);
    const size_t point = text.find('.');
    if (point != std::string_view::npos)
        value += Fraction(text.substr(point + 1));
    return negative ? -value : value;
}

}  // namespace

void TextReader::OwnHeldLine() {
    if (!held_.is_held)
        return;
    held_.is_held = false;
    std::string line(held_.Rest());
    line.push_back(held_.end);
    put_back_.PutBack(line, true);
}

inline void TextReader::TakeOfHeld(size_t count) {
    held_.at += count;
    if (!held_.is_plain) [[unlikely]]
        OwnHeldLine();
}

inline void TextReader::TakeHeldLine() {
    held_.is_held = false;
    previous_ = '\0';
    CountEnd(held_.end);
}

std::string_view TextReader::ReadToken() {
    return ReachToken() ? TakeToken() : "";
}

// Has a line held whose next token stands at its front. False at the end of the input, and for a
// line that is "VOID".
bool TextReader::ReachToken() {
    return SkipToToken() || HoldNextLine();
}

// Drops the blanks at the front of the held line, and a "VOID" that is all of it. Whether a token
// is left there.
bool TextReader::SkipToToken() {
    if (!held_.is_held)
        return false;
    const std::string_view rest = held_.Rest();
    const size_t blanks = CountBlanks(rest);
    held_.at += rest.substr(blanks) == "VOID" ? rest.size() : blanks;
    return blanks < rest.size();
}

// Reads a line and puts all of it back, uncounted, with the end that it had, so that an LF behind
// a CR is still met behind it. A line without one gets an LF.
bool TextReader::HoldNextLine() {
    CollectLine(0);
    if (line_.empty())
        return false;
    --line_count_;
    const char* start = line_.data();
    // A conversion may have made a character that ends a line.
    const bool is_plain = !line_was_recoded_ || CountText(line_) == line_.size();
    held_ = {true,     is_plain, line_end_ == '\r' ? '\r' : '\n', start, start + line_.size(),
             readable_};
    return true;
}

std::string_view TextReader::TakeToken() {
    const std::string_view line = held_.Rest();
    size_t size = 0;
    while (size < line.size() && !delimiters_.Contains(line[size]))
        ++size;
    if (size < line.size())
        TakeOfHeld(size);
    else
        TakeHeldLine();
    return line.substr(0, size);
}

// Takes the held line's front up to where a number ends, if a token ends there as well.
inline bool TextReader::EndNumber(const char* stop) {
    if (stop > held_.stop || (stop < held_.stop && !delimiters_.Contains(*stop)))
        return false;
    if (stop == held_.stop)
        TakeHeldLine();
    else
        TakeOfHeld(static_cast<size_t>(stop - held_.at));
    return true;
}

// Takes a token that is digits with or without a sign, and the blanks before it, off the held line.
// False, and nothing taken, when there stands anything else or the line's end is too near.
inline bool TextReader::TakeInteger(uint64_t& value) {
    const char* digits = held_.at + CountBlanks(held_.Rest());
    if (held_.readable - digits < kDecimalRoom)
        return false;
    const char* stop = ReadDecimal(digits, held_.stop, value);
    return stop != digits && EndNumber(stop);
}

uint64_t TextReader::ReadInteger() {
    uint64_t value = 0;
    if (held_.is_held && TakeInteger(value))
        return value;
    if (!ReachToken())
        return 0;
    if (TakeInteger(value))
        return value;
    const std::string_view token = TakeToken();
    return token.starts_with("0x") ? HexValue(token.substr(2))
                                   : static_cast<uint64_t>(DecimalValue64(token));
}

// Likewise with a fraction. Few enough digits are one whole number each before they are joined,
// which gives what joining them one by one gives.
inline bool TextReader::TakeFixedPoint(double& value) {
    const char* start = held_.at + CountBlanks(held_.Rest());
    if (held_.readable - start < kDecimalRoom)
        return false;
    const char* digits = start + (*start == '-' ? 1 : 0);
    uint64_t whole = 0;
    const char* stop = ReadDigits(digits, held_.stop, whole);
    const auto whole_digits = static_cast<size_t>(stop - digits);
    if (whole_digits == 0 || whole_digits > kExactDigits || stop > held_.stop)
        return false;
    value = static_cast<double>(whole);
    if (stop < held_.stop && *stop == '.') {
        const char* decimals = stop + 1;
        uint64_t fraction = 0;
        if (held_.readable - decimals < kDecimalRoom)
            return false;
        stop = ReadDigits(decimals, held_.stop, fraction);
        const auto count = static_cast<size_t>(stop - decimals);
        if (count > kExactDigits)
            return false;
        value += static_cast<double>(fraction) / kPowersOfTen[count];
    }
    value = digits == start ? value : -value;
    return EndNumber(stop);
}

double TextReader::ReadNumber() {
    double value = 0;
    if (held_.is_held && TakeFixedPoint(value))
        return value;
    if (!ReachToken())
        return 0;
    return TakeFixedPoint(value) ? value : NumberOf(TakeToken());
}

}  // namespace zelto
