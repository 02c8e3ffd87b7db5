// Typed fields in both encodings.

#include <cstdint>

#include "common/files/fichero_itv.h"
#include "common/text/text_utils.h"
#include "tests/files/files_fixture.h"

namespace zelto::test {
namespace {

struct FieldsTest : FilesTest {
    // The value is written so, and what was written reads back as the value.
    template <class Value>
    void Check(Value value, const std::string& text, const std::string& bytes) {
        for (const uint32_t mode : {FICH_TEXT, FICH_BINARY}) {
            TFicheroITV(Name("a"), FICH_WRITE | mode) << value;
            EXPECT_EQ(Get("a"), mode == FICH_TEXT ? text + " " : bytes);
            Value read{};
            TFicheroITV(Name("a"), FICH_READ | mode) >> read;
            EXPECT_EQ(read, value) << text;
        }
    }
    template <class Value>
    Value ReadFrom(const std::string& text) {
        Put("a", text);
        Value value{};
        TFicheroITV(Name("a"), FICH_READ | FICH_TEXT) >> value;
        return value;
    }
};

TEST_F(FieldsTest, AreTextAndSeparatorOrRawBytes) {
    using namespace std::string_literals;
    Check<char>('A', "A", "A");
    Check<signed char>('\xF0', "\xF0", "\xF0");
    Check<unsigned char>(0xF0, "\xF0", "\xF0");
    Check<bool>(true, "\1", "\1");
    Check<int16_t>(-2, "-2", "\xFE\xFF");
    Check<uint16_t>(65535, "-1", "\xFF\xFF");
    Check<int32_t>(INT32_MIN, "-2147483648", "\0\0\0\x80"s);
    Check<uint32_t>(UINT32_MAX, "-1", "\xFF\xFF\xFF\xFF");
    Check<int64_t>(INT64_MIN, "-9223372036854775808", "\0\0\0\0\0\0\0\x80"s);
    Check<uint64_t>(1'234'567'890'123, "1234567890123", "\xCB\x04\xFB\x71\x1F\1\0\0"s);
    Check<long long>(-1, "-1", "\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF");
    Check<long>(7, "7", std::string("\7\0\0\0\0\0\0\0", sizeof(long)));
    Check<unsigned long>(7, "7", std::string("\7\0\0\0\0\0\0\0", sizeof(long)));
    Check<double>(-1.25, "-1.25", "\0\0\0\0\0\0\xF4\xBF"s);
    Check<double>(3'000'000'000.25, "3000000000.25", "\0\0\x08\xC0\x0B\x5A\xE6\x41"s);
    Check<double>(-1e15, "-1000000000000000.00", "\0\0\x34\x26\xF5\x6B\x0C\xC3"s);
    Check<double>(9223372036854774784.0, "9223372036854774784.00",
                  "\xFF\xFF\xFF\xFF\xFF\xFF\xDF\x43");
    Check<float>(1.5F, "1.50", "\0\0\xC0\x3F"s);
    Check(DDateTime(25, 12, 2009, 10, 20, 30), "25-12-09  10:20:30",
          "\0\0\0\0\x19\0\0\0\x0C\0\0\0\xD9\7\0\0\x0A\0\0\0\x14\0\0\0\0\0\xF0\x41"s);
    Check(DDateTime(), "00-00-00  00:00:00", std::string(28, '\0'));
}

TEST_F(FieldsTest, FollowModeSeparatorAndPrecision) {
    {
        TFicheroITV file(Name("a"), FICH_WRITE | FICH_TEXT | FICH_BINARY);
        file.SetSeparator('\0');
        file.SetPrecision(0);
        file << 1 << 2 << 3.75;  // text wins
        file.SetSeparator('|');
        file.SetPrecision(3);
        file << 0.5F;
    }
    EXPECT_EQ(Get("a"), "1230.500|");
    TFicheroITV(Name("a"), FICH_WRITE) << 1 << 2.5 << DDateTime();
    EXPECT_EQ(Get("a"), "");
    // Both modes: a token, then the bytes behind its line over it, as far as there are any.
    Put("a", "5 6\n\1\2");
    uint32_t value = 0;
    TFicheroITV(Name("a"), FICH_READ | FICH_TEXT | FICH_BINARY) >> value;
    EXPECT_EQ(value, 0x201U);
    // A date is one token where a blank does not delimit.
    Put("a", "25-12-09  10:20:30|7\n8");
    TFicheroITV file(Name("a"), FICH_READ | FICH_TEXT);
    file.SetDelimiters("|");
    DDateTime date;
    file >> date;
    EXPECT_EQ(date, DDateTime(25, 12, 2009, 10, 20, 30));
}

TEST_F(FieldsTest, ReadNumbersLeniently) {
    struct {
        const char* text;
        int64_t value;
    } const cases[] = {{"0x1F", 31},
                       {"0X1F", 0},
                       {"-7", -7},
                       {"+7", 7},
                       {"abc", 0},
                       {"12abc 9", 12},
                       {"-", 0},
                       {"", 0},
                       {"VOID", 0},
                       {"123456789", 123456789},
                       {"12345678;", 12345678},
                       {"4294967297 ", 1},
                       {"-2147483648\n", INT32_MIN},
                       {"\t00000000012\n", 12},
                       {"0xfffffffff", -1}};
    for (const auto& c : cases) {
        EXPECT_EQ(ReadFrom<int32_t>(c.text), c.value) << c.text;
        EXPECT_EQ(ReadFrom<int16_t>(c.text), static_cast<int16_t>(c.value)) << c.text;
    }
    EXPECT_EQ(ReadFrom<int64_t>("-9223372036854775807 "), -INT64_MAX);
    for (const char* text :
         {"-0.25x", "1.5", "12", "12.x", "ab.5", "-+3.25;", "12a.5", ".5", "",
          "0.1234567890123456789", "0.123456789012345 ", "1234567.89\n", "-0.07 "})
        EXPECT_EQ(ReadFrom<double>(text), TextToDouble(text, false)) << text;
    EXPECT_TRUE(ReadFrom<DDateTime>("no date").IsNull());
    EXPECT_EQ(ReadFrom<int32_t>(std::string(19'993, '0') + "123456789"), 123456);  // cut
}

}  // namespace
}  // namespace zelto::test
