#include "common/text/codepage.h"

#include <gtest/gtest.h>
#include <string>

namespace {

using namespace zelto;

CodepageTable TableOf(uint32_t identifier, uint16_t first) {
    CodepageTable table{};
    table.identifier = identifier;
    table.page_count = 1;
    for (int i = 0; i < kTablePageSize; ++i)
        table.mapping[i] = static_cast<uint16_t>(first + i);
    return table;
}

class CodepageTest : public testing::Test {
  protected:
    CodepageTest() { GlobalCodepageRegistry() = &registry_; }
    ~CodepageTest() override {
        GlobalCodepageRegistry() = nullptr;
        SetCurrentCodepage(0);
    }
    void Register(uint32_t identifier, uint16_t first, int position = -1) {
        const CodepageTable table = TableOf(identifier, first);
        registry_.RegisterTable(&table, position);
    }
    std::string Narrow(int32_t codepage, const WCHAR* text, int size = 40) {
        char out[42] = {};
        result_ =
            WideToNarrow(&registry_, codepage, text, static_cast<int>(wcslen(text)), out, size);
        return out;
    }
    std::u16string Wide(int32_t codepage, const std::string& text, int size = 40) {
        WCHAR out[42] = {};
        result_ = NarrowToWide(&registry_, codepage, text.data(), static_cast<int>(text.size()),
                               out, size);
        return out;
    }

