// Units to bytes by a table.

#include <algorithm>

#include "common/text/ascii_run.h"
#include "common/text/codepage_table.h"

namespace zelto {
namespace {

constexpr char kUnknown = '?';

int32_t EntryCount(const CodepageTable& table) {
    return static_cast<int32_t>(std::min<uint32_t>(table.page_count, kMaxTablePages)) *
           kTablePageSize;
}

const uint16_t* PageOf(const CodepageTable& table, ptrdiff_t page) {
    return table.mapping + page * kTablePageSize;
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

// What is written for the byte of a unit; 0 is none.
char Written(uint8_t byte) {
    return byte != 0 ? static_cast<char>(byte) : kUnknown;
}

constexpr int32_t kBlock = 32;

// One more than the place of the unit's last entry in a block, 0 without one. Free of branches, for
// the compiler to compare many entries at once.
int32_t LastInBlock(const uint16_t* block, uint16_t unit) {
    int16_t last = 0;
    for (int16_t i = 0; i < kBlock; ++i)
        last = std::max(last, block[i] == unit ? static_cast<int16_t>(i + 1) : int16_t{0});
    return last;
}

// The same for a page. Begins at its end, where most tables have their small letters.
int32_t LastOnPage(const uint16_t* page, uint16_t unit) {
    for (int32_t begin = kTablePageSize - kBlock; begin >= 0; begin -= kBlock) {
        if (const int32_t last = LastInBlock(page + begin, unit); last != 0)
            return begin + last;
    }
    return 0;
}

// Returns the byte of the unit's last entry on the pages that `may_have` it, 0 without one.
template <class Filter>
uint8_t FindLast(const CodepageTable& table, uint16_t unit, const Filter& may_have) {
    if (EntryPastPages(table) == unit)
        return kTablePageSize;
    for (int32_t page = EntryCount(table) / kTablePageSize - 1; page >= 0; --page) {
        const int32_t last = may_have(page) ? LastOnPage(PageOf(table, page), unit) : 0;
        if (last != 0)
            return ByteOfEntry(last - 1);
    }
    return 0;
}

// Which bits a page's entries have in common, entries of 0 aside: enough to pass over most pages
// that do not have a unit.
struct PageBits {
    uint16_t any = 0xFFFF;
    uint16_t all = 0;

    PageBits() = default;
    explicit PageBits(const uint16_t* page) : any(0), all(0xFFFF) {
        for (int32_t i = 0; i < kTablePageSize; ++i) {
            any = static_cast<uint16_t>(any | page[i]);
            all = static_cast<uint16_t>(all & (page[i] == 0 ? 0xFFFF : page[i]));
        }
    }
    bool MayHave(uint16_t unit) const { return (unit & ~any) == 0 && (all & ~unit) == 0; }
};

// Looks up by scanning the pages. Remembers what it found, since letters come back, and counts the
// scans.
class ScanLookup {
  public:
    ScanLookup(const CodepageTable& table, int scans) : table_(table), scans_left_(scans) {
        pages_ = EntryCount(table) / kTablePageSize;
        for (int32_t page = 0; page < pages_ && pages_ > 1; ++page)
            bits_[page] = PageBits(PageOf(table, page));
    }

    bool IsSpent() const { return scans_left_ <= 0; }

    char operator()(uint16_t unit) {
        Remembered& last = remembered_[unit % kRemembered];
        if (last.unit != unit)
            last = {unit, Written(Scan(unit))};
        return last.byte;
    }

  private:
    static constexpr size_t kRemembered = 64;
    struct Remembered {
        uint16_t unit;  // 0 is none: it is never looked up
        char byte;
    };

    uint8_t Scan(uint16_t unit) {
        --scans_left_;
        return FindLast(table_, unit, [&](int32_t page) { return bits_[page].MayHave(unit); });
    }

    const CodepageTable& table_;
    int scans_left_;
    int32_t pages_;
    PageBits bits_[kMaxTablePages];
    Remembered remembered_[kRemembered] = {};
};

// The table's entries by unit, later ones first. Lives on the stack of one conversion, so that it
// can never be older than the table.
class ReverseIndex {
  public:
    explicit ReverseIndex(const CodepageTable& table)
        : table_(table), past_pages_(EntryPastPages(table)) {
        const int32_t entries = EntryCount(table);
        for (int32_t i = 0; i < entries; ++i) {
            uint16_t& head = heads_[table.mapping[i] % kBuckets];
            next_[i] = head;
            head = static_cast<uint16_t>(i + 1);
        }
    }

    static bool IsSpent() { return false; }

    char operator()(uint16_t unit) const {
        if (unit == past_pages_)
            return Written(kTablePageSize);
        uint16_t place = heads_[unit % kBuckets];
        while (place != 0 && table_.mapping[place - 1] != unit)
            place = next_[place - 1];
        return place != 0 ? Written(ByteOfEntry(place - 1)) : kUnknown;
    }

  private:
    static constexpr size_t kBuckets = 1024;

    const CodepageTable& table_;
    uint16_t past_pages_;
    uint16_t heads_[kBuckets] = {};  // one more than an entry's number; 0 is none
    uint16_t next_[kMaxTablePages * kTablePageSize];
};

struct Progress {
    const WCHAR* text;
    const WCHAR* end;
    char* out;
};

// Encodes until the end of the text, or soon after the lookup is spent.
template <class Lookup>
void Encode(Progress& progress, Lookup& lookup) {
    auto [text, end, out] = progress;
    while (text < end && !lookup.IsSpent()) {
        for (const WCHAR* stop = text + std::min(end - text, kAsciiBlock); text < stop; ++text) {
            const WCHAR unit = *text;
            *out++ = unit < kTablePageSize ? static_cast<char>(unit) : lookup(unit);
        }
        const ptrdiff_t ascii = CopyAsciiBlocks(text, end - text, out);
        text += ascii;
        out += ascii;
    }
    progress = {text, end, out};
}

}  // namespace

uint8_t FindTableByte(const CodepageTable& table, uint16_t unit) {
    return FindLast(table, unit, [](int32_t) { return true; });
}

void EncodeByTable(const CodepageTable& table, const WCHAR* text, int count, char* out) {
    // So many scans cost about what the index costs to make.
    constexpr int kScansPerPage = 16;
    const ptrdiff_t ascii = CopyAsciiBlocks(text, count, out);
    if (ascii == count)
        return;
    Progress progress{text + ascii, text + count, out + ascii};
    ScanLookup scan(table, kScansPerPage * (EntryCount(table) / kTablePageSize));
    Encode(progress, scan);
    if (progress.text < progress.end) {
        ReverseIndex index(table);
        Encode(progress, index);
    }
}

}  // namespace zelto
