// A codepage table file of any bytes, and texts by whatever records it holds.

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "common/text/codepage_table.h"

using namespace zelto;

namespace {

// By the documented search, whose last match counts: the byte of each unit, 0 without one.
std::vector<uint8_t> BytesByUnit(const CodepageTable& table) {
    std::vector<uint8_t> bytes(0x10000, 0);
    const size_t entries = size_t{table.page_count} * kTablePageSize;
    for (size_t i = 0; i < entries; ++i)
        bytes[table.mapping[i]] = static_cast<uint8_t>(kTablePageSize + i % kTablePageSize);
    uint16_t past_pages = 0;
    std::memcpy(&past_pages, table.mapping + entries, sizeof past_pages);
    bytes[past_pages] = kTablePageSize;
    return bytes;
}

// The record's own bytes serve as the text.
void ConvertBothWays(const CodepageTable& table) {
    const std::string bytes(reinterpret_cast<const char*>(&table), 600);
    const int count = static_cast<int>(bytes.size());
    std::u16string units(bytes.size(), 0);
    const int decoded = DecodeByTable(table, bytes.data(), count, units.data());
    if (decoded != count)
        std::abort();
    std::string back(bytes.size(), 0);
    EncodeByTable(table, units.data(), count, back.data());
    const std::vector<uint8_t> wanted = BytesByUnit(table);
    for (size_t i = 0; i < units.size(); ++i) {
        const char16_t unit = units[i];
        const uint8_t byte = unit < 128 ? static_cast<uint8_t>(unit) : wanted[unit];
        if (static_cast<uint8_t>(back[i]) != (byte != 0 || unit == 0 ? byte : '?'))
            std::abort();
        if (i % 40 == 0 && unit >= 128 && FindTableByte(table, unit) != byte)
            std::abort();
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    std::vector<CodepageTable> records;
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    if (ParseCodepageTables(bytes, records) != nullptr)
        return 0;
    for (const CodepageTable& table : records)
        ConvertBothWays(table);
    return 0;
}
