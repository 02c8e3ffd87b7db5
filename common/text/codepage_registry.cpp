#include "common/text/codepage.h"

namespace zelto {

int32_t CodepageRegistry::FindTable(int32_t codepage) {
    constexpr int32_t kWhenNoneIsChosen = 1252;
    if (codepage == 0)
        codepage = kWhenNoneIsChosen;
    if (codepage != last_codepage_) {
        last_codepage_ = codepage;
        last_index_ = Search(static_cast<uint32_t>(codepage));
    }
    return last_index_;
}

int32_t CodepageRegistry::Search(uint32_t identifier) const {
    for (int32_t i = 0; i < tables_.Count(); ++i) {
        if (tables_.IsPresent(i) && tables_.Table(i).identifier == identifier)
            return i;
    }
    return -1;
}

int32_t CodepageRegistry::RegisterTable(const CodepageTable* record, int32_t position) {
    const int32_t index = tables_.InsertCopy(record, position);
    ForgetLookup();
    return index;
}

int32_t CodepageRegistry::CreateTable(int32_t position) {
    const int32_t index = tables_.InsertNew(position);
    ForgetLookup();
    return index;
}

// An added table moves those behind it and may be the one that was missing.
void CodepageRegistry::ForgetLookup() {
    last_codepage_ = -1;
    last_index_ = -1;
}

}  // namespace zelto
