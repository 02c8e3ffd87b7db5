// Which byte a unit is by a codepage table.

#ifndef ZELTO_COMMON_TEXT_CODEPAGE_INDEX_H
#define ZELTO_COMMON_TEXT_CODEPAGE_INDEX_H

#include <cstddef>
#include <cstdint>

#include "common/text/codepage_table.h"

namespace zelto {

// The bytes of a table's units and of ASCII. Keeps what it was made of, since whoever owns the
// table may change it at any time: comparing costs a small part of making. Thread safety: none;
// each thread has its own.
class CodepageIndex {
  public:
    // That of the table that this thread asked for last, as the table is now: texts come in rows by
    // the same one.
    static const CodepageIndex& Of(const CodepageTable& table);

    uint8_t Find(uint16_t unit) const {  // its byte, 0 without one
        const uint16_t place = PlaceOf(unit);
        return place != 0 ? bytes_[place] : uint8_t{0};
    }
    char Written(uint16_t unit) const {  // its byte, "?" without one
        return static_cast<char>(bytes_[PlaceOf(unit)]);
    }

  private:
    static constexpr int32_t kPlaces = 1 + kMaxTablePages * kTablePageSize + 1 + kTablePageSize;
    static constexpr size_t kBuckets = 2048;

    // Units of one script get buckets of their own, and so do the scripts that a table has
    // together.
    static size_t Bucket(uint16_t unit) { return (unit ^ unit >> 4) % kBuckets; }

    uint16_t PlaceOf(uint16_t unit) const {
        uint16_t place = heads_[Bucket(unit)];
        while (units_[place] != unit && place != 0)
            place = next_[place];
        return place;
    }

    void Follow(const CodepageTable& table);
    void Make(const CodepageTable& table, int32_t count, uint16_t past_pages);
    void Add(uint16_t place, uint16_t unit, int32_t byte);

    bool is_made_ = false;
    int32_t count_ = 0;  // of the table's entries, from place 1 on
    uint16_t past_pages_ = 0;
    uint16_t heads_[kBuckets] = {};  // places; 0 is that of what has none
    uint16_t next_[kPlaces] = {};
    uint16_t units_[kPlaces] = {};
    uint8_t bytes_[kPlaces] = {};
};

}  // namespace zelto

#endif
