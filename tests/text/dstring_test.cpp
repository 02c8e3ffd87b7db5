#include "common/text/dstring.h"

#include <gtest/gtest.h>
#include <limits>
#include <string>

#include "common/text/codepage.h"

namespace {

using zelto::DString;
using zelto::SetCurrentCodepage;

class DStringTest : public testing::Test {
  protected:
    ~DStringTest() override {
        SetCurrentCodepage(0);
        EXPECT_EQ(DString::memory_in_use(), in_use_);
    }

  private:
    int32_t in_use_ = DString::memory_in_use();
};

template <class... Values>
std::string Appended(int decimals, Values... values) {
    DString text;
    text.set_decimals(decimals);
    (text += ... += values);
    return text.c_str();
}

TEST_F(DStringTest, BlocksHaveTheStatedSizesAndAreCounted) {
    const int32_t before = DString::memory_in_use();
    DString empty;
    EXPECT_STREQ(empty.c_str(), "");
    EXPECT_EQ(DString("").capacity() + DString(empty).capacity() + empty.capacity(), 0);
    EXPECT_EQ(DString::memory_in_use(), before);

    DString text("abc");
    EXPECT_EQ(text.capacity(), 18);
    text += "12345678901234567890";
    EXPECT_EQ(text.capacity(), 48);
    EXPECT_EQ(DString::memory_in_use(), before + 48);
    text = "";
    EXPECT_EQ(text.capacity(), 48);

    DString assigned;
    assigned = empty;
    EXPECT_EQ(assigned.capacity(), 16);
    DString exact;
    exact = "abcd";
    EXPECT_EQ(exact.capacity(), 5);
    exact += "";
    EXPECT_EQ(exact.capacity(), 20);
    exact.reserve(-1, true);
    EXPECT_EQ(exact.buffer(30) - exact.c_str(), 0);
    EXPECT_EQ(exact.capacity(), 74);
    DString none;
    none.reserve(0, false);
    EXPECT_EQ(none.capacity(), 0);
    EXPECT_STREQ(none.c_str(), "");
    EXPECT_THROW(none.reserve(std::numeric_limits<int>::max(), true), std::bad_alloc);
}

TEST_F(DStringTest, BytesAreReachedInsideAndPastTheText) {
    DString text("ab\xE9");
    EXPECT_EQ(text[1], 'b');
    EXPECT_EQ(text[3] | text[-1] | text[1000], 0);
    EXPECT_EQ(text.last_char(), -23);
    EXPECT_EQ(DString().last_char(), 0);
    *text.at(1) = 'x';
    EXPECT_EQ(text.compare("ax\xE9"), 0);
    text.at(100);
    EXPECT_GE(text.capacity(), 103);
    try {
        text.at(-1);
        FAIL();
    } catch (const char* error) {
        EXPECT_STREQ(error, "Error DString n<0");
    }
    text.fill('z', 2);
    EXPECT_STREQ(text.c_str(), "zz\xE9");  // no terminator of its own
}

TEST_F(DStringTest, WhoHoldsAPointerMayEndTheTextAtAnyLaterTime) {
    for (const bool by_buffer : {false, true}) {
        DString text("abcdefgh");
        char* held = by_buffer ? text.buffer(4) : text.at(0);
        text += 'i';
        EXPECT_EQ(text.length(), 9);
        held[3] = 0;
        EXPECT_EQ(text.length(), 3);
        EXPECT_EQ(text[5], 0);
        text += 7;
        EXPECT_STREQ(text.c_str(), "abc7");
        DString copy(text);
        held[1] = 0;
        EXPECT_STREQ((copy += text).c_str(), "abc7a");
    }
    DString grown;
    *grown.at(0) = 0;
    for (int i = 0; i < 1000; ++i)
        (grown += 'x') += "yz";
    EXPECT_EQ(grown.length(), 3000);
    EXPECT_EQ(std::string(grown.c_str()).size(), 3000U);
}

TEST_F(DStringTest, TheTagTravelsOnlyWhereItShould) {
    SetCurrentCodepage(1252);
    DString tagged("x");
    SetCurrentCodepage(65001);
    EXPECT_EQ(tagged.codepage(), 1252);
    EXPECT_EQ(DString().codepage(), 65001);
    EXPECT_EQ(DString(tagged).codepage(), 1252);
    EXPECT_EQ(DString(tagged, DString::TextOnly()).codepage(), 65001);

    DString text("y");
    text.assign_text(tagged);
    text = "plain";
    EXPECT_EQ(text.codepage(), 65001);
    text += tagged;
    EXPECT_EQ(text.codepage(), 65001);
    text.clear();
    text += tagged;
    EXPECT_EQ(text.codepage(), 1252);
    text.set_codepage(-1);
    text.set_decimals(3);
    text += std::string(500, 'a').c_str();
    EXPECT_EQ(text.codepage(), 1252);
    EXPECT_EQ(text.decimals(), 3);

    DString target;
    text.move_to(target);
    EXPECT_EQ(target.codepage(), 1252);
    EXPECT_EQ(target.decimals(), 1);
    EXPECT_TRUE(text.is_empty());
    text += 1.5;  // comes in the current codepage
    EXPECT_EQ(text.codepage(), 65001);
    target.clear();
    target += 15;
    EXPECT_EQ(target.codepage(), 1252);
}

TEST_F(DStringTest, PlainTextAssignmentTellsWhenNothingChanged) {
    const char* null = nullptr;
    DString text;
    EXPECT_EQ(text = null, nullptr);
    EXPECT_EQ(text = "", nullptr);
    EXPECT_EQ(text = static_cast<const WCHAR*>(nullptr), nullptr);
    EXPECT_EQ(text.capacity(), 0);
    EXPECT_EQ(text = "a", &text);
    EXPECT_EQ(text = null, &text);
    EXPECT_TRUE(text.is_empty());
    EXPECT_EQ(text = TEXT(""), &text);
    text += null;
    text.assign("abcdef", 3);
    EXPECT_STREQ(text.c_str(), "abc");
    text.assign("ab", 5);
    EXPECT_STREQ(text.c_str(), "ab");
    text.assign(null, 2);
    EXPECT_STREQ(text.c_str(), "");
    text = -7;
    EXPECT_STREQ(text.c_str(), "-7");
}

TEST_F(DStringTest, AStringMayBeItsOwnArgument) {
    DString text("0123456789");
    for (int i = 0; i < 3; ++i)
        text += text.c_str() + 5;
    EXPECT_STREQ(text.c_str(), "012345678956789567895678956789567895678956789");
    text = "0123456789abcdefgh";
    text += text;
    EXPECT_STREQ(text.c_str(), "0123456789abcdefgh0123456789abcdefgh");
    text = text.c_str() + 30;
    EXPECT_STREQ(text.c_str(), "cdefgh");
    text.assign(text.c_str() + 1, 3);
    EXPECT_STREQ(text.c_str(), "def");
    text.format("[%s%s]", text.c_str(), text.c_str());
    const DString& same = text;
    text = same;
    EXPECT_STREQ(text.c_str(), "[defdef]");
}

TEST_F(DStringTest, IntegersAreWrittenByTheirWidth) {
    EXPECT_EQ(Appended(1, -7, ' ', 2147483648U, ' ', static_cast<unsigned char>(200)),
              "-7 -2147483648 200");
    EXPECT_EQ(Appended(1, static_cast<short>(-2), ' ', static_cast<unsigned short>(65535)),
              "-2 -1");
    EXPECT_EQ(Appended(1, static_cast<signed char>(-5), 'x', '\0', 5L, 6UL), "-5x56");
    EXPECT_EQ(Appended(1, int64_t{-9007199254740993}, ' ', uint64_t{18446744073709551615U}),
              "-9007199254740993 -1");
    EXPECT_EQ(Appended(1, std::numeric_limits<long long>::min()), "-9223372036854775808");
}

TEST_F(DStringTest, DoublesAreCutNotRounded) {
    const struct {
        double value;
        int decimals;
        const char* text;
    } kCases[] = {
        {1.15, 2, "1.14"},
        {-1.25, 1, "-1.2"},
        {0.1, 3, "0.100"},
        {3.0, 0, "3"},
        {-0.5, 1, "-0.5"},
        {12.345, -3, "12.3"},
        {-0.0, 1, "0.0"},
        {0.99999999999999989, 3, "0.999"},
        {-2147483648.5, 1, "-2147483648.5"},
        {1e300, 1, "9223372036854774784.0"},
        {-std::numeric_limits<double>::infinity(), 0, "-9223372036854774784"},
        {std::numeric_limits<double>::quiet_NaN(), 1, "0.0"},
    };
    for (const auto& c : kCases)
        EXPECT_EQ(Appended(c.decimals, c.value), c.text);
    EXPECT_EQ(Appended(2, 0.1F), "0.10");
    EXPECT_EQ(Appended(1, "x=", 2.5), "x=2.5");
}

TEST_F(DStringTest, FormatNeverPassesItsScratch) {
    DString text("old");
    EXPECT_EQ(text.format("%d-%s-%I64d", 5, "a", static_cast<long long>(1) << 40), 17);
    EXPECT_STREQ(text.c_str(), "5-a-1099511627776");
    const std::string fits(999, 'f');
    EXPECT_EQ(text.format("%s", fits.c_str()), 999);
    EXPECT_EQ(text.c_str(), fits);
    EXPECT_LT(text.format("%s!", std::string(5000, 'f').c_str()), 0);
    EXPECT_EQ(text.c_str(), fits);
    EXPECT_EQ(text.format("%s", ""), 0);
    EXPECT_TRUE(text.is_empty());
}

TEST_F(DStringTest, ComparisonsKeepTheirAsymmetries) {
    const char* null = nullptr;
    const DString empty;
    const DString text("Abc\xE9");
    EXPECT_EQ(empty.compare(null), 0);
    EXPECT_EQ(empty.compare(""), 0);
    EXPECT_EQ(empty.compare("a"), -1);
    EXPECT_EQ(text.compare(null), 1);
    EXPECT_GT(text.compare("Abcz"), 0);
    EXPECT_EQ(empty.compare(null, 3), 0);
    EXPECT_EQ(empty.compare("", 3), 1);
    EXPECT_EQ(text.compare(null, 3), 1);
    EXPECT_EQ(text.compare("Abd", 2), 0);
    EXPECT_LT(text.compare("Abd", 3), 0);
    EXPECT_NE(text.compare("Abc", -1), 0);
    EXPECT_EQ(empty.compare_no_case(null), 0);
    EXPECT_EQ(empty.compare_no_case("a"), 1);
    EXPECT_EQ(text.compare_no_case(null), 1);
    EXPECT_EQ(text.compare_no_case("aBC\xE9"), 0);
    EXPECT_LT(text.compare_no_case("abd"), 0);
    EXPECT_EQ(DString("harbour").compare_no_case(TEXT("HARBOUR")), 0);
}

TEST_F(DStringTest, SearchesAndCuts) {
    const DString text("one two three");
    EXPECT_EQ(text.find('t'), 4);
    EXPECT_EQ(text.find('z'), -1);
    EXPECT_EQ(text.find('\0'), 13);
    EXPECT_EQ(DString().find('\0'), 0);
    EXPECT_EQ(DString().find('a'), -1);
    const struct {
        int start, count;
        const char* part;
    } kParts[] = {{4, 3, "two"}, {0, 99, "one two three"}, {13, 5, ""},
                  {99, 1, ""},   {-5, 3, "one"},           {2, -1, ""}};
    for (const auto& c : kParts)
        EXPECT_STREQ(text.substring(c.start, c.count).c_str(), c.part);

    DString rest(text);
    DString word;
    for (const char* expected : {"one", "two", "three"}) {
        rest.take_first_word(word);
        EXPECT_STREQ(word.c_str(), expected);
    }
    EXPECT_TRUE(rest.is_empty());
    rest.take_first_word(word);
    EXPECT_STREQ(word.c_str(), "three");
    rest = " x";
    rest.take_first_word(word);
    EXPECT_TRUE(rest.is_empty() && word.is_empty());

    DString dropped(text);
    dropped.drop_first(-1);
    dropped.drop_first(8);
    EXPECT_STREQ(dropped.c_str(), "three");
    dropped.drop_first(5);
    EXPECT_TRUE(dropped.is_empty());
}

}  // namespace
