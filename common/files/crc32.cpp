#include "common/files/crc32.h"

#include <array>

#include "common/files/little_endian.h"

namespace zelto {
namespace {

constexpr size_t kStep = 16;

// The classic table, and with it those that say what a byte adds when 1 to 15 more bytes follow it,
// so that 16 bytes are taken in one step. 16 KB.
using Tables = std::array<std::array<uint32_t, 256>, kStep>;

constexpr uint32_t Entry(uint32_t byte) {
    uint32_t value = byte;
    for (int bit = 0; bit < 8; ++bit)
        value = (value >> 1) ^ ((value & 1) != 0 ? kCrcPolynomial : 0);
    return value;
}

constexpr Tables MakeTables() {
    Tables tables{};
    for (uint32_t byte = 0; byte < 256; ++byte)
        tables[0][byte] = Entry(byte);
    for (size_t more = 1; more < kStep; ++more) {
        for (size_t byte = 0; byte < 256; ++byte) {
            const uint32_t before = tables[more - 1][byte];
            tables[more][byte] = (before >> 8) ^ tables[0][before & 0xFF];
        }
    }
    return tables;
}

constexpr Tables kTables = MakeTables();

// What four bytes add when `more` bytes follow them.
uint32_t LookUp(uint32_t word, size_t more) {
    return kTables[more + 3][word & 0xFF] ^ kTables[more + 2][(word >> 8) & 0xFF] ^
           kTables[more + 1][(word >> 16) & 0xFF] ^ kTables[more][word >> 24];
}

uint32_t Word(const uint8_t* bytes) {
    return LoadLittle<uint32_t>(bytes);
}

}  // namespace

uint32_t AddCrc32ByTables(uint32_t crc, const uint8_t* bytes, size_t size) {
    for (; size >= kStep; size -= kStep, bytes += kStep) {
        // Only the first word waits for the step before; the others are looked up meanwhile.
        const uint32_t behind =
            LookUp(Word(bytes + 4), 8) ^ LookUp(Word(bytes + 8), 4) ^ LookUp(Word(bytes + 12), 0);
        crc = LookUp(Word(bytes) ^ crc, 12) ^ behind;
    }
    for (; size > 0; --size, ++bytes)
        crc = (crc >> 8) ^ kTables[0][(crc ^ *bytes) & 0xFF];
    return crc;
}

uint32_t AddCrc32(uint32_t crc, const uint8_t* bytes, size_t size) {
    static const bool has_product = HasCarrylessProduct();
    if (has_product && size >= kLeastToFold) {
        const size_t folded = size / kStep * kStep;
        crc = AddCrc32ByProducts(crc, bytes, folded);
        bytes += folded;
        size -= folded;
    }
    return AddCrc32ByTables(crc, bytes, size);
}

}  // namespace zelto
