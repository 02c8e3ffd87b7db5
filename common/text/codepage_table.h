// Codepage tables: the record that describes one 8-bit codepage, the conversions by it, and the
// files that records are kept in (docs/codepage-tables.md).

#ifndef ZELTO_COMMON_TEXT_CODEPAGE_TABLE_H
#define ZELTO_COMMON_TEXT_CODEPAGE_TABLE_H

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "common/text/dstring.h"
#include "common/text/pointer_array.h"

namespace zelto {

inline constexpr int32_t kTablePageSize = 128;
inline constexpr int32_t kMaxTablePages = 5;

// The layout is that of the file, little-endian. Bytes below 128 are ASCII and in no table.
// Thread safety: a plain value.
struct CodepageTable {
    uint32_t identifier;  // the system's number of the codepage
    // 1, or 5 for an Arabic codepage. Any other number decodes every text to an empty one. More
    // than 5 count as 5 when encoding.
    uint32_t page_count;
    // Page 0: the meaning of bytes 128 to 255. Pages 1 to 4: the same bytes as Arabic letters in
    // their isolated, initial, medial and final form. Unused pages are zero.
    uint16_t mapping[kMaxTablePages * kTablePageSize];
    // Byte to byte. These four are for whoever folds texts; conversions do not use them, but for
    // the first two bytes (see FindTableByte).
    uint8_t folding[2][256];
    uint8_t upper[256];
    uint8_t lower[256];
};

static_assert(sizeof(CodepageTable) == 2312);
static_assert(offsetof(CodepageTable, mapping) == 8 && offsetof(CodepageTable, folding) == 1288);
static_assert(offsetof(CodepageTable, upper) == 1800 && offsetof(CodepageTable, lower) == 2056);

// The byte for a unit of 128 and above, 0 when the table has none. The search takes in one entry
// past the pages, which counts as byte 128; behind the fifth page that entry is made of the first
// two folding bytes. Of several matches the last one counts.
uint8_t FindTableByte(const CodepageTable& table, uint16_t unit);

// `count` units to as many bytes, "?" for what the table lacks; no NUL. Takes time in proportion
// to the count. The table is read during the call and may be another one at the next.
void EncodeByTable(const CodepageTable& table, const WCHAR* text, int count, char* out);

// `count` bytes to as many units; no NUL. Byte 128 stays 128. With 5 pages, Arabic letters get the
// form that their neighbours within the text ask for. Returns the units written: `count`, or 0 when
// the table's page count is neither 1 nor 5.
int DecodeByTable(const CodepageTable& table, const char* text, int count, WCHAR* out);

// An array of tables, addressed by PointerArray's rules.
// Thread safety: as PointerArray.
class CodepageTableArray : public PointerArray {
  public:
    using PointerArray::PointerArray;

    CodepageTable& Table(int32_t index) const { return *static_cast<CodepageTable*>(Get(index)); }

    // In front of `position`, at the end when that is negative. Both return the slot. A new record
    // is zero, for the caller to fill in place. Throw PointerArrayError.
    int32_t InsertNew(int32_t position);
    int32_t InsertCopy(const CodepageTable* record, int32_t position);

  private:
    int32_t Insert(const CodepageTable& record, int32_t position, PointerArrayError::Code code);
};

inline constexpr char kTableFileSignature[] = "ZeltoNav-codepage table file";
inline constexpr size_t kMaxTableFileRecords = 1024;

// Reads the records of a table file's bytes. Null when all is well, else what is wrong, and then
// `records` is not to be used. Refuses a wrong signature, no record, half a record, too many of
// them, and page counts other than 1 and 5.
const char* ParseCodepageTables(std::string_view bytes, std::vector<CodepageTable>& records);

// Appends every record of the file to the process-wide registry, or none when anything is wrong:
// then the result is false and the error text, unless null, is replaced by the reason and the path.
bool LoadCodepageTables(const DString& path, DString* error);

}  // namespace zelto

#endif
