// The shared toolbox over 8-bit text: splitting into fields, lenient number reading, hexadecimal
// and percent encodings, tagged text.
//
// Conventions:
//  1. Everything works on bytes; no operation knows codepages or multi-byte characters, and none
//     depends on the host's locale.
//  2. Nothing fails on content: what is not a number reads as 0 or as far as it goes.
//  3. In-place operations keep the string's codepage tag and decimals and grow its buffer at most
//     once, without a second one. A NUL byte that a decoder would produce is left out.
//  4. A null `const char*` reads as an empty text.
//  5. Thread safety: no shared state; any thread, on texts of its own.

#ifndef ZELTO_COMMON_TEXT_TEXT_UTILS_H
#define ZELTO_COMMON_TEXT_TEXT_UTILS_H

#include <cstdint>

#include "common/text/dstring.h"
#include "common/text/field_list.h"

namespace zelto {

// Splitting. Clears the list, then cuts the text at each character of `separators`. A negative
// limit is none; once the list holds `limit` fields, the last one takes the rest of the text, the
// separator in front of it included (a-b-c-d with limit 3: a, b, c-d). Without keep_empty a run
// of separators yields no empty field and a separator at the front of the text stays in the first
// field (-a-b: -a, b). A separator at the very end never yields a field. Each new field reserves
// `capacity_hint` bytes. Always true.
bool SplitTokens(const DString& text, const char* separators, FieldList& fields, int32_t limit = -1,
                 bool keep_empty = false, int capacity_hint = 0);

// The same, but each field that a separator closed ends with it (a-b: a-, b). The rest that the
// last field takes at the limit comes after that, with its separator once more (a-b-c, limit 2:
// a-, b--c).
bool SplitTokensKeepSeparators(const DString& text, const char* separators, FieldList& fields,
                               int32_t limit = -1, bool keep_empty = false, int capacity_hint = 0);

// "0x" and hexadecimal digits of either case, or a decimal number: leading white space, a sign,
// digits, the rest ignored. Too many digits wrap modulo 2^32.
int32_t TextToInteger(const DString& text);

// A decimal number of up to 64 bits, read as the digits before the last eight and the last eight.
int64_t TextToInt64(const DString& text);

// Digits are not checked: any other character spills its distance from '7' into the bits above
// its own four ('G' is 16).
uint32_t HexDigitsToInteger(const char* digits, int32_t count);
uint32_t HexToInteger(const DString& text);  // "0x" in front is skipped

// Leading blanks, '-', a whole part within 32 bits, '.' (with accept_comma also ',', whichever
// comes first) and decimals. Exponents are not understood.
double TextToDouble(const char* text, bool accept_comma);

// Two upper-case hexadecimal digits a byte. The count may go past a NUL in the text, as for a
// binary digest, but is cut at the string's capacity; a negative one is the whole length.
void HexEncode(DString& text, int32_t count);
DString& HexEncodeCopy(const DString& source, DString& target, int32_t count);

// Keeps ASCII letters, digits and blanks; every other byte becomes "%XX".
void PercentEncode(DString& text);
// '+' becomes a blank, '%' and the (at most) two characters after it a byte.
void PercentDecode(DString& text);
// ',', CR, LF and '%' become "%XX": the value fits a comma-separated record of one line.
void EscapeListChars(DString& text);
// '%' and two characters become a byte; a '%' with fewer behind it is dropped.
void UnescapePercent(DString& text);

// Keeps what stands between "<BODY>" and "</BODY>", line breaks trimmed. False, and the text as it
// was, when either tag is missing.
bool ExtractBody(DString& text);
// Removes CR and LF from both ends.
void TrimLineBreaks(DString& text);

// The runtime's _stricmp and _strnicmp: only the sign of the result means anything.
int CompareNoCase(const char* a, const char* b);
int CompareNoCase(const char* a, const char* b, int32_t count);

}  // namespace zelto

#endif
