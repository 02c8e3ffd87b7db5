#include <algorithm>
#include <gtest/gtest.h>
#include <limits>
#include <string>
#include <vector>

#include "common/text/text_utils.h"

namespace zelto {
namespace {

using Texts = std::vector<std::string>;

Texts Contents(const FieldList& fields) {
    Texts texts;
    for (const DString& field : fields)
        texts.emplace_back(field.c_str());
    return texts;
}

struct SplitCase {
    const char* text;
    const char* separators;
    int32_t limit;
    bool keep_empty;
    Texts fields;
    Texts with_separators;
};

TEST(Split, CutsByTheTable) {
    const SplitCase cases[] = {
        {"", "-", -1, true, {}, {}},
        {"abc", "", -1, false, {"abc"}, {"abc"}},
        {"abc", nullptr, -1, false, {"abc"}, {"abc"}},
        {"a-b", "-", -1, false, {"a", "b"}, {"a-", "b"}},
        {"-a-b", "-", -1, false, {"-a", "b"}, {"-a-", "b"}},
        {"a--b-", "-", -1, false, {"a", "b"}, {"a-", "b-"}},
        {"a--b-", "-", -1, true, {"a", "", "b"}, {"a-", "-", "b-"}},
        {"::a", ":", -1, false, {":", "a"}, {"::", "a"}},
        {"::a", ":", -1, true, {"", "", "a"}, {":", ":", "a"}},
        {"a.b-c\xFF"
         "d",
         "-.\xFF",
         -1,
         false,
         {"a", "b", "c", "d"},
         {"a.", "b-", "c\xFF", "d"}},
        {"10:20", ":", 2, false, {"10", "20"}, {"10:", "20"}},
        {"a-b-c-d", "-", 3, false, {"a", "b", "c-d"}, {"a-", "b-", "c--d"}},
        {"a-b-c-", "-", 3, false, {"a", "b", "c"}, {"a-", "b-", "c-"}},
        {"a-b-c--", "-", 3, false, {"a", "b", "c--"}, {"a-", "b-", "c---"}},
        {"a-b", "-", 3, false, {"a", "b"}, {"a-", "b"}},
        {"a-b", "-", 1, false, {"a-b"}, {"a--b"}},
        {"-", "-", 1, true, {""}, {"-"}},
        {"a-b", "-", 0, true, {}, {}},
    };
    FieldList fields;
    fields.Append() = "from before";
    for (const SplitCase& c : cases) {
        SCOPED_TRACE(std::string(c.text) + " limit " + std::to_string(c.limit));
        EXPECT_TRUE(SplitTokens(c.text, c.separators, fields, c.limit, c.keep_empty));
        EXPECT_EQ(Contents(fields), c.fields);
        EXPECT_TRUE(SplitTokensKeepSeparators(c.text, c.separators, fields, c.limit, c.keep_empty));
        EXPECT_EQ(Contents(fields), c.with_separators);
    }
}

TEST(Split, FieldsHaveTheCapacityAskedForAndStayInPlace) {
    FieldList fields;
    SplitTokens("a,b", ",", fields, -1, false, 200);
    EXPECT_GE(fields[0].capacity(), 200);
    const DString* first = &fields[0];
    for (int i = 0; i < 1000; ++i)
        fields.Append() = "x";
    EXPECT_EQ(first, &fields[0]);
    EXPECT_EQ(fields.Count(), 1002);
}

TEST(Numbers, ReadIntegersLeniently) {
    const struct {
        const char* text;
        int32_t value;
    } cases[] = {
        {"", 0},
        {"0x1f", 31},
        {"0xFFFFFFFF", -1},
        {"0x", 0},
        {"0x-0x1Fg", -31},
        {"0X1F", 0},
        {"-12abc", -12},
        {" \t\n\v\f\r+7", 7},
        {"- 7", 0},
        {"\xA0"
         "7",
         0},
        {"2147483647", 2147483647},
        {"-2147483648", std::numeric_limits<int32_t>::min()},
        {"4294967297", 1},
        {"99999999999999999999", 1661992959},
    };
    for (const auto& c : cases)
        EXPECT_EQ(TextToInteger(c.text), c.value) << c.text;
}

TEST(Numbers, Read64BitIntegersInTwoParts) {
    const struct {
        const char* text;
        int64_t value;
    } cases[] = {
        {"", 0},
        {"-", 0},
        {"12345678", 12345678},
        {"1234567890123", 1234567890123},
        {"-123456789", -123456789},
        {"9223372036854775807", std::numeric_limits<int64_t>::max()},
        {"-9223372036854775808", std::numeric_limits<int64_t>::min()},
        {"123456 78", 100023456},  // the last eight stop at the blank
        {"1-2345678", 97654322},   // and may begin with a sign
        {"-12-345678", -100000002},
    };
    for (const auto& c : cases)
        EXPECT_EQ(TextToInt64(c.text), c.value) << c.text;
}

TEST(Numbers, ReadHexadecimalDigitsWithoutChecking) {
    EXPECT_EQ(HexDigitsToInteger("fF00", 2), 255U);
    EXPECT_EQ(HexDigitsToInteger("G", 1), 16U);
    EXPECT_EQ(HexDigitsToInteger("1G", 2), 16U);  // the spilt bit lands on the digit before
    EXPECT_EQ(HexDigitsToInteger("123456789", 9), 0x23456789U);
    EXPECT_EQ(HexDigitsToInteger("1", -1), 0U);
    EXPECT_EQ(HexDigitsToInteger(nullptr, 2), 0U);
    EXPECT_EQ(HexToInteger("0x1f"), 31U);
    EXPECT_EQ(HexToInteger("0x"), 33U);
    EXPECT_EQ(HexToInteger(""), 0U);
}

TEST(Numbers, ReadDecimalFractions) {
    const struct {
        const char* text;
        bool comma;
        double value;
    } cases[] = {
        {"3,5", true, 3.5},       {"3,5", false, 3.0},   {"-0.25", false, -0.25},
        {"  -1.5e3", true, -1.5}, {"1,2.3", true, 1.2},  {"1.2,3", true, 1.2},
        {"1,2.3", false, 1.3},    {"--5.5", false, 4.5}, {"x.5", false, 0.5},
        {"\t7", false, 7.0},      {"", true, 0.0},       {"7.", true, 7.0},
    };
    for (const auto& c : cases)
        EXPECT_DOUBLE_EQ(TextToDouble(c.text, c.comma), c.value) << c.text;
    EXPECT_EQ(TextToDouble(nullptr, true), 0.0);
    const std::string long_fraction = "0." + std::string(5000, '9');
    EXPECT_DOUBLE_EQ(TextToDouble(long_fraction.c_str(), false), 1.0);
}

TEST(Encodings, HexTakesBinaryBytesUpToTheCapacity) {
    DString text("\x01\xAB");
    text.set_codepage(1250);
    HexEncode(text, -1);
    EXPECT_STREQ(text.c_str(), "01AB");
    EXPECT_EQ(text.codepage(), 1250);

    DString digest;
    std::copy_n("a\0b", 4, digest.buffer(4));
    DString out("old");
    EXPECT_EQ(&HexEncodeCopy(digest, out, 3), &out);
    EXPECT_STREQ(out.c_str(), "610062");
    EXPECT_STREQ(HexEncodeCopy(digest, digest, 1).c_str(), "61");
    EXPECT_STREQ(HexEncodeCopy("", out, 50).c_str(), "");

    HexEncode(text, 1 << 20);
    EXPECT_EQ(text.length() % 2, 0);
    EXPECT_EQ(std::string(text.c_str()).substr(0, 8), "30314142");
}

struct EncodingCase {
    void (*operation)(DString&);
    const char* text;
    const char* result;
};

TEST(Encodings, InPlaceByTheTable) {
    const EncodingCase cases[] = {
        {PercentEncode, "", ""},
        {PercentEncode, "a b/c", "a b%2Fc"},
        {PercentEncode, "\xFF+Z9", "%FF%2BZ9"},
        {PercentDecode, "a+b%2Fc", "a b/c"},
        {PercentDecode, "%2f%4", "/\x04"},
        {PercentDecode, "x%", "x"},
        {PercentDecode, "a%00b", "ab"},
        {EscapeListChars, "a,b\r\n100%", "a%2Cb%0D%0A100%25"},
        {EscapeListChars, "\xE9+ ", "\xE9+ "},
        {UnescapePercent, "a%2Cb%0D%0A100%25", "a,b\r\n100%"},
        {UnescapePercent, "a%4", "a4"},
        {UnescapePercent, "%", ""},
        {UnescapePercent, "50%%41",
         "50"
         "\xE4"
         "1"},
        {TrimLineBreaks, "\r\n\n a\nb \r", " a\nb "},
        {TrimLineBreaks, "\n\r", ""},
        {TrimLineBreaks, "", ""},
    };
    for (const EncodingCase& c : cases) {
        DString text(c.text);
        c.operation(text);
        EXPECT_STREQ(text.c_str(), c.result) << c.text;
    }
}

TEST(Encodings, EveryByteComesBack) {
    std::string all;
    for (int byte = 1; byte < 256; ++byte)
        all += static_cast<char>(byte);
    DString encoded(all.c_str());
    PercentEncode(encoded);
    PercentDecode(encoded);
    EXPECT_EQ(all, encoded.c_str());
    EscapeListChars(encoded);
    EXPECT_EQ(std::string(encoded.c_str()).find_first_of(",\r\n"), std::string::npos);
    UnescapePercent(encoded);
    EXPECT_EQ(all, encoded.c_str());
}

TEST(Body, IsExtractedBetweenItsTags) {
    const struct {
        const char* text;
        bool found;
        const char* result;
    } cases[] = {
        {"xx<BODY>\r\nhi\r\n</BODY>", true, "hi"},
        {"<BODY></BODY>", true, ""},
        {"</BODY><BODY>a<BODY>b</BODY>c</BODY>", true, "a<BODY>b"},
        {"<body>hi</body>", false, "<body>hi</body>"},
        {"\n<BODY>hi", false, "\n<BODY>hi"},
        {"", false, ""},
    };
    for (const auto& c : cases) {
        DString text(c.text);
        EXPECT_EQ(ExtractBody(text), c.found) << c.text;
        EXPECT_STREQ(text.c_str(), c.result);
    }
}

TEST(Comparison, FoldsAsciiToLowerCase) {
    EXPECT_EQ(CompareNoCase("aBc", "AbC"), 0);
    EXPECT_LT(CompareNoCase("_", "A"), 0);  // below the lower-case letters
    EXPECT_LT(CompareNoCase(nullptr, "a"), 0);
    EXPECT_NE(CompareNoCase("\xC9", "\xE9"), 0);
    EXPECT_EQ(CompareNoCase("abX", "ABy", 2), 0);
    EXPECT_GT(CompareNoCase("abz", "ABy", 3), 0);
    EXPECT_EQ(CompareNoCase("a", "b", 0), 0);
    EXPECT_EQ(CompareNoCase("a", nullptr, -1), 0);
}

}  // namespace
}  // namespace zelto
