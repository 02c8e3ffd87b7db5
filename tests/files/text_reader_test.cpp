// The text reader over a source that gives its text in pieces.

#include "common/files/text_reader.h"

#include <cstring>
#include <gtest/gtest.h>

#include "common/text/codepage.h"

namespace zelto::test {
namespace {

class Pieces final : public TextSource {
  public:
    explicit Pieces(std::vector<std::string> pieces) : pieces_(std::move(pieces)) {}
    std::string_view Fetch(char* room, std::shared_ptr<const void>& /*owner*/) override {
        while (next_ < pieces_.size() && pieces_[next_].empty())
            ++next_;
        if (next_ == pieces_.size())
            return {};
        const std::string& piece = pieces_[next_++];
        std::memset(room, '#', TextReader::kRoom);  // what was there is gone
        piece.copy(room, piece.size());
        return {room, piece.size()};
    }

  private:
    std::vector<std::string> pieces_;
    size_t next_ = 0;
};

struct TextReaderTest : ::testing::Test {
    ~TextReaderTest() override { SetCurrentCodepage(0); }
    // Four tokens, a number, a line, and all tokens behind; text is put back on the way.
    static std::string ReadAll(const std::vector<std::string>& pieces) {
        Pieces source(pieces);
        TextReader reader(source);
        reader.SetCodepage(1252);
        std::string all;
        const auto add = [&](std::string_view text) {
            all += std::string(text) + "@" + std::to_string(reader.LineCount()) + " ";
        };
        add(reader.ReadToken());
        reader.PutBack("\xE9 x");  // not converted yet, in front of what is
        for (int i = 0; i < 3; ++i)
            add(reader.ReadToken());
        add(std::to_string(reader.ReadNumber()));
        int32_t lines = 0;
        add(reader.ReadLine(9, lines));
        for (int i = 0; i < 6; ++i)
            add(reader.ReadToken());
        return all;
    }
};

TEST_F(TextReaderTest, ReadsTheSameWhereverItsInputIsCut) {
    SetCurrentCodepage(65001);
    const std::string text =
        "\xF1o \xF1\r\n; c\r\n-12345678901.25 78 9;z\nl\xEDnea \xE9\n3 4\r\n\r5 VOID\r6";
    const std::string whole = ReadAll({text});
    EXPECT_EQ(whole,
              "\xC3\xB1o@0 \xC3\xA9@0 x@0 \xC3\xB1@1 -12345678901.250000@2 78 9@3 "
              "l\xC3\xADnea@3 \xC3\xA9@4 3@4 4@5 5@6 @7 ");
    for (size_t cut = 0; cut <= text.size(); ++cut) {
        const std::string front = text.substr(0, cut);
        EXPECT_EQ(ReadAll({front, text.substr(cut)}), whole) << cut;
        EXPECT_EQ(
            ReadAll({front, text.substr(cut, 1), text.substr(std::min(cut + 1, text.size()))}),
            whole)
            << cut;
    }
}

TEST_F(TextReaderTest, KeepsOneCharacterThatLiesAcrossTwoFetches) {
    Pieces source({"\xC3", "\xA9 \xC3", "\xA9\n"});
    TextReader reader(source);
    reader.SetCodepage(65001);
    SetCurrentCodepage(1252);
    EXPECT_EQ(reader.ReadToken(), "\xE9");
    reader.PutBack("-");
    EXPECT_EQ(reader.ReadToken(), "-");
    EXPECT_EQ(reader.ReadToken(), "\xE9");
}

// A conversion may make a semicolon, behind which a rest that is put back is a comment.
TEST_F(TextReaderTest, ReadsARestByTheSameRules) {
    CodepageTable table{};
    table.identifier = 1253;
    table.page_count = 1;
    table.mapping[1] = ';';  // of byte 129
    CodepageRegistry registry;
    registry.RegisterTable(&table, -1);
    GlobalCodepageRegistry() = &registry;
    SetCurrentCodepage(65001);
    Pieces source({"a b\x81 c d\ne"});
    TextReader reader(source);
    reader.SetCodepage(1253);
    for (const char* token : {"a", "b", "e"})
        EXPECT_EQ(reader.ReadToken(), token);
    GlobalCodepageRegistry() = nullptr;
}

}  // namespace
}  // namespace zelto::test
