// Letters, digits and blanks of ASCII, in units of any width and in no locale.

#ifndef ZELTO_PLATFORM_COREDLL_LINUX_BASE_ASCII_H
#define ZELTO_PLATFORM_COREDLL_LINUX_BASE_ASCII_H

#include <algorithm>
#include <string_view>

namespace zelto::coredll {

template <class Unit>
constexpr bool IsAsciiDigit(Unit unit) {
    return unit >= '0' && unit <= '9';
}

// What parts words on one line.
template <class Unit>
constexpr bool IsAsciiBlank(Unit unit) {
    return unit == ' ' || unit == '\t';
}

// A to Z as a to z, any other unit as it is.
template <class Unit>
constexpr Unit FoldAscii(Unit unit) {
    return unit >= 'A' && unit <= 'Z' ? static_cast<Unit>(unit + ('a' - 'A')) : unit;
}

// Whether the texts differ in the case of A to Z alone.
inline bool SameFolded(std::u16string_view a, std::u16string_view b) {
    return std::ranges::equal(a, b, {}, FoldAscii<char16_t>, FoldAscii<char16_t>);
}

}  // namespace zelto::coredll

#endif
