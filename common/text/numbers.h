// Lenient number reading over views. White space is blank, \t, \n, \v, \f and \r whatever the
// host's locale; text that is no number reads as 0.

#ifndef ZELTO_COMMON_TEXT_NUMBERS_H
#define ZELTO_COMMON_TEXT_NUMBERS_H

#include <cstdint>
#include <string_view>

namespace zelto {

// Takes white space and a sign off the front; true when the sign was a minus.
bool TakeSign(std::string_view& text);

// As atoi: white space, a sign, digits, the rest ignored. Wraps modulo 2^32, or 2^64.
int32_t DecimalValue(std::string_view text);
int64_t DecimalValue64(std::string_view text);

// As "%X": white space, a sign, "0x", digits of either case, the rest ignored. Wraps modulo 2^32.
uint32_t HexValue(std::string_view text);

// What TextToInteger (text_utils.h) does: "0x" in front makes it hexadecimal.
int32_t IntegerValue(std::string_view text);

// The whole part, saturated to 32 bits; 0 for a not-a-number.
int32_t WholePart(double value);

}  // namespace zelto

#endif
