// Conversion between UTF-16 and 8-bit codepages, and the registry of tables that it prefers.
//
// A conversion tries, in this order: a registered table of the codepage, the library's own UTF-8
// for 65001 (utf8.h), the system's conversion, the units' low bytes. It takes the first that yields
// anything, so it never fails but for lack of room. Codepage 0, none chosen, is 1252 in the
// registry and the default codepage to the system.

#ifndef ZELTO_COMMON_TEXT_CODEPAGE_H
#define ZELTO_COMMON_TEXT_CODEPAGE_H

#include <atomic>
#include <cstdint>
#include <string>

#include "common/text/codepage_table.h"
#include "common/text/dstring.h"
#include "platform/coredll/coredll.h"

namespace zelto {

namespace detail {
inline std::atomic<int32_t> current_codepage = 0;
}

// Process-wide; 0 at first.
// Thread safety: any thread may ask and set it.
inline int32_t CurrentCodepage() {
    return detail::current_codepage.load(std::memory_order_relaxed);
}
void SetCurrentCodepage(int32_t codepage);

// The registered tables. It owns its copies of the records.
// Thread safety: none, lookups included, since they keep the last answer: conversions that share
// a registry are made by one thread at a time.
class CodepageRegistry {
  public:
    // The index of the codepage's first table, -1 without one; 0 asks for 1252. Asking for the
    // codepage of the previous call repeats its answer unless tables have been added in between:
    // fill in a created record before anyone asks for it.
    int32_t FindTable(int32_t codepage);

    // Both insert in front of `position`, at the end when that is negative, return the index and
    // throw PointerArrayError as CodepageTableArray does. A created record is zero.
    int32_t RegisterTable(const CodepageTable* record, int32_t position);
    int32_t CreateTable(int32_t position);

    CodepageTable& Table(int32_t index) { return tables_.Table(index); }
    int32_t Count() const { return tables_.Count(); }

  private:
    int32_t Search(uint32_t identifier) const;
    void ForgetLookup();

    CodepageTableArray tables_{0, 10, true};
    int32_t last_codepage_ = -1;
    int32_t last_index_ = -1;
};

// The registry behind the conversions of DString, null until start-up sets it. Whoever sets it
// keeps the object alive for as long as it stands here.
CodepageRegistry*& GlobalCodepageRegistry();

// Both convert `count` units or bytes, and write only to `out`. Without `out` or with size 0 they
// measure; the result is then enough as a size. Otherwise `out` has room for out_size and a NUL
// behind: texts of exactly out_size are terminated at out[out_size]. A null registry is an empty
// one, a null text an empty one. The result is what was or would be written, by the way taken:
//   table         wide to narrow without the NUL (measuring: with it), narrow to wide with it; 0
//                 and on to the next way when the text does not fit
//   own UTF-8     without the NUL; what does not fit is counted and not written. Measuring counts
//                 3 too much for each surrogate pair in wide to narrow
//   system        the system's own count: with the NUL for a negative count
//   low bytes     with the NUL; 0 when the text does not fit
// and 1 for an empty text.
//
// count < 0 is up to the NUL.
int WideToNarrow(CodepageRegistry* registry, int32_t codepage, const WCHAR* text, int count,
                 char* out, int out_size);
// count < 0 is up to the NUL when measuring, but an empty text when there is an `out`. As low bytes
// the signed byte is the unit: 0x80 becomes 0xFF80.
int NarrowToWide(CodepageRegistry* registry, int32_t codepage, const char* text, int count,
                 WCHAR* out, int out_size);

// A whole text, through the process-wide registry; up to its first NUL.
std::basic_string<WCHAR> ToWide(const char* text, int count, int32_t codepage);
inline std::basic_string<WCHAR> ToWide(const DString& text) {
    return ToWide(text.c_str(), text.length(), text.codepage());
}

// The count itself, or that of the units up to the NUL when it is negative; 0 for a null text.
int UnitCount(const WCHAR* text, int count);

// The byte for a Unicode value by the codepage's table (below 1: of the current codepage); 63 ("?")
// when the table lacks it. Below 128 and without a table, the value itself.
uint32_t MapCharacter(uint32_t value, int32_t codepage);

int32_t CodepageFromName(const DString& name);  // "UTF-8", "ISO-8859-1"; any other is -1
DString CodepageName(int32_t codepage);         // "UTF-8" for 65001; empty for any other

}  // namespace zelto

#endif
