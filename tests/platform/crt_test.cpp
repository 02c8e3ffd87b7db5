#include <cstring>
#include <fcntl.h>
#include <gtest/gtest.h>

#include "platform/coredll/coredll.h"
#include "tests/support/temp_device.h"

namespace {

// The result, then all of the buffer, '#' where nothing was written.
std::string Format(size_t size, const char* format, ...) {
    std::string out(48, '#');
    va_list arguments;
    va_start(arguments, format);
    const int result = _vsnprintf(out.data(), size, format, arguments);
    va_end(arguments);
    return std::to_string(result) + ' ' + out.substr(0, out.find_last_not_of('#') + 1);
}

TEST(Format, SixtyFourBitIntegersAndFullBuffers) {
    const long long big = 0x7FFFFFFFFFFFFFFF;
    const auto text = [](std::string expected) { return expected + '\0'; };
    EXPECT_EQ(Format(48, "%I64d|%d", big, 5), text("21 9223372036854775807|5"));
    EXPECT_EQ(Format(48, "%-6I64i|%+05I64d|%*I64d", -7LL, 8LL, 4, 9LL),
              text("17 -7    |+0008|   9"));
    EXPECT_EQ(Format(48, "%I64u %I64x %#I64X %I64o", ~0ULL, 10LL, 255ULL, 8ULL),
              text("30 18446744073709551615 a 0XFF 10"));
    EXPECT_EQ(Format(48, "%%I64d %s I64d %.3I64d", "%I64d", 1LL), text("20 %I64d %I64d I64d 001"));
    EXPECT_EQ(Format(6, "%s", "abcde"), text("5 abcde"));
    EXPECT_EQ(Format(5, "%s", "abcde"), "5 abcde");
    EXPECT_EQ(Format(4, "%s", "abcde"), "-1 abcd");
    EXPECT_EQ(Format(0, "%s", "abcde"), "-1 ");
}

TEST(WideOpen, ModesAndPositions) {
    const zelto::test::TempDevice device;
    const auto open = [&](const char* leaf, const char16_t* mode) {
        return _wfopen(zelto::test::WidePath(device.Path() + leaf).c_str(), mode);
    };
    for (const auto& [mode, after] :
         {std::pair{u"wb", "new"}, {u"a", "oldnew"}, {u"r+b", "new"}, {u"a+t", "oldnew"}}) {
        for (const auto& [how, text] : {std::pair{u"w+b", "old"}, {mode, "new"}}) {
            FILE* file = open("/f", how);
            ASSERT_NE(file, nullptr);
            EXPECT_EQ(fcntl(fileno(file), F_GETFD) & FD_CLOEXEC, FD_CLOEXEC);
            std::fputs(text, file);
            std::fclose(file);
        }
        FILE* file = open("/f", u"rb");
        char text[16] = "";
        EXPECT_NE(std::fgets(text, sizeof(text), file), nullptr);
        EXPECT_STREQ(text, after);
        const int64_t far = (int64_t{5} << 30) + 1;
        EXPECT_EQ(_fseeki64(file, far, SEEK_SET), 0);
        EXPECT_NE(_fseeki64(file, -1, SEEK_SET), 0);
        EXPECT_EQ(_ftelli64(file), far);
        std::fclose(file);
    }
}

}  // namespace
