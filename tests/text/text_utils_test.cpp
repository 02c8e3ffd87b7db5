#include "common/text/text_utils.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <limits>
#include <string>
#include <tuple>
#include <utility>

namespace zelto {
namespace {

std::string Joined(const FieldList& fields) {
    std::string text;
    for (const DString& field : fields)
        text.append(field.c_str()).append("|");
    return text;
}

// Without and with separators, each field ended by a '|'.
void Splits(const char* text, int32_t limit, bool keep_empty, const char* plain, const char* kept) {
    FieldList fields;
    fields.Append() = "from before";
    EXPECT_TRUE(SplitTokens(text, "-.\xFF", fields, limit, keep_empty));
    EXPECT_EQ(Joined(fields), plain) << text << " limit " << limit;
    EXPECT_TRUE(SplitTokensKeepSeparators(text, "-.\xFF", fields, limit, keep_empty));
    EXPECT_EQ(Joined(fields), kept) << text << " limit " << limit;
}

TEST(Split, CutsAtSeparators) {
    Splits("", -1, true, "", "");
    Splits("a-b", -1, false, "a|b|", "a-|b|");
    Splits("-a.b", -1, false, "-a|b|", "-a.|b|");
    Splits("a--b-", -1, false, "a|b|", "a-|b-|");
    Splits("a--b-", -1, true, "a||b|", "a-|-|b-|");
    Splits("--a", -1, false, "-|a|", "--|a|");
    Splits("--a", -1, true, "||a|", "-|-|a|");
    Splits("a\xFFz", -1, false, "a|z|", "a\xFF|z|");
    Splits("10.20", 2, false, "10|20|", "10.|20|");
    Splits("a-b-c-d", 3, false, "a|b|c-d|", "a-|b-|c--d|");
    Splits("a-b-c-", 3, false, "a|b|c|", "a-|b-|c-|");
    Splits("a-b-c--", 3, false, "a|b|c--|", "a-|b-|c---|");
    Splits("-", 1, true, "|", "-|");
    Splits("a-b", 0, true, "", "");

    FieldList fields;
    EXPECT_TRUE(SplitTokens("a-b", nullptr, fields, -1, false, 200));
    EXPECT_EQ(Joined(fields), "a-b|");
    EXPECT_GE(fields[0].capacity(), 200);
    const DString* first = &fields[0];
    for (int i = 0; i < 1000; ++i)
        fields.Append() = "x";
    EXPECT_EQ(first, &fields[0]);
}

TEST(Numbers, Integers) {
    const std::pair<const char*, int32_t> rows[] = {
        {"", 0},
        {"0x1f", 31},
        {"0xFFFFFFFF", -1},
        {"0x", 0},
        {"0x-0x1Fg", -31},
        {"0X1F", 0},
        {"-12abc", -12},
        {" \t\n\v\f\r+7", 7},
        {"- 7", 0},
        {"\2407", 0},
        {"2147483647", 2147483647},
        {"-2147483648", std::numeric_limits<int32_t>::min()},
        {"4294967297", 1},
        {"99999999999999999999", 1661992959}};
    for (const auto& [text, value] : rows)
        EXPECT_EQ(TextToInteger(text), value) << text;
    const std::pair<const char*, int64_t> long_rows[] = {
        {"", 0},
        {"-", 0},
        {"12345678", 12345678},
        {"1234567890123", 1234567890123},
        {"-123456789", -123456789},
        {"9223372036854775807", std::numeric_limits<int64_t>::max()},
        {"-9223372036854775808", std::numeric_limits<int64_t>::min()},
        {"123456 78", 100023456},
        {"1-2345678", 97654322},
        {"-12-345678", -100000002}};
    for (const auto& [text, value] : long_rows)
        EXPECT_EQ(TextToInt64(text), value) << text;
}

TEST(Numbers, HexadecimalAndFractions) {
    EXPECT_EQ(HexDigitsToInteger("fF00", 2), 255U);
    EXPECT_EQ(HexDigitsToInteger("1G", 2), 16U);  // the spilt bit lands on the digit before
    EXPECT_EQ(HexDigitsToInteger("123456789", 9), 0x23456789U);
    EXPECT_EQ(HexDigitsToInteger(nullptr, 2), 0U);
    EXPECT_EQ(HexToInteger("0x1f"), 31U);
    EXPECT_EQ(HexToInteger("0x"), 33U);
    const std::tuple<const char*, double, double> rows[] = {
        {"3,5", 3.0, 3.5},   {"-0.25", -0.25, -0.25}, {"  -1.5e3", -1.5, -1.5},
        {"1,2.3", 1.3, 1.2}, {"1.2,3", 1.2, 1.2},     {"--5.5", 4.5, 4.5},
        {"\t7.", 7.0, 7.0},  {nullptr, 0.0, 0.0}};
    for (const auto& [text, plain, with_comma] : rows) {
        EXPECT_DOUBLE_EQ(TextToDouble(text, false), plain);
        EXPECT_DOUBLE_EQ(TextToDouble(text, true), with_comma);
    }
    EXPECT_DOUBLE_EQ(TextToDouble(("0." + std::string(5000, '9')).c_str(), false), 1.0);
}

TEST(Encodings, HexTakesBinaryBytesUpToTheCapacity) {
    DString digest;
    std::copy_n("a\0\xAB", 4, digest.buffer(4));
    DString out("old");
    EXPECT_EQ(&HexEncodeCopy(digest, out, 3), &out);
    EXPECT_STREQ(out.c_str(), "6100AB");
    EXPECT_STREQ(HexEncodeCopy(digest, digest, -1).c_str(), "61");
    EXPECT_STREQ(HexEncodeCopy("", out, 50).c_str(), "");
    HexEncode(digest, 1 << 20);
    EXPECT_EQ(std::string(digest.c_str(), 6), "363100");
}

// Texts, each with what it becomes.
template <class Operation>
void Turns(Operation) {}
template <class Operation, class... Rest>
void Turns(Operation operation, const char* text, const char* result, const Rest&... rest) {
    DString value(text);
    value.set_codepage(1250);
    operation(value);
    EXPECT_STREQ(value.c_str(), result) << text;
    EXPECT_EQ(value.codepage(), 1250);
    Turns(operation, rest...);
}

TEST(Encodings, InPlace) {
    Turns(PercentEncode, "", "", "a b/c", "a b%2Fc", "\xFF+Z9", "%FF%2BZ9");
    Turns(PercentDecode, "a+b%2Fc", "a b/c", "%2f%4", "/\x04", "x%", "x", "a%00z", "az");
    Turns(EscapeListChars, "a,b\r\n100%", "a%2Cb%0D%0A100%25", "\xE9+ ", "\xE9+ ");
    Turns(UnescapePercent, "a%2Cb%0D%0A100%25", "a,b\r\n100%", "a%4", "a4", "%", "", "50%%41",
          "50\3441");
    Turns(TrimLineBreaks, "\r\n\n a\nb \r", " a\nb ", "\n\r", "", "", "");
    Turns(ExtractBody, "xx<BODY>\r\nhi\r\n</BODY>", "hi", "<BODY></BODY>", "",
          "</BODY><BODY>a<BODY>b</BODY>c</BODY>", "a<BODY>b", "\n<BODY>hi", "\n<BODY>hi");
    DString unchanged("<body>hi</body>");
    EXPECT_FALSE(ExtractBody(unchanged));
    DString all;
    for (int byte = 1; byte < 256; ++byte)
        all += static_cast<char>(byte);
    DString coded(all);
    PercentEncode(coded);
    PercentDecode(coded);
    EXPECT_STREQ(coded.c_str(), all.c_str());
}

TEST(Comparison, FoldsAsciiOnly) {
    EXPECT_EQ(CompareNoCase("aBc", "AbC"), 0);
    EXPECT_LT(CompareNoCase(nullptr, "a"), 0);
    EXPECT_NE(CompareNoCase("\xC9", "\xE9"), 0);
    EXPECT_EQ(CompareNoCase("abX", "ABy", 2), 0);
    EXPECT_GT(CompareNoCase("abz", "ABy", 3), 0);
    EXPECT_EQ(CompareNoCase("a", nullptr, -1), 0);
}

}  // namespace
}  // namespace zelto
