// Conversion between UTF-16 and 8-bit codepages, and the registry of codepage tables.
//
// Nothing here fails loudly: each conversion tries, in this order, a registered table, the
// library's own UTF-8 for 65001, the system's converter and a plain fallback, and goes on to the
// next when one gives 0. Nothing is locked: conversions are made from one thread at a time.

#ifndef ZELTO_COMMON_TEXT_CODEPAGE_H
#define ZELTO_COMMON_TEXT_CODEPAGE_H

#include <cstdint>

#include "common/text/codepage_table.h"
#include "platform/coredll/coredll.h"

namespace zelto {

class DString;

// The process-wide codepage that texts without a tag are in; 0, none chosen, at load.
int32_t CurrentCodepage();
void SetCurrentCodepage(int32_t codepage);

// The registered tables, which it owns. The last look-up is remembered, so looking the same
// codepage up again, found or not, costs nothing.
class CodepageRegistry {
  public:
    // Index of the first table of that codepage, -1 when there is none; 0 means 1252.
    int32_t FindTable(int32_t codepage);

    // Both return the table's index; a negative position appends. Errors (PointerArrayError): 16
    // null record, 12 and 13 a position below the base. The remembered look-up is forgotten.
    int32_t RegisterTable(const CodepageTable* table, int32_t position);
    int32_t CreateTable(int32_t position);  // zeroed, for the caller to fill in place

    // The table at an index, to read or to change in place. PointerArrayError 7, 8.
    [[nodiscard]] CodepageTable& Table(int32_t index) const;
    [[nodiscard]] int32_t TableCount() const { return tables_.Count(); }

  private:
    void ForgetLookUp();

    CodepageTableArray tables_;
    int32_t last_codepage_ = -1;
    int32_t last_index_ = -1;
};

// The process's registry: null until the library's start-up sets it. A null registry behaves as
// one without tables.
CodepageRegistry*& GlobalCodepageRegistry();

// Converts `count` units (below 0: to the NUL) to the codepage. Without output, or with out_size 0,
// it measures. The result is the bytes written or needed, with the NUL or without it depending on
// the path; 0 when no path could. A NUL is added where there is room. A null text is an empty one.
int WideToNarrow(CodepageRegistry* registry, int32_t codepage, const WCHAR* text, int count,
                 char* out, int out_size);

// Converts `count` bytes to units; with output, a count of 0 or less gives an empty text and the
// result 1. Otherwise as above.
int NarrowToWide(CodepageRegistry* registry, int32_t codepage, const char* text, int count,
                 WCHAR* out, int out_size);

// The byte for one value in a codepage (below 1: the current one), by the process's registry. A
// value below 128, or a codepage without a table, gives the value itself; a value that the table
// does not have 63 ("?").
uint32_t MapCharacter(uint32_t value, int32_t codepage);

// "UTF-8" is 65001 and "ISO-8859-1" 28591, with case; any other name -1.
int32_t CodepageFromName(const DString& name);

// "UTF-8" for 65001, empty for any other.
DString CodepageName(int32_t codepage);

// Registers all tables of a codepage table file with the process's registry, or none of them when
// the file is not a whole one; then `error` (may be null) says why.
bool LoadCodepageTables(const DString& path, DString* error);

}  // namespace zelto

#endif
