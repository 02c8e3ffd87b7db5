// The run-time library's text functions, in no locale. _vsnprintf is the host's formatter, given
// the device's dialect.

#include <clocale>
#include <cstring>
#include <locale.h>

#include "platform/coredll/api/crt.h"
#include "platform/coredll/linux/base/ascii.h"

using namespace zelto::coredll;

namespace {

// The "C" locale for this thread while it lives, so that a decimal point stays a point.
class FixedLocale {
  public:
    FixedLocale() : previous_(uselocale(Fixed())) {}
    ~FixedLocale() { uselocale(previous_); }
    FixedLocale(const FixedLocale&) = delete;
    FixedLocale& operator=(const FixedLocale&) = delete;

  private:
    static locale_t Fixed() {
        static const locale_t fixed = newlocale(LC_ALL_MASK, "C", locale_t{});
        return fixed;
    }

    locale_t previous_;
};

// The format with each I64 that stands before d i o u x X as "ll".
std::string HostFormat(const char* format) {
    std::string host;
    while (*format != '\0') {
        const size_t text = std::strcspn(format, "%");
        // The text before, the percent sign, and its flags, width and precision.
        const size_t head = format[text] == '\0' ? text : text + 1;
        const size_t options = head == text ? 0 : std::strspn(format + head, "-+ #0*.123456789");
        host.append(format, head + options);
        format += head + options;
        if (head == text || *format == '\0')
            continue;
        if (std::strncmp(format, "I64", 3) == 0 && format[3] != '\0' &&
            std::strchr("diouxX", format[3]) != nullptr) {
            host += "ll";
            format += 3;
        }
        host += *format++;  // also the second of "%%"
    }
    return host;
}

// What the host's formatter gives, with the last byte in the place of its NUL when the text takes
// the buffer to the full.
int FormatInto(char* buffer, size_t size, const char* format, va_list arguments) {
    va_list again;
    va_copy(again, arguments);
    const int length = std::vsnprintf(buffer, size, format, arguments);
    if (length > 0 && static_cast<size_t>(length) >= size && size > 0) {
        std::string whole(static_cast<size_t>(length), '\0');
        // NOLINTNEXTLINE(clang-analyzer-valist.Uninitialized): the check misses va_copy's effect
        std::vsnprintf(whole.data(), whole.size() + 1, format, again);
        std::memcpy(buffer, whole.data(), size);
    }
    va_end(again);
    return length < 0 || static_cast<size_t>(length) > size ? -1 : length;
}

unsigned char FoldedByte(char byte) {
    return FoldAscii(static_cast<unsigned char>(byte));
}

}  // namespace

int _vsnprintf(char* buffer, size_t size, const char* format, va_list arguments) {
    const FixedLocale fixed;
    if (std::strstr(format, "I64") == nullptr)
        return FormatInto(buffer, size, format, arguments);
    return FormatInto(buffer, size, HostFormat(format).c_str(), arguments);
}

int _stricmp(const char* a, const char* b) {
    return _strnicmp(a, b, SIZE_MAX);
}

int _strnicmp(const char* a, const char* b, size_t count) {
    for (; count > 0; --count, ++a, ++b) {
        const int difference = FoldedByte(*a) - FoldedByte(*b);
        if (difference != 0 || *a == '\0')
            return difference;
    }
    return 0;
}
