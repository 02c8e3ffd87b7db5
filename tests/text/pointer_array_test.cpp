#include "common/text/pointer_array.h"

#include <gtest/gtest.h>
#include <string>

#include "common/text/codepage_table.h"

namespace {

using zelto::CodepageTable;
using zelto::CodepageTableArray;
using zelto::PointerArrayError;

template <class Action>
std::string ErrorOf(Action action) {
    try {
        action();
    } catch (const PointerArrayError& error) {
        return error.what();
    }
    return "none";
}

std::string Identifiers(const CodepageTableArray& tables) {
    std::string text;
    for (int i = 0; i < tables.Count(); ++i)
        text += std::to_string(tables.Table(tables.BaseIndex() + i).identifier);
    return text;
}

TEST(PointerArray, GrowsByItsIncrementAndKeepsOrder) {
    CodepageTableArray tables(0, 10, true);
    CodepageTable record{};
    for (uint32_t i = 1; i <= 13; ++i) {
        record.identifier = i % 10;
        EXPECT_EQ(tables.InsertCopy(&record, -1), static_cast<int32_t>(i) - 1);
        EXPECT_EQ(tables.Capacity(), 13);
    }
    const int32_t slot = tables.InsertNew(2);
    EXPECT_EQ(tables.Capacity(), 26);
    EXPECT_EQ(tables.Table(slot).page_count, 0U);
    tables.Table(slot).identifier = 7;
    EXPECT_EQ(Identifiers(tables), "12734567890123");
    ::operator delete(tables.Get(0));
    tables.Remove(0);
    EXPECT_EQ(Identifiers(tables), "2734567890123");
    EXPECT_EQ(tables.Slots()[13], nullptr);
}

TEST(PointerArray, ReportsEveryErrorAndStaysAsItWas) {
    CodepageTableArray fixed(1, 0, true, 5);
    const CodepageTable record{};
    EXPECT_EQ(ErrorOf([&] { fixed.Get(5); }), "VDGerr:7--0,5,1,0");
    EXPECT_EQ(ErrorOf([&] { fixed.InsertNew(4); }), "VDGerr:13--0,4,1,0");
    EXPECT_EQ(ErrorOf([&] { fixed.InsertCopy(&record, 4); }), "VDGerr:12--0,4,1,0");
    EXPECT_EQ(ErrorOf([&] { fixed.InsertCopy(nullptr, -1); }), "VDGerr:16--0,-1,1,0");
    EXPECT_EQ(ErrorOf([&] { fixed.InsertNew(7); }), "VDGerr:7--0,7,1,0");
    fixed.Grow(1);
    EXPECT_EQ(ErrorOf([&] { fixed.Get(5); }), "VDGerr:8--1,5,1,0");
    EXPECT_FALSE(fixed.IsPresent(5) || fixed.IsPresent(4) || fixed.IsPresent(6));
    EXPECT_EQ(ErrorOf([&] { fixed.InsertNew(-1); }).substr(0, 12), "VDGerr:6--1,");
    EXPECT_EQ(ErrorOf([&] { fixed.Remove(1); }), "VDGerr:7--1,1,1,0");
    EXPECT_EQ(fixed.Count(), 1);
    fixed.Remove(0);
    EXPECT_EQ(ErrorOf([&] { fixed.Get(5); }), "VDGerr:7--0,5,1,0");
}

TEST(PointerArray, LeavesRecordsThatItDoesNotOwn) {
    void* record = nullptr;
    {
        CodepageTableArray tables(0, 1, false, 3);
        tables.Table(tables.InsertNew(3) + 3).identifier = 1252;
        EXPECT_TRUE(tables.IsPresent(3));
        record = tables.Get(3);
    }
    EXPECT_EQ(static_cast<CodepageTable*>(record)->identifier, 1252U);
    ::operator delete(record);
}

}  // namespace
