// UTF-8, as programs are given it, and UTF-16, as the system takes it.

#ifndef ZELTO_TOOLS_TEXT_WIDE_H
#define ZELTO_TOOLS_TEXT_WIDE_H

#include <string>
#include <string_view>

namespace zelto::tools {

// Bytes of the UTF-8 character at the front of `text`: 1 to 4, or 0 where there is none (empty,
// cut short, overlong, a surrogate, beyond U+10FFFF).
size_t Utf8CharacterSize(std::string_view text);

bool IsUtf8(std::string_view text);

// False, with `wide` untouched, where the text is not UTF-8.
bool WideFromUtf8(std::string_view text, std::u16string& wide);

// Half surrogate pairs become U+FFFD.
std::string Utf8FromWide(std::u16string_view wide);

// The longest front part of at most `limit` bytes that does not cut a character.
std::string_view CutUtf8(std::string_view text, size_t limit);

// Fit for one line of a terminal: line breaks, control characters and bytes that are not UTF-8 are
// written as \n or \x1b.
std::string Printable(std::string_view text);

}  // namespace zelto::tools

#endif
