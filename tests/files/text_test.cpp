// Reading text by lines and tokens: known cases, and a plain reading of the same rules, character
// by character and with every rest copied, on random input.

#include <gtest/gtest.h>
#include <random>

#include "common/files/fichero_itv.h"
#include "tests/files/files_fixture.h"

namespace zelto::test {
namespace {

constexpr uint32_t kStreams[] = {0, FICH_HANDLE, FICH_PACKAGE};

struct TextTest : FilesTest {
    // All tokens up to the end of the input, a "|" behind each.
    std::string Tokens(const std::string& bytes, uint32_t stream = 0,
                       const char* delimiters = " \t") {
        Put("text", bytes);
        TFicheroITV file(Name("text"), FICH_READ | FICH_TEXT | stream);
        file.SetDelimiters(delimiters);
        std::string all;
        DString token;
        for (int empty = 0; empty < 3;) {  // one "VOID" does not end it
            file.get_dato_texto(token);
            empty = token.is_empty() ? empty + 1 : 0;
            all += token.c_str() + std::string("|");
        }
        return all.substr(0, all.size() - 3);
    }
};

TEST_F(TextTest, CutsLinesIntoTokens) {
    struct {
        std::string bytes, tokens;
    } const cases[] = {
        {"", ""},
        {"12 34\r\n56\r78\n\n\r\n9", "12|34|56|78|9|"},
        {"; comment\n  5;x\n;;\n6 ; y", "5|6|"},
        {"VOID\na VOID\n VOID b\nVOIDS", "|a||VOID|b|VOIDS|"},
        {" \t a \t b \t \n", "a|b|"},
        {std::string("a\0b c\0\0d\xFF"
                     "e",
                     10),
         "a|b|c|d\xFF"
         "e|"},
        {std::string(19'998, 'x') + "yz\nw", std::string(19'998, 'x') + "y|w|"},
        {std::string(30'000, ' ') + "a" + std::string(30'000, ' ') + "b\nc", "a|c|"},
    };
    for (const auto& c : cases) {
        for (const uint32_t stream : kStreams)
            EXPECT_EQ(Tokens(c.bytes, stream), c.tokens) << c.bytes.substr(0, 30);
    }
    // A delimiter that is not skipped as a blank stays in front: nothing comes past it.
    EXPECT_EQ(Tokens("a,b\nc", 0, ","), "a|");
    EXPECT_EQ(Tokens("a b\tc", 0, "\t"), "a b|c|");
}

TEST_F(TextTest, ReadsLinesWithALimitAndCountsThem) {
    Put("text", "one two\r\n\n;c\nabcdefgh;x\nlast");
    TFicheroITV file(Name("text"), FICH_READ | FICH_TEXT);
    std::string all;
    DString line;
    const auto read = [&](int32_t limit) {
        const int32_t count = file.ReadLine(line, limit);
        all += line.c_str() + ("@" + std::to_string(count)) + " ";
    };
    read(0);
    read(5);
    file.PutBack('Y');
    file.PutBack("in\nX");
    file.PutBack('\0');
    for (int i = 0; i < 3; ++i)
        read(-1);
    EXPECT_EQ(all, "one two@0 abcd@3 in@4 XYlast@5 @5 ");
    EXPECT_TRUE(file.IsEof());
}

TEST_F(TextTest, ConvertsFromTheCodepageOfTheMarkOnce) {
    SetCurrentCodepage(65001);
    EXPECT_EQ(Tokens("\xE9 \xE9 \xE9"), "\xC3\xA9|\xC3\xA9|\xC3\xA9|");
    EXPECT_EQ(Tokens("\xEF\xBB\xBF\xC3\xA9 \xC3\xA9"), "\xC3\xA9|\xC3\xA9|");
    SetCurrentCodepage(1252);
    EXPECT_EQ(Tokens("\xEF\xBB\xBF\xC3\xA9 b\n"), "\xE9|b|");
    EXPECT_EQ(Tokens("\xE9 \xE9 \xE9"), "\xE9|\xE9|\xE9|");
    DString line;
    TFicheroITV(Name("text"), FICH_READ | FICH_TEXT).ReadLine(line);
    EXPECT_EQ(line.codepage(), 1252);
    SetCurrentCodepage(0);
    EXPECT_EQ(line.codepage(), 1252);
}

TEST_F(TextTest, WantsTextReading) {
    for (const uint32_t mode : {FICH_READ, FICH_READ | FICH_BINARY, FICH_APPEND | FICH_TEXT}) {
        Put("text", "1");
        TFicheroITV file(Name("text"), mode);
        DString token;
        EXPECT_THROW(file.get_dato_texto(token), const char*) << mode;
    }
}

// The rules as they are stated, over a whole input in memory.
class PlainReader {
  public:
    explicit PlainReader(std::string input) : input_(std::move(input)) {}

