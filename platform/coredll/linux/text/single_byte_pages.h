// The code pages of one byte a character, as data.

#ifndef ZELTO_PLATFORM_COREDLL_LINUX_TEXT_SINGLE_BYTE_PAGES_H
#define ZELTO_PLATFORM_COREDLL_LINUX_TEXT_SINGLE_BYTE_PAGES_H

#include <span>
#include <string_view>

#include "platform/coredll/api/base.h"

namespace zelto::coredll {

// Bytes below 0x80 are ASCII in all of them.
struct SingleBytePage {
    UINT number;
    const char16_t* high;      // of the bytes from 0x80 on; a private-use unit: the page lacks it
    std::u16string_view fits;  // pairs: a unit that the page lacks, and what is written for it
};

constexpr size_t kSingleBytePageCount = 40;

// In the order of their numbers.
std::span<const SingleBytePage, kSingleBytePageCount> SingleBytePages();

// Pairs: a letter with marks, and the letter alone. For pages that have no best fits of their own.
std::u16string_view PlainLetters();

}  // namespace zelto::coredll

#endif
