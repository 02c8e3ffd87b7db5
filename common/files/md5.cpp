#include "common/files/md5.h"

#include <bit>
#include <cstring>

#include "common/files/little_endian.h"

namespace zelto {
namespace {

constexpr size_t kBlock = 64;
constexpr size_t kLengthBytes = 8;  // the length in bits, at the end of the last block

using State = std::array<uint32_t, 4>;

// Step i adds the whole part of 2^32 times the absolute sine of i + 1.
constexpr uint32_t kSines[64] = {
    0xd76aa478, 0xe8c7b756, 0x242070db, 0xc1bdceee, 0xf57c0faf, 0x4787c62a, 0xa8304613, 0xfd469501,
    0x698098d8, 0x8b44f7af, 0xffff5bb1, 0x895cd7be, 0x6b901122, 0xfd987193, 0xa679438e, 0x49b40821,
    0xf61e2562, 0xc040b340, 0x265e5a51, 0xe9b6c7aa, 0xd62f105d, 0x02441453, 0xd8a1e681, 0xe7d3fbc8,
    0x21e1cde6, 0xc33707d6, 0xf4d50d87, 0x455a14ed, 0xa9e3e905, 0xfcefa3f8, 0x676f02d9, 0x8d2a4c8a,
    0xfffa3942, 0x8771f681, 0x6d9d6122, 0xfde5380c, 0xa4beea44, 0x4bdecfa9, 0xf6bb4b60, 0xbebfbc70,
    0x289b7ec6, 0xeaa127fa, 0xd4ef3085, 0x04881d05, 0xd9d4d039, 0xe6db99e5, 0x1fa27cf8, 0xc4ac5665,
    0xf4292244, 0x432aff97, 0xab9423a7, 0xfc93a039, 0x655b59c3, 0x8f0ccc92, 0xffeff47d, 0x85845dd1,
    0x6fa87e4f, 0xfe2ce6e0, 0xa3014314, 0x4e0811a1, 0xf7537e82, 0xbd3af235, 0x2ad7d2bb, 0xeb86d391};

constexpr int kRotations[4][4] = {
    {7, 12, 17, 22}, {5, 9, 14, 20}, {4, 11, 16, 23}, {6, 10, 15, 21}};

uint32_t Mix(size_t round, uint32_t b, uint32_t c, uint32_t d) {
    switch (round) {
        case 0:
            return (b & c) | (~b & d);
        case 1:
            return (b & d) | (c & ~d);
        case 2:
            return b ^ c ^ d;
        default:
            return c ^ (b | ~d);
    }
}

size_t WordOf(size_t step) {
    constexpr size_t kFactor[4] = {1, 5, 3, 7};
    constexpr size_t kOffset[4] = {0, 1, 5, 0};
    return (kFactor[step / 16] * step + kOffset[step / 16]) % 16;
}

void AddBlock(State& state, const uint8_t* block) {
    auto [a, b, c, d] = state;
    for (size_t step = 0; step < 64; ++step) {
        const size_t round = step / 16;
        const uint32_t sum =
            a + Mix(round, b, c, d) + kSines[step] + LoadLittle<uint32_t>(block + 4 * WordOf(step));
        a = d;
        d = c;
        c = b;
        b += std::rotl(sum, kRotations[round][step % 4]);
    }
    state[0] += a;
    state[1] += b;
    state[2] += c;
    state[3] += d;
}

// The bytes left over, a single bit, zeros and the length.
void AddEnd(State& state, const uint8_t* rest, size_t size, uint64_t total) {
    uint8_t blocks[2 * kBlock] = {};
    if (size > 0)
        std::memcpy(blocks, rest, size);
    blocks[size] = 0x80;
    const size_t end = size < kBlock - kLengthBytes ? kBlock : 2 * kBlock;
    StoreLittle<uint64_t>(total * 8, blocks + end - kLengthBytes);
    for (size_t at = 0; at < end; at += kBlock)
        AddBlock(state, blocks + at);
}

}  // namespace

Md5Digest Md5(const void* bytes, size_t size) {
    State state = {0x67452301, 0xefcdab89, 0x98badcfe, 0x10325476};
    const auto* at = static_cast<const uint8_t*>(bytes);
    const size_t total = at == nullptr ? 0 : size;
    size_t left = total;
    for (; left >= kBlock; left -= kBlock, at += kBlock)
        AddBlock(state, at);
    AddEnd(state, at, left, total);
    Md5Digest digest;
    for (size_t i = 0; i < state.size(); ++i)
        StoreLittle(state[i], digest.data() + 4 * i);
    return digest;
}

Md5Digest Md5(const DString& text) {
    return Md5(text.c_str(), static_cast<size_t>(text.length()));
}

}  // namespace zelto
