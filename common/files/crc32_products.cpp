// The CRC by carry-less products. What stands in front of other bytes is worth its product with a
// power of x, modulo the polynomial: four registers of 128 bits are so moved over the next 64 bytes
// again and again, then into one, and that one through the tables.

#include "common/files/crc32.h"

#if defined(__GNUC__) && defined(__x86_64__)
#include <immintrin.h>
#endif

namespace zelto {

#if defined(__GNUC__) && defined(__x86_64__)

namespace {

#define ZELTO_PRODUCT_TARGET __attribute__((target("pclmul,sse4.1")))

// x to the power, modulo the polynomial, as a factor: bits reflected, and one place up, since the
// product of two reflected numbers comes out one place down.
constexpr int64_t Factor(int power) {
    uint32_t value = 0x80000000;
    for (int i = 0; i < power; ++i)
        value = (value >> 1) ^ ((value & 1) != 0 ? kCrcPolynomial : 0);
    return static_cast<int64_t>(uint64_t{value} << 1);
}

ZELTO_PRODUCT_TARGET __m128i Load(const uint8_t* bytes) {
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes));
}

// The factors for moving over so many bits: of the register's front half, then of its back half.
template <int kBits>
ZELTO_PRODUCT_TARGET __m128i Factors() {
    constexpr int64_t kFront = Factor(kBits + 32);
    constexpr int64_t kBack = Factor(kBits - 32);
    return _mm_set_epi64x(kBack, kFront);
}

ZELTO_PRODUCT_TARGET __m128i Fold(__m128i value, __m128i factors, __m128i next) {
    const __m128i front = _mm_clmulepi64_si128(value, factors, 0x00);
    const __m128i back = _mm_clmulepi64_si128(value, factors, 0x11);
    return _mm_xor_si128(_mm_xor_si128(front, back), next);
}

}  // namespace

bool HasCarrylessProduct() {
    return __builtin_cpu_supports("pclmul") != 0 && __builtin_cpu_supports("sse4.1") != 0;
}

ZELTO_PRODUCT_TARGET uint32_t AddCrc32ByProducts(uint32_t crc, const uint8_t* bytes, size_t size) {
    const __m128i over_four = Factors<512>();
    const __m128i over_one = Factors<128>();
    __m128i a = _mm_xor_si128(Load(bytes), _mm_cvtsi32_si128(static_cast<int>(crc)));
    __m128i b = Load(bytes + 16);
    __m128i c = Load(bytes + 32);
    __m128i d = Load(bytes + 48);
    for (bytes += 64, size -= 64; size >= 64; bytes += 64, size -= 64) {
        a = Fold(a, over_four, Load(bytes));
        b = Fold(b, over_four, Load(bytes + 16));
        c = Fold(c, over_four, Load(bytes + 32));
        d = Fold(d, over_four, Load(bytes + 48));
    }
    a = Fold(Fold(Fold(a, over_one, b), over_one, c), over_one, d);
    for (; size >= 16; bytes += 16, size -= 16)
        a = Fold(a, over_one, Load(bytes));
    uint8_t rest[16];
    _mm_storeu_si128(reinterpret_cast<__m128i*>(rest), a);
    return AddCrc32ByTables(0, rest, sizeof rest);
}

#else

bool HasCarrylessProduct() {
    return false;
}

uint32_t AddCrc32ByProducts(uint32_t crc, const uint8_t* bytes, size_t size) {
    return AddCrc32ByTables(crc, bytes, size);
}

#endif

}  // namespace zelto
