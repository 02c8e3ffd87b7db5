#include "common/files/crc32.h"

namespace zelto {
namespace {

constexpr uint32_t kPolynomial = 0xEDB88320;  // bits reflected

uint32_t Entry(uint32_t byte) {
    uint32_t value = byte;
    for (int bit = 0; bit < 8; ++bit)
        value = (value >> 1) ^ ((value & 1) != 0 ? kPolynomial : 0);
    return value;
}

// Little-endian on every host.
uint32_t Word(const uint8_t* bytes) {
    return bytes[0] | uint32_t{bytes[1]} << 8 | uint32_t{bytes[2]} << 16 | uint32_t{bytes[3]} << 24;
}

}  // namespace

Crc32Table::Crc32Table() {
    for (uint32_t byte = 0; byte < 256; ++byte)
        table_[0][byte] = Entry(byte);
    for (size_t more = 1; more < kStep; ++more) {
        for (size_t byte = 0; byte < 256; ++byte) {
            const uint32_t before = table_[more - 1][byte];
            table_[more][byte] = (before >> 8) ^ table_[0][before & 0xFF];
        }
    }
}

uint32_t Crc32Table::Add(uint32_t crc, const uint8_t* bytes, size_t size) const {
    for (; size >= kStep; size -= kStep, bytes += kStep) {
        // Only the first word waits for the step before; the others are looked up meanwhile.
        const uint32_t behind =
            LookUp(Word(bytes + 4), 8) ^ LookUp(Word(bytes + 8), 4) ^ LookUp(Word(bytes + 12), 0);
        crc = LookUp(Word(bytes) ^ crc, 12) ^ behind;
    }
    for (; size > 0; --size, ++bytes)
        crc = (crc >> 8) ^ table_[0][(crc ^ *bytes) & 0xFF];
    return crc;
}

}  // namespace zelto
