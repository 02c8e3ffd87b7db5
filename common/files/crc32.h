// The CRC-32 of ISO 3309 over bytes in memory.

#ifndef ZELTO_COMMON_FILES_CRC32_H
#define ZELTO_COMMON_FILES_CRC32_H

#include <cstddef>
#include <cstdint>

namespace zelto {

inline constexpr uint32_t kCrcStart = 0xFFFFFFFF;  // the register at first

// The tables, 16 KB, made by the constructor: the classic one, and with it those that say what a
// byte adds when 1 to 15 more bytes follow it, so that 16 bytes are taken in one step.
// Thread safety: constant after construction.
class Crc32Table {
  public:
    Crc32Table();

    // The register after the bytes. The CRC itself is the register's complement.
    uint32_t Add(uint32_t crc, const uint8_t* bytes, size_t size) const;

  private:
    static constexpr size_t kStep = 16;

    // What four bytes add when `more` bytes follow them.
    uint32_t LookUp(uint32_t word, size_t more) const {
        return table_[more + 3][word & 0xFF] ^ table_[more + 2][(word >> 8) & 0xFF] ^
               table_[more + 1][(word >> 16) & 0xFF] ^ table_[more][word >> 24];
    }

    uint32_t table_[kStep][256];
};

}  // namespace zelto

#endif
