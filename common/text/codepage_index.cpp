#include "common/text/codepage_index.h"

#include <algorithm>
#include <cstring>

namespace zelto {
namespace {

int32_t EntryCount(const CodepageTable& table) {
    return static_cast<int32_t>(std::min<uint32_t>(table.page_count, kMaxTablePages)) *
           kTablePageSize;
}

size_t EntryBytes(int32_t count) {
    return static_cast<size_t>(count) * sizeof(uint16_t);
}

// The entry that the search takes in behind the pages.
uint16_t EntryPastPages(const CodepageTable& table) {
    const int32_t entries = EntryCount(table);
    if (entries < kMaxTablePages * kTablePageSize)
        return table.mapping[entries];
    return static_cast<uint16_t>(table.folding[0][0] | table.folding[0][1] << 8);
}

}  // namespace

// Nothing to be destroyed: whatever a thread does at its end may still convert.
const CodepageIndex& CodepageIndex::Of(const CodepageTable& table) {
    constinit thread_local CodepageIndex index;
    index.Follow(table);
    return index;
}

void CodepageIndex::Follow(const CodepageTable& table) {
    const int32_t count = EntryCount(table);
    const uint16_t past_pages = EntryPastPages(table);
    if (!is_made_ || count != count_ || past_pages != past_pages_ ||
        std::memcmp(units_ + 1, table.mapping, EntryBytes(count)) != 0)
        Make(table, count, past_pages);
}

// What is added later is found first.
void CodepageIndex::Make(const CodepageTable& table, int32_t count, uint16_t past_pages) {
    is_made_ = true;
    count_ = count;
    past_pages_ = past_pages;
    std::fill_n(heads_, kBuckets, uint16_t{0});
    bytes_[0] = '?';
    uint16_t place = 0;
    for (int32_t i = 0; i < count; ++i)
        Add(++place, table.mapping[i], kTablePageSize + i % kTablePageSize);
    Add(++place, past_pages, kTablePageSize);
    for (uint16_t ascii = 0; ascii < kTablePageSize; ++ascii)
        Add(++place, ascii, ascii);
}

void CodepageIndex::Add(uint16_t place, uint16_t unit, int32_t byte) {
    uint16_t& head = heads_[Bucket(unit)];
    next_[place] = head;
    units_[place] = unit;
    bytes_[place] = static_cast<uint8_t>(byte);
    head = place;
}

}  // namespace zelto
