// CRC-32 stamping, and MD5.

#include <random>
#include <span>

#include "common/files/crc32.h"
#include "common/files/debug_trace.h"
#include "common/files/file_crc32.h"
#include "common/files/md5.h"
#include "tests/files/files_fixture.h"

namespace zelto::test {
namespace {

struct Crc32Test : FilesTest {
    bool Run(int32_t mode, int64_t start = 0, int64_t end = -1, TCrcObserver* observer = nullptr) {
        DString name = Name("a");
        name.set_codepage(1250);
        return FileCrc32(name, crc, mode, observer, start, end);
    }
    uint32_t crc = 0;
};

// The checksum as it is defined, a bit at a time.
uint32_t Crc32ByBits(std::span<const uint8_t> bytes) {
    uint32_t crc = 0xFFFFFFFF;
    for (const uint8_t byte : bytes) {
        crc ^= byte;
        for (int bit = 0; bit < 8; ++bit)
            crc = crc >> 1 ^ ((crc & 1) != 0 ? 0xEDB88320 : 0);
    }
    return ~crc;
}

TEST_F(Crc32Test, AgreesWithItsDefinitionOnAnyRange) {
    std::string bytes;
    std::mt19937 random(32);
    while (bytes.size() < 20'000)
        bytes += static_cast<char>(random());
    Put("a", bytes);
    for (const auto& [start, end] : {std::pair{0, -1},
                                     {0, 4096},
                                     {1, 4097},
                                     {3, 4102},
                                     {0, 8192},
                                     {5, 20'000},
                                     {19'999, 20'000},
                                     {10, 10},
                                     {20'000, -1}}) {
        EXPECT_TRUE(Run(kCrcGenerate, start, end));
        const auto size = static_cast<size_t>((end < 0 ? 20'000 : end) - start);
        EXPECT_EQ(crc, Crc32ByBits({reinterpret_cast<uint8_t*>(bytes.data()) + start, size}))
            << start << " " << end;
    }
}

TEST_F(Crc32Test, IsTheSameByTablesAndByProducts) {
    uint8_t bytes[300];
    std::mt19937 random(1);
    for (uint8_t& byte : bytes)
        byte = static_cast<uint8_t>(random());
    for (size_t size = 0; size < 290; ++size) {
        const uint8_t* start = bytes + size % 9;
        const uint32_t expected = Crc32ByBits({start, size});
        EXPECT_EQ(~AddCrc32(kCrcStart, start, size), expected) << size;
        EXPECT_EQ(~AddCrc32ByTables(kCrcStart, start, size), expected) << size;
    }
}

TEST_F(Crc32Test, StampsAndChecks) {
    const std::string stamped = "123456789\x26\x39\xF4\xCB";
    Put("a", "123456789");
    EXPECT_TRUE(Run(17));
    EXPECT_EQ(crc, 0xCBF43926);
    EXPECT_TRUE(Run(kCrcAdd));
    EXPECT_EQ(Get("a"), stamped);
    EXPECT_TRUE(Run(kCrcCheck) && Run(kCrcAdd) && Run(kCrcCheck));
    EXPECT_EQ(Get("a").size(), 17U);
    EXPECT_TRUE(Run(kCrcCheck, 0, 13));  // the first stamp is still there
    EXPECT_TRUE(Run(kCrcAdd, 3, 5) && Run(kCrcCheck, 3, 9));
    for (size_t i = 0; i < stamped.size(); ++i) {
        std::string damaged = stamped;
        damaged[i] ^= 4;
        Put("a", damaged);
        EXPECT_FALSE(Run(kCrcCheck)) << i;
    }
}

TEST_F(Crc32Test, FailsWhereThereIsNoRange) {
    struct {
        const char* bytes;
        int32_t mode;
        int64_t start, end;
        uint32_t crc;
    } const cases[] = {{"123", kCrcCheck, 0, -1, 0xFFFFFFFF},
                       {"12345", kCrcGenerate, -1, -1, 0xFFFFFFFF},
                       {"12345", kCrcGenerate, 3, 2, 0xFFFFFFFF},
                       {"12345", kCrcAdd, 6, -1, 0xFFFFFFFF},
                       {"12345", kCrcGenerate, INT64_MAX, -1, 0xFFFFFFFF},
                       {"12345", kCrcGenerate, 0, INT64_MAX, 0},  // shorter than said
                       {"12345", kCrcCheck, 0, 12, 0},
                       {"", kCrcCheck, 0, 4, 0}};
    for (const auto& c : cases) {
        Put("a", c.bytes);
        EXPECT_FALSE(Run(c.mode, c.start, c.end)) << c.bytes << c.start;
        EXPECT_EQ(crc, c.crc) << c.bytes << c.start;
        EXPECT_EQ(Get("a"), c.bytes);
    }
    EXPECT_FALSE(FileCrc32(Name("none"), crc, kCrcCheck) || IsThere("none"));
}

struct Observer : TCrcObserver {
    void SetTotal(uint32_t total) override {
        seen = title.c_str() + std::string(" ") + subject.c_str() + " " + std::to_string(total);
        codepage = subject.codepage();
    }
    std::string seen;
    int32_t codepage = 0;
};

std::string g_trace;

TEST_F(Crc32Test, TellsItsObserverAndTheTrace) {
    Put("a", std::string(10'000, 'x'));
    SetDebugTrace([](const char* line) { g_trace = line; });
    const std::string path = Name("a").c_str();
    for (const auto& [mode, title] : {std::pair{kCrcGenerate, "Generating CRC 32 "},
                                      {kCrcAdd, "Adding CRC 32 "},
                                      {kCrcCheck, "Checking CRC 32 "}}) {
        Observer observer;
        EXPECT_TRUE(Run(mode, 0, -1, &observer));
        EXPECT_EQ(observer.codepage, 1250);
        EXPECT_EQ(observer.seen, title + path + " 10000");
        EXPECT_EQ(observer.done, 10'000U);
        EXPECT_TRUE(observer.title.is_empty() && observer.subject.is_empty());
        EXPECT_TRUE(g_trace.starts_with("Crc32 " + path + " ") && g_trace.ends_with(" ms"));
        g_trace.clear();
    }
    SetDebugTrace(nullptr);
}

TEST(Md5Test, GivesThePublishedDigests) {
    const std::string alphabet = "abcdefghijklmnopqrstuvwxyz";
    const std::string digits = "1234567890123456789012345678901234567890";
    for (const auto& [text, digest] : std::initializer_list<std::pair<std::string, const char*>>{
             {"", "d41d8cd98f00b204e9800998ecf8427e"},
             {"a", "0cc175b9c0f1b6a831c399e269772661"},
             {"abc", "900150983cd24fb0d6963f7d28e17f72"},
             {"message digest", "f96b697d7cb7938d525a2f31aaf161d0"},
             {alphabet, "c3fcd3d76192e4007dfb496cca67e13b"},
             {"ABCDEFGHIJKLMNOPQRSTUVWXYZ" + alphabet + "0123456789",
              "d174ab98d277d9f5a5611c2c9f419d9f"},
             {digits + digits, "57edf4a22be3c955ac49da2e2107b67a"}}) {
        std::string hexadecimal;
        for (const uint8_t byte : Md5(text.c_str())) {
            hexadecimal += "0123456789abcdef"[byte >> 4];
            hexadecimal += "0123456789abcdef"[byte & 15];
        }
        EXPECT_EQ(hexadecimal, digest) << text;
    }
}

}  // namespace
}  // namespace zelto::test
