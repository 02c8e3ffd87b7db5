// A codepage table file of any bytes, and texts by whatever records it holds.

#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

#include "common/text/codepage_table.h"

using namespace zelto;

namespace {

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
    for (int i = 0; i < count; ++i) {
        const char16_t unit = units[static_cast<size_t>(i)];
        const uint8_t byte = unit < 128 ? static_cast<uint8_t>(unit) : FindTableByte(table, unit);
        if (static_cast<uint8_t>(back[static_cast<size_t>(i)]) !=
            (byte != 0 || unit == 0 ? byte : '?'))
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
