// Reading the fields of a request or a sentence.

#ifndef ZELTO_TOOLS_ZELTO_NAVIGATOR_FIELDS_H
#define ZELTO_TOOLS_ZELTO_NAVIGATOR_FIELDS_H

#include <optional>
#include <string_view>

namespace zelto::navigator {

// Takes the text up to the next separator off the front of `rest`; the whole of it, leaving
// nothing, when there is none.
std::string_view TakeField(std::string_view& rest, char separator);

// The whole text as a finite number with "." as its decimal point, or nothing.
std::optional<double> ReadNumber(std::string_view text);

// The whole text as a decimal integer of 32 bits, or nothing.
std::optional<int> ReadInteger(std::string_view text);

}  // namespace zelto::navigator

#endif
