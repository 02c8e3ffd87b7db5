#include <clocale>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <gtest/gtest.h>

#include "platform/coredll/coredll.h"
#include "tests/support/temp_device.h"

namespace {

struct Formatted {
    int result;
    std::string buffer;  // all of it, '#' where nothing was written
};

Formatted Format(size_t size, const char* format, ...) {
    Formatted out{0, std::string(64, '#')};
    va_list arguments;
    va_start(arguments, format);
    out.result = _vsnprintf(out.buffer.data(), size, format, arguments);
    va_end(arguments);
    return out;
}

std::string Text(const Formatted& out) {
    return out.result < 0 ? "negative" : out.buffer.c_str();
}

TEST(Format, SixtyFourBitIntegers) {
    const long long big = 0x7FFFFFFFFFFFFFFF;
    EXPECT_EQ(Text(Format(64, "%I64d|%d", big, 5)), "9223372036854775807|5");
    EXPECT_EQ(Text(Format(64, "%-6I64i|%+06I64d|%*I64d", -7LL, 8LL, 4, 9LL)), "-7    |+00008|   9");
    EXPECT_EQ(Text(Format(64, "%I64u %I64x %#I64X %I64o", ~0ULL, big, 255ULL, 8ULL)),
              "18446744073709551615 7fffffffffffffff 0XFF 10");
    EXPECT_EQ(Text(Format(64, "%%I64d %s I64d %.3I64d", "%I64d", 1LL)), "%I64d %I64d I64d 001");
}

TEST(Format, TextThatFillsOrExceedsTheBuffer) {
    const struct {
        size_t size;
        int result;
        std::string start;
    } cases[] = {{6, 5, std::string("abcde\0##", 8)},
                 {5, 5, "abcde###"},
                 {4, -1, "abcd####"},
                 {0, -1, "####"}};
    for (const auto& test : cases) {
        const Formatted out = Format(test.size, "%s", "abcde");
        EXPECT_EQ(out.result, test.result) << test.size;
        EXPECT_EQ(out.buffer.substr(0, test.start.size()), test.start) << test.size;
    }
}

TEST(Format, KeepsThePointUnderEveryLocale) {
    const char* found = nullptr;
    for (const char* name : {"de_DE.utf8", "de_DE.UTF-8", "es_ES.utf8", "fr_FR.utf8"})
        found = found == nullptr ? std::setlocale(LC_ALL, name) : found;
    if (found == nullptr)
        GTEST_SKIP() << "the host has no locale with a decimal comma";
    EXPECT_EQ(Text(Format(64, "%.1f", 1.5)), "1.5");
    std::setlocale(LC_ALL, "C");
}

TEST(Itoa, EveryRadixAndSign) {
    const struct {
        int value;
        int radix;
        const char* text;
    } cases[] = {{0, 10, "0"},         {-2147483647 - 1, 10, "-2147483648"},
                 {-1, 16, "ffffffff"}, {-1, 2, "11111111111111111111111111111111"},
                 {35, 36, "z"},        {255, 8, "377"},
                 {5, 37, ""}};
    for (const auto& test : cases) {
        char buffer[33];
        EXPECT_EQ(_itoa(test.value, buffer, test.radix), buffer);
        EXPECT_STREQ(buffer, test.text);
    }
}

TEST(Compare, FoldsToLowerCase) {
    const struct {
        const char* a;
        const char* b;
        int sign;
    } cases[] = {{"ABC", "abc", 0}, {"", "a", -1},        {"ab", "a", 1},
                 {"_", "A", -1},    {"\xC4", "\xE4", -1}, {"z", "\x80", -1}};
    const auto sign = [](int value) { return (value > 0) - (value < 0); };
    for (const auto& test : cases) {
        EXPECT_EQ(sign(_stricmp(test.a, test.b)), test.sign) << test.a;
        EXPECT_EQ(sign(_stricmp(test.b, test.a)), -test.sign) << test.a;
    }
    EXPECT_EQ(_strnicmp("abX", "ABy", 2), 0);
    EXPECT_LT(_strnicmp("abX", "ABy", 3), 0);
    EXPECT_EQ(_strnicmp("a", "b", 0), 0);
    EXPECT_EQ(_strnicmp("a\0x", "a\0y", 3), 0);
}

class WideOpen : public ::testing::Test {
  protected:
    std::u16string Name(const char* leaf) { return zelto::test::WidePath(device_.Path() + leaf); }

    zelto::test::TempDevice device_;
};

TEST_F(WideOpen, ModesDecideWhatHappensToTheFile) {
    const struct {
        const char16_t* mode;
        const char* after;  // of "old" when "new" is written at once
    } cases[] = {{u"wb", "new"}, {u"a", "oldnew"}, {u"r+b", "new"}, {u"a+t", "oldnew"}};
    for (const auto& test : cases) {
        FILE* file = _wfopen(Name("/f").c_str(), u"w+b");
        ASSERT_NE(file, nullptr);
        EXPECT_EQ(fcntl(fileno(file), F_GETFD) & FD_CLOEXEC, FD_CLOEXEC);
        std::fputs("old", file);
        std::fclose(file);
        file = _wfopen(Name("/f").c_str(), test.mode);
        ASSERT_NE(file, nullptr);
        std::fputs("new", file);
        std::fclose(file);
        char text[16] = "";
        file = _wfopen(Name("/f").c_str(), u"rb");
        ASSERT_NE(file, nullptr);
        EXPECT_NE(std::fgets(text, sizeof(text), file), nullptr);
        EXPECT_STREQ(text, test.after);
        EXPECT_LT(std::fputs("x", file), 0);
        std::fclose(file);
    }
}

TEST_F(WideOpen, FailuresSayWhy) {
    const struct {
        const char* leaf;
        const char16_t* mode;
        DWORD error;
    } cases[] = {{"/none", u"r", ERROR_FILE_NOT_FOUND},  {"/none/f", u"w", ERROR_PATH_NOT_FOUND},
                 {"/device", u"r", ERROR_ACCESS_DENIED}, {"/f", u"x", ERROR_INVALID_PARAMETER},
                 {"/f", u"rq", ERROR_INVALID_PARAMETER}, {"/a*", u"w", ERROR_INVALID_NAME}};
    for (const auto& test : cases) {
        SetLastError(77);
        EXPECT_EQ(_wfopen(Name(test.leaf).c_str(), test.mode), nullptr) << test.leaf;
        EXPECT_EQ(GetLastError(), test.error) << test.leaf;
    }
}

TEST_F(WideOpen, PositionsPastFourGigabytes) {
    FILE* file = _wfopen(Name("/big").c_str(), u"w+b");
    ASSERT_NE(file, nullptr);
    const int64_t far = (int64_t{5} << 30) + 1;
    EXPECT_EQ(_fseeki64(file, far, SEEK_SET), 0);
    EXPECT_EQ(_ftelli64(file), far);
    EXPECT_NE(_fseeki64(file, -1, SEEK_SET), 0);
    EXPECT_EQ(_ftelli64(file), far);
    std::fclose(file);
}

}  // namespace
