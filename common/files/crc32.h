// The CRC-32 of ISO 3309 over bytes in memory.

#ifndef ZELTO_COMMON_FILES_CRC32_H
#define ZELTO_COMMON_FILES_CRC32_H

#include <cstddef>
#include <cstdint>

namespace zelto {

inline constexpr uint32_t kCrcStart = 0xFFFFFFFF;       // the register at first
inline constexpr uint32_t kCrcPolynomial = 0xEDB88320;  // bits reflected

// The register after the bytes. The CRC itself is the register's complement. Uses the processor's
// carry-less product where there is one.
// Thread safety: no state.
uint32_t AddCrc32(uint32_t crc, const uint8_t* bytes, size_t size);

// The same by tables alone: 16 bytes a step.
uint32_t AddCrc32ByTables(uint32_t crc, const uint8_t* bytes, size_t size);

// The same by carry-less products: 64 bytes a step. At least kLeastToFold bytes, a multiple of 16,
// and only where HasCarrylessProduct.
inline constexpr size_t kLeastToFold = 64;
bool HasCarrylessProduct();
uint32_t AddCrc32ByProducts(uint32_t crc, const uint8_t* bytes, size_t size);

}  // namespace zelto

#endif
