#include "common/text/codepage_table.h"

#include <new>

namespace zelto {

int32_t CodepageTableArray::Insert(const CodepageTable& record, int32_t position,
                                   PointerArrayError::Code below_base) {
    const int32_t slot = OpenSlot(position, below_base);
    SetSlot(slot, new (::operator new(sizeof(CodepageTable))) CodepageTable(record));
    return slot;
}

int32_t CodepageTableArray::InsertNew(int32_t position) {
    return Insert(CodepageTable(), position, PointerArrayError::kInsertBelowBase);
}

int32_t CodepageTableArray::InsertCopy(const CodepageTable* record, int32_t position) {
    if (record == nullptr)
        Fail(PointerArrayError::kNullRecord, position);
    return Insert(*record, position, PointerArrayError::kCopyBelowBase);
}

}  // namespace zelto