    CodepageRegistry registry_;
    int result_ = 0;
};

constexpr int32_t kNoSuchPage = 9999;

TEST_F(CodepageTest, LookupsFindTheFirstTableAndKeepTheirAnswer) {
    EXPECT_EQ(registry_.FindTable(-1), -1);
    EXPECT_EQ(registry_.FindTable(0), -1);
    Register(1250, 0x100);
    Register(1252, 0x200);
    Register(1252, 0x300);
    EXPECT_EQ(registry_.FindTable(0), 1);
    EXPECT_EQ(registry_.FindTable(1252), 1);
    Register(1253, 0x400, 0);
    EXPECT_EQ(registry_.FindTable(1252), 2);
    EXPECT_EQ(registry_.FindTable(1253), 0);

    EXPECT_EQ(registry_.FindTable(1251), -1);
    registry_.Table(1).identifier = 1251;  // unseen: the answer stands until another question
    EXPECT_EQ(registry_.FindTable(1251), -1);
    EXPECT_EQ(registry_.FindTable(1250), -1);
    EXPECT_EQ(registry_.FindTable(1251), 1);

    const int32_t created = registry_.CreateTable(-1);
    registry_.Table(created).identifier = 28591;
    EXPECT_EQ(registry_.FindTable(28591), 4);
    EXPECT_THROW(registry_.RegisterTable(nullptr, -1), PointerArrayError);
}

TEST_F(CodepageTest, EachWayIsTakenWhenThoseBeforeItHaveNothing) {
    EXPECT_EQ(Narrow(1252, TEXT("a\u20AC")), "a\x80");
    EXPECT_EQ(result_, 2);
    EXPECT_EQ(Narrow(CP_UTF8, TEXT("\u20AC")), "\xE2\x82\xAC");
    EXPECT_EQ(Narrow(kNoSuchPage, TEXT("a\u0100\u0141\xE9")), "a?A\xE9");
    EXPECT_EQ(result_, 5);
    EXPECT_EQ(Wide(1252, "a\x80"), u"a\u20AC");
    EXPECT_EQ(Wide(CP_UTF8, "\xE2\x82\xAC"), u"\u20AC");
    EXPECT_EQ(result_, 1);
    EXPECT_EQ(Wide(kNoSuchPage, "a\x80\xFF"), u"a\xFF80\xFFFF");
    EXPECT_EQ(result_, 4);
    EXPECT_EQ(Narrow(kNoSuchPage, TEXT("abc"), 2), "");
    EXPECT_EQ(result_, 0);

    Register(1252, 0x400);
    Register(CP_UTF8, 0x500);
    EXPECT_EQ(Narrow(1252, TEXT("a\u0401\u20AC")), "a\x81?");
    EXPECT_EQ(result_, 3);
    EXPECT_EQ(Wide(0, "a\x80\x81"), u"a\x80\u0401");
    EXPECT_EQ(result_, 4);
    EXPECT_EQ(Narrow(CP_UTF8, TEXT("\u0500")), "\x80");
    EXPECT_EQ(Narrow(CP_UTF8, TEXT("\u0500\u0500a"), 2), "\xD4\x80");  // no room for the table's
    EXPECT_EQ(result_, 5);
}

TEST_F(CodepageTest, CountsAndMissingTextsAreTakenAsStated) {
    char bytes[8] = "zzzz";
    WCHAR units[8] = {1, 1, 1, 1};
    EXPECT_EQ(WideToNarrow(nullptr, CP_UTF8, TEXT("ab\u20AC"), -1, nullptr, 0), 5);
    EXPECT_EQ(WideToNarrow(nullptr, CP_UTF8, TEXT("ab"), 0, bytes, 8), 1);
    EXPECT_EQ(bytes[0], 0);
    EXPECT_EQ(WideToNarrow(nullptr, 1252, TEXT("ab"), -1, bytes, 8), 3);
    EXPECT_EQ(WideToNarrow(nullptr, 1252, TEXT("ab"), -1, bytes, 0), 3);
    EXPECT_EQ(WideToNarrow(nullptr, 1252, TEXT(""), 0, nullptr, 0), 1);
    EXPECT_EQ(WideToNarrow(nullptr, 1252, nullptr, 5, bytes, 8), 1);
    EXPECT_EQ(NarrowToWide(nullptr, 1252, "ab", -1, units, 8), 1);
    EXPECT_EQ(units[0], 0);
    EXPECT_EQ(NarrowToWide(nullptr, CP_UTF8, "ab", -1, nullptr, 0), 2);
    EXPECT_EQ(NarrowToWide(nullptr, kNoSuchPage, "ab", -1, nullptr, 0), 3);
    EXPECT_EQ(NarrowToWide(nullptr, 1252, nullptr, 2, units, 8), 1);
}

TEST_F(CodepageTest, CharactersAndNames) {
    Register(1252, 0x400);
    EXPECT_EQ(MapCharacter(0x401, 1252), 129U);
    EXPECT_EQ(MapCharacter(0x401, 0), 129U);
    EXPECT_EQ(MapCharacter(0x10401, 1252), 63U);
    EXPECT_EQ(MapCharacter(0x7F, 1252), 0x7FU);
    EXPECT_EQ(MapCharacter(0x401, 1250), 0x401U);
    SetCurrentCodepage(1250);
    EXPECT_EQ(MapCharacter(0x401, 0), 0x401U);
    EXPECT_EQ(CodepageFromName("UTF-8"), 65001);
    EXPECT_EQ(CodepageFromName("ISO-8859-1"), 28591);
    EXPECT_EQ(CodepageFromName("utf-8"), -1);
    EXPECT_STREQ(CodepageName(65001).c_str(), "UTF-8");
    EXPECT_TRUE(CodepageName(28591).is_empty());
}

TEST_F(CodepageTest, StringsTakeWideTextInTheirOwnCodepage) {
    SetCurrentCodepage(CP_UTF8);
    DString text(TEXT("A\u00E9\U0001F600"));
    EXPECT_STREQ(text.c_str(), "A\xC3\xA9\xF3\x8F\xB9\x80");
    EXPECT_EQ(ToWide(text), u"A\u00E9\U0001F600");
    DString latin;
    latin.set_codepage(1252);
    EXPECT_EQ(latin.assign_wide(TEXT("\u00E9t\u00E9!"), 3), 3);
    EXPECT_STREQ(latin.c_str(), "\xE9t\xE9");
    latin = TEXT("\u20AC");
    EXPECT_STREQ(latin.c_str(), "\x80");
    latin += TEXT("\u20AC");  // comes in the current codepage, and stays so
    EXPECT_STREQ(latin.c_str(), "\x80\xE2\x82\xAC");
    EXPECT_EQ(latin.assign_wide(nullptr, 3), 0);
    EXPECT_EQ(text.assign_wide(TEXT("x"), 0), 0);
    EXPECT_TRUE(latin.is_empty() && text.is_empty());
}

TEST_F(CodepageTest, RecodingGoesThroughTheTables) {
    SetCurrentCodepage(CP_UTF8);
    DString text("a\xC3\xA9\xE2\x82\xAC");
    text.recode(-1);
    EXPECT_STREQ(text.c_str(), "a\xC3\xA9\xE2\x82\xAC");
    text.recode(1252);
    EXPECT_STREQ(text.c_str(), "a\xE9\x80");
    EXPECT_EQ(text.codepage(), 1252);
    text.set_codepage(1);  // the system's own, as 0
    text.recode(-1);
    EXPECT_STREQ(text.c_str(), "a\xC3\xA9\xE2\x82\xAC");
    text.recode(0);
    EXPECT_STREQ(text.c_str(), "a\xE9\x80");
    EXPECT_EQ(text.codepage(), CP_UTF8);  // stays the string's
    text.set_codepage(1);
    text.recode(-1);
    EXPECT_EQ(text.codepage(), CP_UTF8);
    Register(28597, 0xE9);
    text.recode(28597);
    EXPECT_STREQ(text.c_str(), "a\x80?");
    DString empty;
    empty.recode(1252);
    EXPECT_TRUE(empty.is_empty());
    EXPECT_EQ(empty.codepage(), 1252);
}

}  // namespace
