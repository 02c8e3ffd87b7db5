// Units to bytes by a table.

#include <algorithm>
#include <limits>

#include "common/text/ascii_run.h"
#include "common/text/codepage_table.h"

namespace zelto {
namespace {

constexpr char kUnknown = '?';

int32_t EntryCount(const CodepageTable& table) {
    return static_cast<int32_t>(std::min<uint32_t>(table.page_count, kMaxTablePages)) *
           kTablePageSize;
}

// The entry that the search takes in behind the pages.
uint16_t EntryPastPages(const CodepageTable& table) {
    const int32_t entries = EntryCount(table);
    if (entries < kMaxTablePages * kTablePageSize)
        return table.mapping[entries];
    return static_cast<uint16_t>(table.folding[0][0] | table.folding[0][1] << 8);
}

uint8_t ByteOfEntry(int32_t entry) {
    return static_cast<uint8_t>(kTablePageSize + entry % kTablePageSize);
}

// One more than the place of the unit's last entry on a page, 0 without one. Free of branches, for
// the compiler to compare many entries at once.
int16_t LastOnPage(const uint16_t* page, uint16_t unit) {
    int16_t last = 0;
    for (int16_t i = 0; i < kTablePageSize; ++i)
        last = std::max(last, page[i] == unit ? static_cast<int16_t>(i + 1) : int16_t{0});
    return last;
}

// Answers as FindTableByte, in constant time. Lives on the stack of one conversion, so that it can
// never be older than the table.
class ReverseIndex {
  public:
    explicit ReverseIndex(const CodepageTable& table) {
        const int32_t entries = EntryCount(table);
        for (int32_t i = 0; i < entries; ++i)
            Add(table.mapping[i], ByteOfEntry(i));
        Add(EntryPastPages(table), ByteOfEntry(entries));
    }

    uint8_t operator()(uint16_t unit) const {
        const uint16_t node = Find(unit);
        return node != 0 ? nodes_[node].byte : 0;
    }

  private:
    static constexpr size_t kBuckets = 1024;
    struct Node {
        uint16_t unit;
        uint16_t next;
        uint8_t byte;
    };

    uint16_t Find(uint16_t unit) const {
        uint16_t node = heads_[unit % kBuckets];
        while (node != 0 && nodes_[node].unit != unit)
            node = nodes_[node].next;
        return node;
    }

    void Add(uint16_t unit, uint8_t byte) {
        if (const uint16_t node = Find(unit)) {
            nodes_[node].byte = byte;
            return;
        }
        uint16_t& head = heads_[unit % kBuckets];
        nodes_[++last_] = {unit, head, byte};
        head = last_;
    }

    uint16_t heads_[kBuckets] = {};  // numbers of nodes; 0 is none
    Node nodes_[kMaxTablePages * kTablePageSize + 2];
    uint16_t last_ = 0;
};

struct Progress {
    const WCHAR* text;
    const WCHAR* end;
    char* out;
};

// Encodes until the end of the text, or until at least `lookups` units were looked up.
template <class Lookup>
void Encode(Progress& progress, int64_t lookups, const Lookup& lookup) {
    auto [text, end, out] = progress;
    while (text < end && lookups > 0) {
        if (end - text >= kAsciiBlock && CopyAsciiBlock(text, out)) {
            text += kAsciiBlock;
            out += kAsciiBlock;
            continue;
        }
        for (const WCHAR* block_end = text + std::min(end - text, kAsciiBlock); text < block_end;) {
            const WCHAR unit = *text++;
            if (unit >= kTablePageSize) {
                const uint8_t byte = lookup(unit);
                *out++ = byte != 0 ? static_cast<char>(byte) : kUnknown;
                --lookups;
            } else {
                *out++ = static_cast<char>(unit);
            }
        }
    }
    progress = {text, end, out};
}

}  // namespace

uint8_t FindTableByte(const CodepageTable& table, uint16_t unit) {
    int32_t entries = EntryCount(table);
    if (EntryPastPages(table) == unit)
        return ByteOfEntry(entries);
    while (entries > 0) {
        entries -= kTablePageSize;
        const int16_t last = LastOnPage(table.mapping + entries, unit);
        if (last != 0)
            return ByteOfEntry(last - 1);
    }
    return 0;
}

void EncodeByTable(const CodepageTable& table, const WCHAR* text, int count, char* out) {
    // About what the index costs to make.
    constexpr int64_t kScans = 32;
    Progress progress{text, text + count, out};
    Encode(progress, kScans, [&](WCHAR unit) { return FindTableByte(table, unit); });
    if (progress.text < progress.end)
        Encode(progress, std::numeric_limits<int64_t>::max(), ReverseIndex(table));
}

}  // namespace zelto