    std::string Token() {
        std::string line = Line();
        const size_t at = line.find_first_of(" \t\n");
        if (at == std::string::npos)
            return line;
        input_.insert(0, line.substr(at) + (end_ == '\r' ? '\r' : '\n'));
        --lines;
        return line.substr(0, at);
    }

    std::string Line() {
        std::string line;
        do {
            line.clear();
            while (!input_.empty() && std::string(" \t\r\n").find(input_[0]) != std::string::npos)
                Count(Next());
            end_ = 0;
            while (!input_.empty() && !Stops(input_[0])) {
                line += input_[0];
                previous_ = Next();
            }
            if (!input_.empty())
                End();
        } while (line.empty() && !input_.empty());
        line.resize(line.find_last_not_of(" \t") + 1);
        return line == "VOID" ? "" : line;
    }

    int lines = 0;

  private:
    static bool Stops(char c) { return c == '\n' || c == '\r' || c == ';' || c == 0; }
    char Next() {
        const char c = input_[0];
        input_.erase(0, 1);
        return c;
    }
    void End() {
        char c = Next();
        if (c == ';') {
            previous_ = c;
            while (!input_.empty() && c != '\n' && c != '\r')
                c = Next();
        }
        if (c == '\n' || c == '\r') {
            end_ = c;
            Count(c);
        } else {
            previous_ = c;
        }
    }
    void Count(char c) {
        lines += c == '\r' || (c == '\n' && previous_ != '\r') ? 1 : 0;
        previous_ = c;
    }

