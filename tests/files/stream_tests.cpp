// Both streams by the same tests, then what each does its own way.

#include <array>
#include <cstring>
#include <optional>

#include "common/files/fichero_mode.h"
#include "common/files/fichero_stream.h"
#include "tests/files/files_fixture.h"

namespace zelto::test {
namespace {

// Closes what a test leaves open.
template <class Stream>
struct Opened : FilesTest {
    ~Opened() override { stream.Close(nullptr); }
    bool Open(const std::string& name, uint32_t mode, DString* error = nullptr) {
        stream.Close(nullptr);
        return stream.Open(Name(name), &mode, error);
    }
    bool Write(const std::string& text) {
        return stream.Write(text.data(), static_cast<int32_t>(text.size()));
    }
    // The bytes, or nothing where the read failed.
    std::optional<std::string> Read(size_t size) {
        std::string bytes(size, '?');
        if (!stream.Read(bytes.data(), static_cast<int32_t>(size)))
            return std::nullopt;
        return bytes;
    }
    Stream stream;
};

template <class Stream>
class StreamTest : public Opened<Stream> {};
using BothStreams = ::testing::Types<TFicheroFILE, TFicheroHandle>;
TYPED_TEST_SUITE(StreamTest, BothStreams);

TYPED_TEST(StreamTest, MovesExactlyWhatIsAskedForOrFails) {
    this->Put("a", "0123456789abcd");
    ASSERT_TRUE(this->Open("a", FICH_READ));
    EXPECT_EQ(this->Read(10), "0123456789");
    EXPECT_EQ(this->stream.GetLength(), 14);
    EXPECT_EQ(this->stream.GetPos(), 10);
    EXPECT_EQ(this->Read(10), std::nullopt);
    EXPECT_EQ(this->stream.GetPos(), 14);  // the four bytes are consumed
    EXPECT_TRUE(this->stream.IsEof());
    this->stream.SetPos(3);
    EXPECT_FALSE(this->stream.IsEof());
    this->stream.SetPos(-1);
    EXPECT_EQ(this->stream.GetPos(), 3);
    EXPECT_EQ(this->Read(0), "");
    char byte = 0;
    EXPECT_FALSE(this->stream.Read(&byte, -1));
    EXPECT_FALSE(this->stream.Read(nullptr, 1));
    EXPECT_FALSE(this->Write("x"));  // not opened for it
    this->stream.SetPos(100);
    EXPECT_EQ(this->Read(1), std::nullopt);
    EXPECT_TRUE(this->stream.Close(nullptr));
    EXPECT_TRUE(this->stream.Close(nullptr));
    EXPECT_FALSE(this->stream.IsOpen() || this->stream.Read(&byte, 0) || this->Write(""));
    EXPECT_EQ(this->stream.Reserved(), 0);
}

TYPED_TEST(StreamTest, WorksBeyondFourGibibytes) {
    constexpr int64_t kFar = (int64_t{5} << 30) + 7;
    ASSERT_TRUE(this->Open("far", FICH_WRITE));
    this->stream.SetPos(kFar);
    ASSERT_TRUE(this->Write("far"));
    EXPECT_EQ(this->stream.GetPos(), kFar + 3);
    EXPECT_EQ(this->stream.GetLength(), kFar + 3);
    ASSERT_TRUE(this->Open("far", FICH_READ));
    EXPECT_EQ(this->stream.GetLength(), kFar + 3);
    this->stream.SetPos(kFar - 1);
    EXPECT_FALSE(this->stream.IsEof());
    EXPECT_EQ(this->Read(4), std::string("\0far", 4));
}

TYPED_TEST(StreamTest, TellsThatItCannotOpen) {
    for (const char* name : {"missing", "no/folder", "", "bad?name"}) {
        DString error("before");
        EXPECT_FALSE(this->Open(name, FICH_READ, &error)) << name;
        EXPECT_STREQ(error.c_str(), "Error Opening File.") << name;
        EXPECT_FALSE(this->stream.IsOpen());
    }
    EXPECT_FALSE(this->Open("", FICH_WRITE));  // a folder
}

TYPED_TEST(StreamTest, TurnsBetweenReadingAndWriting) {
    this->Put("a", "0123456789");
    ASSERT_TRUE(this->Open("a", FICH_READ | FICH_UPDATE));
    EXPECT_EQ(this->Read(2), "01");
    EXPECT_TRUE(this->Write("ab"));
    EXPECT_EQ(this->Read(2), "45");
    EXPECT_TRUE(this->Write("cd"));
    EXPECT_EQ(this->stream.GetPos(), 8);
    this->stream.Close(nullptr);
    EXPECT_EQ(this->Get("a"), "01ab45cd89");
}

TYPED_TEST(StreamTest, FailsOnAFullDisk) {
    const uint32_t mode = FICH_WRITE;
    ASSERT_TRUE(this->stream.Open("\\dev\\full", &mode, nullptr));
    EXPECT_FALSE(this->Write(std::string(100'000, 'x')));
    EXPECT_TRUE(this->stream.Close(nullptr));
}

using FileStreamTest = Opened<TFicheroFILE>;
using HandleStreamTest = Opened<TFicheroHandle>;

struct ModeCase {
    uint32_t mode;
    bool opens_missing;
    const char* after;  // "old" once "N" was written; null: does not open, or not for writing
};

template <class Test>
void CheckModes(Test& test, const std::array<ModeCase, 6>& cases) {
    for (const ModeCase& c : cases) {
        SCOPED_TRACE(c.mode);
        std::filesystem::remove(test.Host("a"));
        EXPECT_EQ(test.Open("a", c.mode), c.opens_missing);
        test.stream.Close(nullptr);
        test.Put("a", "old");
        const bool wrote = test.Open("a", c.mode) && test.Write("N");
        test.stream.Close(nullptr);
        EXPECT_EQ(wrote, c.after != nullptr);
        EXPECT_EQ(test.Get("a"), c.after == nullptr ? "old" : c.after);
    }
}

TEST_F(FileStreamTest, OpensInSixModes) {
    CheckModes(*this, {{{FICH_READ, false, nullptr},
                        {FICH_WRITE, true, "N"},
                        {FICH_APPEND, true, "oldN"},
                        {FICH_READ | FICH_UPDATE, false, "Nld"},
                        {FICH_WRITE | FICH_UPDATE, true, "N"},
                        {FICH_APPEND | FICH_UPDATE, true, "oldN"}}});
    for (const uint32_t mode : {uint32_t{0}, FICH_READ | FICH_WRITE, FICH_READ | FICH_APPEND})
        EXPECT_THROW(
            try { Open("a", mode); } catch (const char* text) {
                EXPECT_STREQ(text, "Error en TFicheroITV::Abre");
                throw;
            },
            const char*);
}

TEST_F(HandleStreamTest, OpensByItsOwnDispositions) {
    CheckModes(*this, {{{FICH_READ, false, nullptr},
                        {FICH_WRITE, true, "N"},
                        {FICH_APPEND, true, "Nld"},
                        {FICH_READ | FICH_UPDATE, false, "Nld"},
                        {FICH_WRITE | FICH_UPDATE, true, "N"},
                        {FICH_APPEND | FICH_UPDATE, false, nullptr}}});  // creation value 6
    DString error;
    EXPECT_FALSE(Open("a", FICH_READ | FICH_WRITE, &error));
    EXPECT_TRUE(error.is_empty());
}

TEST_F(FileStreamTest, ReportsLateWhatStdioKeptBack) {
    const uint32_t mode = FICH_WRITE;
    ASSERT_TRUE(stream.Open("\\dev\\full", &mode, nullptr));
    EXPECT_TRUE(Write("few"));
    EXPECT_NE(stream.Flush(), 0);
}

TEST_F(FileStreamTest, MeetsTheEndOnlyByReading) {
    Put("a", "12");
    ASSERT_TRUE(Open("a", FICH_READ));
    EXPECT_EQ(Read(2), "12");
    EXPECT_FALSE(stream.IsEof());
    EXPECT_EQ(Read(1), std::nullopt);
    EXPECT_TRUE(stream.IsEof());
}

TEST_F(HandleStreamTest, TakesTheEndFromTheLengthAtOpening) {
    Put("a", "12");
    ASSERT_TRUE(Open("a", FICH_READ | FICH_UPDATE));
    EXPECT_EQ(Read(2), "12");
    EXPECT_TRUE(stream.IsEof());
    EXPECT_TRUE(Write("345"));
    stream.SetPos(3);
    EXPECT_TRUE(stream.IsEof());  // the file has grown to 5 bytes
    stream.SetPos(1);
    EXPECT_FALSE(stream.IsEof());
}

TEST_F(HandleStreamTest, SharesAmongReadersOnly) {
    Put("a", "12");
    TFicheroHandle other;
    for (const auto& [first, second, shares] : {std::tuple{FICH_READ, FICH_READ, true},
                                                {FICH_READ, FICH_APPEND, false},
                                                {FICH_APPEND, FICH_READ, false},
                                                {FICH_APPEND, FICH_APPEND, false}}) {
        ASSERT_TRUE(Open("a", first));
        const uint32_t mode = second;
        EXPECT_EQ(other.Open(Name("a"), &mode, nullptr), shares) << first << second;
        other.Close(nullptr);
    }
}

}  // namespace
}  // namespace zelto::test
