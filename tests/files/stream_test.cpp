// Both streams by the same tests, then what each does its own way.

#include <random>
#include <sys/stat.h>

#include "common/files/fichero_mode.h"
#include "common/files/fichero_stream.h"
#include "tests/files/files_fixture.h"

namespace zelto::test {
namespace {

template <class Stream>
struct StreamTest : FilesTest {
    ~StreamTest() override { stream.Close(nullptr); }
    bool Open(const std::string& name, uint32_t mode, DString* error = nullptr) {
        stream.Close(nullptr);
        return stream.Open(Name(name), &mode, error);
    }
    bool Write(const std::string& text) {
        return stream.Write(text.data(), static_cast<int32_t>(text.size()));
    }
    std::string Read(size_t size) {
        std::string bytes(size, '?');
        return stream.Read(bytes.data(), static_cast<int32_t>(size)) ? bytes : "failed";
    }
    // What becomes of a missing file and of one with "old" when "N" is written in each of the six
    // modes; "-" for what does not open, or not for writing.
    std::string WriteInAllModes() {
        std::string all;
        for (const uint32_t update : {uint32_t{0}, FICH_UPDATE}) {
            for (const uint32_t mode : {FICH_READ, FICH_WRITE, FICH_APPEND}) {
                for (const bool there : {false, true}) {
                    std::filesystem::remove(Host("a"));
                    if (there)
                        Put("a", "old");
                    const bool written = Open("a", mode | update) && Write("N");
                    stream.Close(nullptr);
                    all += (written ? Get("a") : "-") + " ";
                }
            }
        }
        return all;
    }
    Stream stream;
};

using BothStreams = ::testing::Types<TFicheroFILE, TFicheroHandle>;
TYPED_TEST_SUITE(StreamTest, BothStreams);

TYPED_TEST(StreamTest, MovesExactlyWhatIsAskedForOrFails) {
    this->Put("a", "0123456789abcd");
    ASSERT_TRUE(this->Open("a", FICH_READ));
    EXPECT_EQ(this->Read(10), "0123456789");
    EXPECT_EQ(this->stream.GetLength(), 14);
    EXPECT_EQ(this->stream.GetPos(), 10);
    EXPECT_EQ(this->Read(10), "failed");
    EXPECT_EQ(this->stream.GetPos(), 14);  // the four bytes are consumed
    EXPECT_TRUE(this->stream.IsEof());
    this->stream.SetPos(3);
    this->stream.SetPos(-1);
    EXPECT_EQ(this->stream.GetPos(), 3);
    EXPECT_FALSE(this->stream.IsEof() || this->stream.Read(nullptr, 1) || this->Write("x"));
    char byte = 0;
    EXPECT_FALSE(this->stream.Read(&byte, -1));
    EXPECT_EQ(this->Read(0), "");
    this->stream.SetPos(100);
    EXPECT_EQ(this->Read(1), "failed");
    EXPECT_TRUE(this->stream.Close(nullptr) && this->stream.Close(nullptr));
    EXPECT_FALSE(this->stream.IsOpen() || this->stream.Read(&byte, 0) || this->Write(""));
}

TYPED_TEST(StreamTest, WorksBeyondFourGibibytes) {
    constexpr int64_t kFar = (int64_t{5} << 30) + 7;
    ASSERT_TRUE(this->Open("far", FICH_WRITE));
    this->stream.SetPos(kFar);
    EXPECT_TRUE(this->Write("far"));
    EXPECT_EQ(this->stream.GetPos(), kFar + 3);
    ASSERT_TRUE(this->Open("far", FICH_READ));
    EXPECT_EQ(this->stream.GetLength(), kFar + 3);
    this->stream.SetPos(kFar - 1);
    EXPECT_FALSE(this->stream.IsEof());
    EXPECT_EQ(this->Read(4), std::string("\0far", 4));
}

TYPED_TEST(StreamTest, ReadsAnywhereInAnyPieces) {
    std::string bytes;
    std::mt19937 random(5);
    while (bytes.size() < 200'000)
        bytes += static_cast<char>(random());
    this->Put("a", bytes);
    ASSERT_TRUE(this->Open("a", FICH_READ));
    size_t at = 0;
    for (int i = 0; i < 3000; ++i) {
        if (i % 7 == 0) {  // near by, or far away
            at = i % 2 == 0 ? at - std::min<size_t>(at, random() % 5000) : random() % bytes.size();
            this->stream.SetPos(static_cast<int64_t>(at));
        }
        const size_t size = i % 50 == 0 ? random() % 100'000 : random() % 600;
        const std::string expected = bytes.substr(at, size);
        ASSERT_EQ(this->Read(size), expected.size() < size ? "failed" : expected) << i;
        at += expected.size();
        ASSERT_EQ(this->stream.GetPos(), static_cast<int64_t>(at)) << i;
        ASSERT_EQ(this->stream.GetLength(), 200'000) << i;
    }
}

// On a pipe nothing can be sought.
TYPED_TEST(StreamTest, StaysWhereItCannotMove) {
    ASSERT_EQ(mkfifo(this->Host("pipe").c_str(), 0600), 0);
    std::fstream other(this->Host("pipe"));  // for both ends
    ASSERT_TRUE(this->Open("pipe", FICH_READ));
    other << "0123456789" << std::flush;
    EXPECT_EQ(this->Read(3), "012");
    this->stream.SetPos(1);
    EXPECT_LE(this->stream.GetLength(), 0);
    EXPECT_EQ(this->Read(3), "345");
}

TYPED_TEST(StreamTest, TellsThatItCannotOpen) {
    for (const char* name : {"missing", "no/folder", "", "bad?name"}) {
        DString error("before");
        EXPECT_FALSE(this->Open(name, FICH_READ, &error) || this->stream.IsOpen()) << name;
        EXPECT_STREQ(error.c_str(), "Error Opening File.") << name;
    }
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
    EXPECT_TRUE(!this->Write("few") || this->stream.Flush() != 0);  // stdio tells late
    EXPECT_FALSE(this->Write(std::string(100'000, 'x')));
    EXPECT_TRUE(this->stream.Close(nullptr));
}

using FileStreamTest = StreamTest<TFicheroFILE>;
using HandleStreamTest = StreamTest<TFicheroHandle>;

TEST_F(FileStreamTest, OpensInSixModesAndMeetsTheEndByReading) {
    EXPECT_EQ(WriteInAllModes(), "- - N N N oldN - Nld N N N oldN ");
    for (const uint32_t mode : {uint32_t{0}, FICH_READ | FICH_WRITE, FICH_READ | FICH_APPEND}) {
        try {
            Open("a", mode);
            ADD_FAILURE() << mode;
        } catch (const char* text) {
            EXPECT_STREQ(text, "Error en TFicheroITV::Abre");
        }
    }
    Put("a", "12");
    ASSERT_TRUE(Open("a", FICH_READ));
    EXPECT_EQ(Read(2), "12");
    EXPECT_FALSE(stream.IsEof());
    EXPECT_EQ(Read(1), "failed");
    EXPECT_TRUE(stream.IsEof());
}

TEST_F(HandleStreamTest, OpensByItsOwnDispositionsAndKeepsTheLengthAtOpening) {
    EXPECT_EQ(WriteInAllModes(), "- - N N N Nld - Nld N N - N ");
    DString error;
    EXPECT_FALSE(Open("a", FICH_READ | FICH_WRITE, &error));
    EXPECT_TRUE(error.is_empty());
    Put("a", "12");
    ASSERT_TRUE(Open("a", FICH_READ | FICH_UPDATE));
    EXPECT_EQ(Read(2), "12");
    EXPECT_TRUE(stream.IsEof() && Write("345"));
    stream.SetPos(3);
    EXPECT_TRUE(stream.IsEof());  // though the file has 5 bytes now
}

TEST_F(HandleStreamTest, SharesAmongReadersOnly) {
    Put("a", "12");
    TFicheroHandle other;
    for (const uint32_t first : {FICH_READ, FICH_APPEND}) {
        for (const uint32_t second : {FICH_READ, FICH_APPEND}) {
            ASSERT_TRUE(Open("a", first));
            EXPECT_EQ(other.Open(Name("a"), &second, nullptr), first + second == 2 * FICH_READ);
            other.Close(nullptr);
        }
    }
}

}  // namespace
}  // namespace zelto::test