    std::string input_;
    char previous_ = 0;
    char end_ = 0;
};

std::string RandomText(std::mt19937& random, size_t size) {
    static const std::string pieces[] = {"1",    "23",   "x",        "VOID",
                                         " ",    " ",    "\t",       "\n",
                                         "\r",   "\r\n", ";",        std::string(1, '\0'),
                                         "\xFF", "\xE9", "-4 5 6 7 "};
    std::string text = "t";  // no mark
    while (text.size() < size)
        text += pieces[random() % std::size(pieces)];
    return text;
}

TEST_F(TextTest, ReadsAsThePlainRulesSay) {
    std::mt19937 random(20'091'225);
    for (int round = 0; round < 150; ++round) {
        const size_t size = random() % 60;
        const std::string text = RandomText(random, size) + RandomText(random, 40);
        Put("text", text);
        PlainReader plain(text);
        TFicheroITV file(Name("text"), FICH_READ | FICH_TEXT | kStreams[round % 3]);
        DString read;
        for (size_t i = 0; i < text.size(); ++i) {
            const bool whole_line = random() % 8 == 0;
            const std::string expected = whole_line ? plain.Line() : plain.Token();
            if (whole_line)
                file.ReadLine(read);
            else
                file.get_dato_texto(read);
            ASSERT_EQ(read.c_str(), expected) << "round " << round << " read " << i;
            ASSERT_EQ(file.LineCount(), plain.lines) << "round " << round << " read " << i;
        }
    }
}

// What is asked between tokens neither disturbs them nor tells of bytes fetched ahead.
TEST_F(TextTest, StandsBehindTheLineThatItTookATokenFrom) {
    Put("text",
        "1 2\n3 4\n\x05\x06"
        "5 6\n");
    for (const uint32_t stream : kStreams) {
        TFicheroITV file(Name("text"), FICH_READ | FICH_TEXT | stream);
        int value = 0;
        file >> value;
        EXPECT_EQ(file.GetPos(), 4);
        EXPECT_EQ(file.GetLength(), 14);
        EXPECT_EQ(file.GetPos(), 4);
        EXPECT_FALSE(file.IsEof());
        file >> value >> value;
        EXPECT_EQ(file.GetChar(), 5);
        file.SetPos(10);
        file >> value;
        EXPECT_EQ(value, 4);  // put back, so it comes first
        file >> value;
        EXPECT_EQ(value, 5);
    }
}

TEST_F(TextTest, EndsWhereAFileHasShrunk) {
    for (const uint32_t stream : {uint32_t{0}, FICH_PACKAGE}) {
        std::string text;
        while (text.size() < 200'000)
            text += "1 2 3\n";
        Put("text", text);
        TFicheroITV file(Name("text"), FICH_READ | FICH_TEXT | stream);
        int64_t sum = 0;
        for (int i = 0; i < 100'000; ++i) {
            int value = 0;
            file >> value;
            sum += value;
            if (i == 0)
                std::filesystem::resize_file(Host("text"), 100'000);
        }
        EXPECT_EQ(sum, 16'666 * (1 + 2 + 3) + 1 + 2);  // and "1 2 " at the end
    }
}

TEST_F(TextTest, KeepsWhatItHoldsWhenItsInputGoes) {
    std::string text = "1 2 3\n";
    while (text.size() < 100'000)
        text += "44 ";
    for (const uint32_t stream : kStreams) {
        Put("text", text);
        TFicheroITV file(Name("text"), FICH_READ | FICH_TEXT | stream);
        DString token;
        file.get_dato_texto(token);
        file.SetDataRegion(100, 50);
        std::string all;
        for (file.SetPos(0); !token.is_empty(); file.get_dato_texto(token))
            all += token.c_str() + std::string(" ");
        // What was held of the line, then what the region has of its tokens.
        std::string expected = "1 2 3 ";
        for (const char c : text.substr(100, 50))
            expected += c == ' ' && expected.back() == ' ' ? "" : std::string(1, c);
        EXPECT_EQ(all, expected + (expected.back() == ' ' ? "" : " "));
        EXPECT_TRUE(file.IsEof());
        file.PutBack("gone");
        Put("text", "7");
        ASSERT_TRUE(file.close() && file.Abre(Name("text"), FICH_READ | FICH_TEXT | stream));
        file.get_dato_texto(token);
        EXPECT_STREQ(token.c_str(), "7");  // the next file begins with its own bytes
    }
}

TEST_F(TextTest, WritesWhereTheTextWasReadTo) {
    for (const uint32_t stream : {uint32_t{0}, FICH_HANDLE}) {
        Put("text", "1\n2\n3\n");
        TFicheroITV file(Name("text"), FICH_READ | FICH_UPDATE | FICH_TEXT | stream);
        int value = 0;
        file >> value;
        EXPECT_TRUE(file.Write("x", 1));
        file >> value;
        EXPECT_TRUE(file.close());
        EXPECT_EQ(Get("text") + std::to_string(value), "1\nx\n3\n3");
    }
}

// Classes that put their own operations in the way are read through them.
class Inverted : public TFicheroITV {
  public:
    using TFicheroITV::TFicheroITV;
    bool Read(void* buffer, int32_t size, TProgreso* progress, int32_t chunk) override {
        const bool read = TFicheroITV::Read(buffer, size, progress, chunk);
        for (int32_t i = 0; i < size; ++i)
            static_cast<char*>(buffer)[i] ^= 0x20;
        return read;
    }
};

TEST_F(TextTest, ReadsThroughADerivedClass) {
    Put("text", std::string("AB\0C*D", 6));
    Inverted file;
    ASSERT_TRUE(file.Abre(Name("text"), FICH_READ | FICH_TEXT));
    DString token;
    for (const char* expected : {"ab", "c", "d", ""}) {
        file.get_dato_texto(token);
        EXPECT_STREQ(token.c_str(), expected);
    }
}

}  // namespace
}  // namespace zelto::test
