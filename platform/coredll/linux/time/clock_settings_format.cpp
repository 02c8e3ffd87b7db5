#include <iterator>

#include "platform/coredll/linux/base/unicode.h"
#include "platform/coredll/linux/time/calendar.h"
#include "platform/coredll/linux/time/clock_settings.h"
#include "platform/coredll/linux/time/clock_settings_words.h"

namespace zelto::coredll {
namespace {

std::string Padded(int64_t value, size_t width) {
    std::string digits = std::to_string(value);
    if (digits.size() < width)
        digits.insert(0, width - digits.size(), '0');
    return digits;
}

std::string FormatUnit(WCHAR unit) {
    constexpr char kDigits[] = "0123456789ABCDEF";
    std::string text = "\\u";
    for (int shift = 12; shift >= 0; shift -= 4)
        text += kDigits[(unit >> shift) & 0xF];
    return text;
}

std::string FormatName(const WCHAR (&name)[32]) {
    std::string text = "\"";
    for (size_t at = 0; at < std::size(name) && name[at] != 0;) {
        const Taken taken = TakeUtf16(name + at, std::size(name) - at);
        if (taken.value == kNoCharacter || taken.value < 0x20 || taken.value == 0x7F) {
            text += FormatUnit(name[at]);
        } else {
            if (taken.value == '"' || taken.value == '\\')
                text += '\\';
            unsigned char bytes[4];
            const size_t count = PutUtf8(taken.value, bytes);
            text.append(reinterpret_cast<const char*>(bytes), count);
        }
        at += taken.used;
    }
    return text + '"';
}

std::string FormatTime(const SYSTEMTIME& time) {
    return " at " + Padded(time.wHour, 2) + ':' + Padded(time.wMinute, 2) + ':' +
           Padded(time.wSecond, 2) + '.' + Padded(time.wMilliseconds, 3);
}

std::string FormatTransition(const SYSTEMTIME& date) {
    if (date.wMonth == 0)
        return "never";
    if (date.wYear != 0) {
        return "once " + Padded(date.wYear, 4) + '-' + Padded(date.wMonth, 2) + '-' +
               Padded(date.wDay, 2) + FormatTime(date);
    }
    std::string text = "every ";
    text.append(kWeeks[date.wDay - 1]).append(" ").append(kWeekdays[date.wDayOfWeek]);
    return text.append(" of ").append(kMonths[date.wMonth - 1]) + FormatTime(date);
}

std::string FormatHalf(const HalfZone& half) {
    return ' ' + std::to_string(half.bias) + ' ' + FormatName(half.name) + ' ' +
           FormatTransition(half.date) + '\n';
}

std::string FormatOffset(int64_t offset) {
    const int64_t size = offset < 0 ? -offset : offset;
    return (offset < 0 ? "-" : "+") + std::to_string(size / kTicksPerSecond) + '.' +
           Padded(size % kTicksPerSecond, kFractionDigits);
}

}  // namespace

std::string FormatClockSettings(const ClockSettings& settings) {
    std::string text(kSignature);
    text += "\noffset " + FormatOffset(settings.offset) + '\n';
    if (settings.zone) {
        TIME_ZONE_INFORMATION zone = *settings.zone;
        text += "bias " + std::to_string(zone.Bias) + '\n';
        text += "standard" + FormatHalf(StandardOf(zone));
        text += "daylight" + FormatHalf(DaylightOf(zone));
    }
    return text.append(kEndMark) + '\n';
}

}  // namespace zelto::coredll
