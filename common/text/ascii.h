// Classes of ASCII characters, the same in every locale. What is above 127 belongs to none.

#ifndef ZELTO_COMMON_TEXT_ASCII_H
#define ZELTO_COMMON_TEXT_ASCII_H

namespace zelto {

// What parts the words of a line.
constexpr bool IsBlank(char c) {
    return c == ' ' || c == '\t';
}

// Blanks, line ends, vertical tabulator and form feed.
constexpr bool IsSpace(char c) {
    return c == ' ' || (c >= '\t' && c <= '\r');
}

constexpr bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}

constexpr bool IsLetter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

}  // namespace zelto

#endif
