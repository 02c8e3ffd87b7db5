#include <algorithm>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <random>
#include <string>
#include <unistd.h>

#include "common/text/codepage.h"
#include "common/text/codepage_table.h"

namespace {

using namespace zelto;

constexpr uint16_t kDual[] = {0x062C, 0x062D, 0x062E, 0x0647, 0x0639, 0x063A, 0x0641, 0x0642,
                              0x062B, 0x0635, 0x0636, 0x0637, 0x0643, 0x0645, 0x0646, 0x062A,
                              0x0644, 0x0628, 0x064A, 0x0633, 0x0634, 0x0638};
constexpr uint16_t kRight[] = {0x0627, 0x0623, 0x0625, 0x0622, 0x062F, 0x0630,
                               0x0631, 0x0632, 0x0648, 0x0624, 0x0629, 0x0649};

// Page 0 has the Arabic letters and others around them; every further entry is unlike any other.
CodepageTable ArabicTable() {
    CodepageTable table{};
    table.identifier = 1256;
    table.page_count = 5;
    for (uint16_t i = 0; i < 640; ++i)
        table.mapping[i] = static_cast<uint16_t>(i < 128 ? 0x0610 + i : 0xF000 + i);
    return table;
}

bool IsOneOf(const uint16_t* begin, const uint16_t* end, uint16_t unit) {
    return std::find(begin, end, unit) != end;
}

uint16_t NaiveUnit(const CodepageTable& table, const std::string& text, size_t at) {
    const auto byte = [&](size_t i) { return static_cast<unsigned char>(text[i]); };
    const auto plain = [&](size_t i) {
        return byte(i) > 128 ? table.mapping[byte(i) - 128] : uint16_t{byte(i)};
    };
    const uint16_t unit = plain(at);
    if (table.page_count == 1 || unit < 1569 || unit > 1610)
        return unit;
    const bool previous = at > 0 && IsOneOf(std::begin(kDual), std::end(kDual), plain(at - 1));
    const bool next =
        at + 1 < text.size() && (IsOneOf(std::begin(kDual), std::end(kDual), plain(at + 1)) ||
                                 IsOneOf(std::begin(kRight), std::end(kRight), plain(at + 1)));
    const int form = previous ? (next ? 256 : 384) : (next ? 128 : 0);
    return table.mapping[byte(at) + form];
}

uint8_t NaiveByte(const CodepageTable& table, uint16_t unit) {
    uint16_t entries[641];
    std::memcpy(entries, table.mapping, sizeof entries);  // the last one lies in the folding bytes
    int found = -1;
    for (int i = 0; i <= static_cast<int>(std::min(table.page_count, 5U)) * 128; ++i)
        found = entries[i] == unit ? i : found;
    return static_cast<uint8_t>(found < 0 ? 0 : 128 + found % 128);
}

TEST(CodepageTable, DecodesEveryNeighbourhoodAsTheNaiveWay) {
    for (const uint32_t pages : {1U, 5U}) {
        CodepageTable table = ArabicTable();
        table.page_count = pages;
        std::minstd_rand random(11);
        std::string text;
        for (int i = 0; i < 200000; ++i)
            text += static_cast<char>(random() % 8 == 0 ? random() % 128 : 128 + random() % 90);
        for (const size_t length : {size_t{1}, size_t{2}, size_t{3}, text.size()}) {
            const std::string part = text.substr(text.size() - length);
            std::u16string out(length, 0);
            ASSERT_EQ(DecodeByTable(table, part.data(), static_cast<int>(length), out.data()),
                      static_cast<int>(length));
            for (size_t i = 0; i < length; ++i)
                ASSERT_EQ(out[i], NaiveUnit(table, part, i)) << i;
        }
    }
}

TEST(CodepageTable, OtherPageCountsDecodeToAnEmptyText) {
    CodepageRegistry registry;
    CodepageTable table = ArabicTable();
    table.page_count = 3;
    registry.RegisterTable(&table, -1);
    WCHAR out[5] = {1, 1, 1, 1, 1};
    EXPECT_EQ(NarrowToWide(&registry, 1256, "abc", 3, out, 3), 4);
    EXPECT_EQ(out[0] | out[3], 0);
    EXPECT_EQ(out[4], 1);
}

TEST(CodepageTable, EncodesEveryUnitAsTheNaiveWay) {
    std::minstd_rand random(5);
    for (const uint32_t pages : {0U, 1U, 2U, 5U, 0xFFFFFFFFU}) {
        CodepageTable table = ArabicTable();
        table.page_count = pages;
        for (int i = 0; i < 60; ++i)
            table.mapping[random() % 640] = table.mapping[random() % 640];
        table.folding[0][0] = 0x34;
        table.folding[0][1] = 0xF2;  // as entry 640: U+F234
        std::u16string text;
        std::string expected;
        for (unsigned unit = 1; unit < 0x10000; ++unit) {
            const uint8_t byte = NaiveByte(table, static_cast<uint16_t>(unit));
            text += static_cast<char16_t>(unit);
            expected += static_cast<char>(unit < 128 ? unit : byte != 0 ? byte : '?');
        }
        std::string out(text.size(), 0);
        EncodeByTable(table, text.data(), static_cast<int>(text.size()), out.data());
        ASSERT_EQ(out, expected);
        for (size_t at = 0; at + 40 < text.size(); at += 1 + random() % 300) {
            std::string few(40, 0);  // too few for an index
            EncodeByTable(table, text.data() + at, 40, few.data());
            ASSERT_EQ(few, expected.substr(at, 40));
            ASSERT_EQ(FindTableByte(table, text[at + 200 < text.size() ? at + 200 : at]),
                      NaiveByte(table, text[at + 200 < text.size() ? at + 200 : at]));
        }
    }
}

TEST(CodepageTable, HonoursARecordThatItsOwnerChanges) {
    CodepageRegistry registry;
    const CodepageTable table = ArabicTable();
    registry.RegisterTable(&table, -1);
    const std::u16string text(500, 0x2468);
    std::string out(501, 0);
    WideToNarrow(&registry, 1256, text.data(), 500, out.data(), 500);
    EXPECT_EQ(out[499], '?');
    registry.Table(0).mapping[7] = 0x2468;
    EXPECT_EQ(WideToNarrow(&registry, 1256, text.data(), 500, out.data(), 500), 500);
    EXPECT_EQ(out.substr(0, 500), std::string(500, '\x87'));
}

TEST(CodepageTableFile, RegistersAllOfAGoodFileAndNothingOfABadOne) {
    CodepageRegistry registry;
    GlobalCodepageRegistry() = &registry;
    CodepageTable record = ArabicTable();
    const std::string bytes(reinterpret_cast<const char*>(&record), sizeof record);
    record.page_count = 3;
    const std::string odd(reinterpret_cast<const char*>(&record), sizeof record);
    const std::string signature = kTableFileSignature;
    std::string wrong = signature;
    wrong[27] = 'E';
    const struct {
        std::string content;
        const char* error;
    } kBad[] = {{"", "not a codepage table file"},
                {wrong + bytes, "not a codepage table file"},
                {signature, "no record"},
                {signature + bytes + bytes.substr(1), "the last record is cut short"},
                {signature + bytes + '\n', "the last record is cut short"},
                {signature + bytes + odd, "a record's page count is neither 1 nor 5"},
                {signature + std::string(kMaxTableFileRecords * 2312 + 1, 0), "too many records"}};
    const std::string path = testing::TempDir() + "tables_" + std::to_string(getpid());
    const auto load = [&](const std::string& content, DString& error) {
        std::ofstream(path, std::ios::binary) << content;
        return LoadCodepageTables(path.c_str(), &error);
    };
    for (const auto& c : kBad) {
        DString error("old");
        EXPECT_FALSE(load(c.content, error));
        EXPECT_EQ(error.c_str(), "Codepage table file: " + std::string(c.error) + ": " + path);
    }
    EXPECT_EQ(registry.Count(), 0);
    DString error;
    EXPECT_TRUE(load(signature + bytes + bytes, error));
    EXPECT_EQ(registry.Count(), 2);
    EXPECT_EQ(MapCharacter(0x0622, 1256), 0x92U);
    EXPECT_TRUE(error.is_empty());
    std::filesystem::remove(path);
    EXPECT_FALSE(LoadCodepageTables(path.c_str(), nullptr));
    GlobalCodepageRegistry() = nullptr;
    EXPECT_FALSE(LoadCodepageTables(path.c_str(), &error));
}

}  // namespace
