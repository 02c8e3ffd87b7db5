// The library's own conversion between UTF-16 and UTF-8.
//
// It is UTF-8 but for one thing: a surrogate pair is written in a private four-byte form,
//   F3, 80 | (hi >> 2 & 3F), 80 | (hi & 3) | (lo >> 6 & 3F), 80 | (lo & 3F)
// which is what the navigator expects. The form loses bits: it keeps bits 2 to 7 of the high
// surrogate and all of the low one but bits 6 and 7, which fall together with the high one's bits 0
// and 1. The decoder gives those two bits to the high surrogate, so a pair comes back the same when
// the high surrogate is below D900 and bits 6 and 7 of the low one are clear (U+1F600 to U+1F63F,
// for example); others come back as another pair that is written with the same bytes.

#ifndef ZELTO_COMMON_TEXT_UTF8_H
#define ZELTO_COMMON_TEXT_UTF8_H

#include "platform/coredll/coredll.h"

namespace zelto {

// Writes `count` units (below 0: to the NUL). With no output, or out_size 0, it measures: a
// surrogate pair then counts 7, an upper bound. A character that does not fit wholly is not
// written, yet counted. The result is the bytes counted, without the NUL that is added where there
// is room. A high surrogate without its low one is "?"; a low one alone takes three bytes.
int EncodeUtf8(const WCHAR* text, int count, char* out, int out_size);

// The other direction, `count` bytes (below 0: to the NUL), in the same manner. One to three bytes
// as usual, lone surrogates among them; four bytes beginning F3 with a third byte of B0 to BF are
// the private form, other well-formed ones the usual. Each byte that fits nowhere is U+FFFD.
int DecodeUtf8(const char* text, int count, WCHAR* out, int out_size);

}  // namespace zelto

#endif
