// Units to bytes by a table.

#include <algorithm>

#include "common/text/ascii_run.h"
#include "common/text/codepage_index.h"

namespace zelto {

uint8_t FindTableByte(const CodepageTable& table, uint16_t unit) {
    return CodepageIndex::Of(table).Find(unit);
}

void EncodeByTable(const CodepageTable& table, const WCHAR* text, int count, char* out) {
    const WCHAR* const end = text + count;
    const CodepageIndex& index = CodepageIndex::Of(table);
    PatientBlock block;
    while (text < end) {
        const ptrdiff_t ascii = CopyAsciiBlocks(text, end - text, out);
        text += ascii;
        out += ascii;
        const ptrdiff_t size = std::min(end - text, block.Next(ascii));
        for (ptrdiff_t i = 0; i < size; ++i)
            out[i] = index.Written(text[i]);
        text += size;
        out += size;
    }
}

}  // namespace zelto
