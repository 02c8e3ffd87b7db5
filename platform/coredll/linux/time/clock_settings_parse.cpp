#include <algorithm>
#include <iterator>

#include "platform/coredll/linux/base/text_scanner.h"
#include "platform/coredll/linux/base/unicode.h"
#include "platform/coredll/linux/time/calendar.h"
#include "platform/coredll/linux/time/clock_settings.h"
#include "platform/coredll/linux/time/clock_settings_words.h"
#include "platform/coredll/linux/time/zone_rule.h"

namespace zelto::coredll {
namespace {

constexpr int64_t kMaxOffsetSeconds = kMaxTicks / kTicksPerSecond - 1;

bool ReadSign(TextScanner& line) {
    const bool negative = line.Literal("-");
    if (!negative)
        line.Literal("+");
    return negative;
}

bool ReadBias(TextScanner& line, LONG& bias) {
    const bool negative = ReadSign(line);
    int64_t value = 0;
    if (!line.NumberUpTo(std::numeric_limits<LONG>::max(), value))
        return false;
    bias = static_cast<LONG>(negative ? -value : value);
    return true;
}

bool ReadOffset(TextScanner& line, int64_t& offset) {
    const bool negative = ReadSign(line);
    int64_t seconds = 0;
    int64_t fraction = 0;
    if (!line.NumberUpTo(kMaxOffsetSeconds, seconds) || !line.Literal(".") ||
        !line.Number(kFractionDigits, kFractionDigits, fraction))
        return false;
    const int64_t size = seconds * kTicksPerSecond + fraction;
    offset = negative ? -size : size;
    return true;
}

// The unit that "\\u" and four hexadecimal digits stand for, the backslash being read.
bool ReadUnit(TextScanner& line, char32_t& unit) {
    constexpr std::string_view kDigits = "0123456789ABCDEF";
    if (!line.Literal("u"))
        return false;
    unit = 0;
    for (int i = 0; i < 4; ++i) {
        const size_t digit = kDigits.find(line.Peek());
        if (line.AtEnd() || digit == std::string_view::npos)
            return false;
        unit = unit << 4 | static_cast<char32_t>(digit);
        line.Skip(1);
    }
    return unit != 0;
}

// One character of a name; a surrogate may come by its number.
bool ReadCharacter(TextScanner& line, char32_t& value) {
    if (line.Literal("\\")) {
        if (line.Peek() != '"' && line.Peek() != '\\')
            return ReadUnit(line, value);
        value = static_cast<unsigned char>(line.Peek());
        line.Skip(1);
        return true;
    }
    if (line.AtEnd())
        return false;
    const std::string_view rest = line.Rest();
    const Taken taken = TakeUtf8(reinterpret_cast<const unsigned char*>(rest.data()), rest.size());
    value = taken.value;
    line.Skip(taken.used);
    return value != kNoCharacter && value >= 0x20;
}

bool ReadName(TextScanner& line, WCHAR (&name)[32]) {
    size_t used = 0;
    if (!line.Literal("\""))
        return false;
    while (!line.Literal("\"")) {
        char32_t value = 0;
        WCHAR units[2];
        if (!ReadCharacter(line, value))
            return false;
        const size_t count = PutUtf16(value, units);
        if (used + count > std::size(name))
            return false;
        for (size_t i = 0; i < count; ++i)
            name[used++] = units[i];
    }
    return true;
}

bool ReadField(TextScanner& line, size_t least, size_t most, WORD& field) {
    int64_t value = 0;
    if (!line.Number(least, most, value) || value > std::numeric_limits<WORD>::max())
        return false;
    field = static_cast<WORD>(value);
    return true;
}

bool ReadTime(TextScanner& line, SYSTEMTIME& time) {
    return line.Literal(" at ") && ReadField(line, 2, 2, time.wHour) && line.Literal(":") &&
           ReadField(line, 2, 2, time.wMinute) && line.Literal(":") &&
           ReadField(line, 2, 2, time.wSecond) && line.Literal(".") &&
           ReadField(line, 3, 3, time.wMilliseconds);
}

bool ReadDated(TextScanner& line, SYSTEMTIME& date) {
    int64_t ticks = 0;
    if (!ReadField(line, 4, 5, date.wYear) || !line.Literal("-") ||
        !ReadField(line, 2, 2, date.wMonth) || !line.Literal("-") ||
        !ReadField(line, 2, 2, date.wDay) || !ReadTime(line, date) ||
        !TicksFromSystemTime(date, ticks))
        return false;
    date = SystemTimeFromTicks(ticks);  // with its weekday
    return true;
}

bool ReadYearly(TextScanner& line, SYSTEMTIME& date) {
    size_t week = 0;
    size_t weekday = 0;
    size_t month = 0;
    if (!line.OneOf(kWeeks, week) || !line.Literal(" ") || !line.OneOf(kWeekdays, weekday) ||
        !line.Literal(" of ") || !line.OneOf(kMonths, month))
        return false;
    date.wDay = static_cast<WORD>(week + 1);
    date.wDayOfWeek = static_cast<WORD>(weekday);
    date.wMonth = static_cast<WORD>(month + 1);
    return ReadTime(line, date);
}

bool ReadHalf(TextScanner& line, const HalfZone& half) {
    if (!ReadBias(line, half.bias) || !line.Literal(" ") || !ReadName(line, half.name) ||
        !line.Literal(" "))
        return false;
    if (line.Literal("once "))
        return ReadDated(line, half.date);
    return line.Literal("every ") ? ReadYearly(line, half.date) : line.Literal("never");
}

// The lines between the signature and the end mark.
class SettingsReader {
  public:
    bool ReadLine(TextScanner line) {
        size_t key = 0;
        if (!line.OneOf(kKeys, key) || (seen_ & (1u << key)) != 0)
            return false;
        seen_ |= 1u << key;
        return ReadValue(key, line) && line.AtEnd();
    }

    // Everything has been read: the settings, unless something is missing or no zone.
    bool Finish(ClockSettings& settings) {
        constexpr unsigned kWholeZone = 0b1110;
        if ((seen_ & kWholeZone) == kWholeZone && IsValidZone(zone_))
            settings_.zone = zone_;
        else if ((seen_ & kWholeZone) != 0)
            return false;
        settings = settings_;
        return true;
    }

  private:
    static constexpr std::string_view kKeys[] = {"offset ", "bias ", "standard ", "daylight "};

    bool ReadValue(size_t key, TextScanner& line) {
        switch (key) {
            case 0:
                return ReadOffset(line, settings_.offset);
            case 1:
                return ReadBias(line, zone_.Bias);
            case 2:
                return ReadHalf(line, StandardOf(zone_));
            default:
                return ReadHalf(line, DaylightOf(zone_));
        }
    }

    ClockSettings settings_;
    TIME_ZONE_INFORMATION zone_{};
    unsigned seen_ = 0;  // a bit for each key
};

}  // namespace

bool ParseClockSettings(std::string_view text, ClockSettings& settings) {
    SettingsReader reader;
    bool begun = false;
    bool ended = false;
    while (!text.empty()) {
        const std::string_view line = text.substr(0, text.find('\n'));
        text.remove_prefix(std::min(text.size(), line.size() + 1));
        if (line.empty() || line.front() == '#')
            continue;
        if (ended || (!begun && line != kSignature))
            return false;
        if (begun && line == kEndMark)
            ended = true;
        else if (begun && !reader.ReadLine(TextScanner(line)))
            return false;
        begun = true;
    }
    return ended && reader.Finish(settings);
}

}  // namespace zelto::coredll
