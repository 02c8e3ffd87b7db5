// Opening, closing, committing, and what a container adds to its stream's bytes.

#include <vector>

#include "common/files/fichero_itv.h"
#include "common/files/file_system.h"
#include "common/files/package_hook.h"
#include "tests/files/files_fixture.h"

namespace zelto::test {
namespace {

struct ContainerTest : FilesTest {
    static std::string Read(TFicheroITV& file, size_t size) {
        std::string bytes(size, '?');
        return file.Read(bytes.data(), static_cast<int32_t>(size)) ? bytes : "failed";
    }
    DString error;
};

TEST_F(ContainerTest, OpensOnceAtATime) {
    Put("a", "A");
    Put("b", "B");
    TFicheroITV file;
    EXPECT_TRUE(file.IsEof() && file.close() && !file.IsOpen());
    EXPECT_EQ(file.GetPos() + file.GetLength() + file.GetChar(), 0);
    error = "said";
    EXPECT_TRUE(file.Abre(Name("a"), FICH_READ, &error));
    EXPECT_FALSE(file.Abre(Name("b"), FICH_READ, &error));
    EXPECT_STREQ(error.c_str(), "said file already oppened.");
    EXPECT_EQ(file.GetChar(), 'A');
    EXPECT_TRUE(file.close() && file.Abre(Name("b"), FICH_READ, &error));
    EXPECT_EQ(Read(file, 1), "B");
    EXPECT_EQ(Read(file, 0), "");
    EXPECT_EQ(Read(file, 1), "failed");
    EXPECT_TRUE(file.close());
    EXPECT_FALSE(file.Abre(Name("none"), FICH_READ, &error) || file.IsOpen());
    EXPECT_STREQ(error.c_str(), "Error Opening File.");
    EXPECT_FALSE(file.Abre(Name("a"), FICH_HANDLE | FICH_READ | FICH_WRITE));
    EXPECT_THROW(file.Abre(Name("a"), 0), const char*);
    EXPECT_TRUE(file.Abre(Name("a"), FICH_READ));  // nothing was left behind
    try {
        const TFicheroITV none(Name("none"), FICH_READ);
        ADD_FAILURE();
    } catch (const char* text) {
        EXPECT_STREQ(text, "Error al abrir archivo");
    }
}

TEST_F(ContainerTest, KeepsBackups) {
    struct {
        uint32_t mode;
        const char *bak, *whole_bak;  // what "a.BAK" and "a.txt.BAK" hold then
    } const cases[] = {{FICH_WRITE, "-", "-"},
                       {FICH_WRITE | FICH_BACKUP, "old", "-"},
                       {FICH_WRITE | FICH_BACKUP_BAK | FICH_HANDLE, "-", "old"},
                       {FICH_WRITE | FICH_BACKUP | FICH_BACKUP_BAK, "old", "old"},
                       {FICH_WRITE | FICH_BACKUP | FICH_SAFE_WRITE, "-", "-"},
                       {FICH_APPEND | FICH_BACKUP, "-", "-"}};
    for (const auto& c : cases) {
        Put("a.txt", "old");
        Put("a.BAK", "-");
        Put("a.txt.BAK", "-");
        TFicheroITV(Name("a.txt"), c.mode).Write("new", 3);
        EXPECT_EQ(Get("a.BAK") + Get("a.txt.BAK"), c.bak + std::string(c.whole_bak)) << c.mode;
    }
    EXPECT_TRUE(TFicheroITV(Name("fresh.txt"), FICH_WRITE | FICH_BACKUP).IsOpen());
}

TEST_F(ContainerTest, CommitsSafeWritesByASecondClose) {
    Put("a", "old");
    TFicheroITV file(Name("a"), FICH_WRITE | FICH_SAFE_WRITE);
    EXPECT_TRUE(file.Write("new", 3) && file.close(&error));
    EXPECT_EQ(Get("a"), "new");  // the bytes go to the file itself
    EXPECT_FALSE(file.close(&error));
    EXPECT_STREQ(error.c_str(), "Error TFicheroITV close 1");
    Put("a.$$$", "temporary");
    EXPECT_TRUE(file.close(&error));
    EXPECT_EQ(Get("a") + Get("a.BAK"), "temporarynew");
    EXPECT_FALSE(IsThere("a.$$$") || file.close(&error));  // still pending
    Put("b.$$$", "stale");
    EXPECT_TRUE(TFicheroITV(Name("b"), FICH_WRITE | FICH_SAFE_WRITE).close());
    EXPECT_EQ(Get("b"), "stale");  // by the destructor
    Put("c.$$$", "stale");
    EXPECT_THROW(TFicheroITV(Name("c"), FICH_READ | FICH_SAFE_WRITE), const char*);
    EXPECT_FALSE(IsThere("c"));
}

TEST_F(ContainerTest, LosesNothingWhenACommitFails) {
    TFicheroITV file(Name("a"), FICH_WRITE | FICH_SAFE_WRITE);
    EXPECT_TRUE(file.Write("bytes", 5) && file.close());
    Put("a.$$$", "stale");
    const TFicheroITV holder(Name("a"), FICH_READ | FICH_HANDLE);  // nobody may delete it
    EXPECT_FALSE(file.close(&error));
    EXPECT_STREQ(error.c_str(), "Error TFicheroITV close 2. err=183 ex=2");
    EXPECT_EQ(Get("a") + Get("a.BAK") + Get("a.$$$"), "bytesbytesstale");
}

TEST_F(ContainerTest, CommitsWithoutABackupWhereNoneCanBeMade) {
    Put("a", "old");
    TFicheroITV file(Name("a"), FICH_READ | FICH_SAFE_WRITE);
    EXPECT_TRUE(file.close());
    Put("a.$$$", "new");
    std::filesystem::create_directory(Host("a.BAK"));
    EXPECT_TRUE(file.close(&error));
    EXPECT_EQ(Get("a"), "new");
}

// stdio takes the bytes and finds out later.
TEST_F(ContainerTest, TellsByFlushWhatCouldNotBeWritten) {
    for (const uint32_t stream : {uint32_t{0}, FICH_HANDLE}) {
        TFicheroITV file(Name("a"), FICH_WRITE | stream);
        EXPECT_TRUE(file.Write("abc", 3) && file.Flush());
        EXPECT_EQ(Get("a"), "abc");
        EXPECT_TRUE(file.close() && !file.Flush());
    }
    const std::string block(5000, 'b');
    TFicheroITV full("\\dev\\full", FICH_WRITE);
    EXPECT_TRUE(full.Write(block.data(), 3));
    EXPECT_EQ(full.GetPos(), 3);
    full.SetPos(0);  // here they are lost
    EXPECT_TRUE(!full.Flush() && !full.Flush() && full.close());
}

TEST_F(ContainerTest, MarksAndRecognisesEncodings) {
    struct {
        int32_t codepage;
        uint32_t mode;
        const char* after;
    } const writes[] = {{65001, FICH_WRITE | FICH_TEXT, "\xEF\xBB\xBF"},
                        {65001, FICH_WRITE | FICH_TEXT | FICH_NO_BOM, ""},
                        {65001, FICH_WRITE | FICH_BINARY, ""},
                        {1252, FICH_WRITE | FICH_TEXT, ""},
                        {65001, FICH_APPEND | FICH_TEXT, "old"}};
    for (const auto& c : writes) {
        SetCurrentCodepage(c.codepage);
        Put("a", "old");
        EXPECT_TRUE(TFicheroITV(Name("a"), c.mode).IsOpen());
        EXPECT_EQ(Get("a"), c.after) << c.mode;
    }
    struct {
        const char* bytes;
        int32_t mark;
        int64_t position;
    } const reads[] = {{"", 1, 0},          {"abc", 1, 0},          {"\xEF\xBB\xBFx", 65001, 3},
                       {"\xFF\xFEx", 0, 2}, {"\xFE\xFFx", 0, 2},    {"\xEF\xBBx", 1, 0},
                       {"\xFF", 1, 0},      {"\xFE\xBB\xBF", 1, 0}, {"\xEF\xBB", 1, 0}};
    for (const auto& c : reads) {
        Put("a", c.bytes);
        for (const uint32_t stream : {uint32_t{0}, FICH_HANDLE}) {
            TFicheroITV file(Name("a"), FICH_READ | FICH_TEXT | stream);
            EXPECT_EQ(file.EncodingMark(), c.mark) << c.bytes;
            EXPECT_EQ(file.GetPos(), c.position) << c.bytes;
            EXPECT_TRUE(file.close() && file.Abre(Name("a"), FICH_READ | FICH_TEXT));
            EXPECT_EQ(file.EncodingMark() + file.GetPos(), 1);  // opened before: not looked for
        }
    }
    Put("a", "; header\n17 x");
    const TFicheroITV file(Name("a"), FICH_READ | FICH_TEXT | FICH_READ_HEADER_INT);
    EXPECT_EQ(file.LeadingValue(), 17);
    EXPECT_EQ(file.LineCount(), 0);
}

TEST_F(ContainerTest, SeesARegionOfItsFile) {
    Put("a", std::string(100, '.') + std::string(49, 'x') + "y...");
    TFicheroITV file(Name("a"), FICH_READ | FICH_BINARY);
    file.SetDataRegion(100, 50);
    file.SetPos(0);
    EXPECT_EQ(file.GetLength(), 50);
    EXPECT_EQ(Read(file, 49), std::string(49, 'x'));
    EXPECT_EQ(file.GetPos(), 49);
    EXPECT_FALSE(file.IsEof());
    EXPECT_EQ(file.GetChar(), 'y');
    EXPECT_TRUE(file.IsEof());
    file.SetDataRegion(0, 0);
    EXPECT_EQ(file.GetPos() + file.GetLength(), 150 + 153);
}

TEST_F(ContainerTest, KeepsAWholeFileInMemory) {
    Put("a", "0123456789");
    TFicheroITV file(Name("a"), FICH_READ | FICH_BINARY | FICH_HANDLE);
    std::filesystem::resize_file(Host("a"), 0);
    file.SetPos(7);
    EXPECT_EQ(Read(file, 5), "failed");
    EXPECT_EQ(file.GetPos(), 10);
    EXPECT_TRUE(file.IsEof());
    for (const int64_t outside : {int64_t{-1}, INT64_MIN, INT64_MAX, int64_t{10}}) {
        file.SetPos(outside);
        EXPECT_EQ(Read(file, 1), "failed");
    }
    file.SetPos(2);
    EXPECT_FALSE(file.IsEof());
    EXPECT_EQ(Read(file, 3), "234");
}

struct Seen {
    std::vector<int32_t> sizes;
    TProgreso* progress;
    size_t cancel_at;  // notifications
};

void Note(void* context, const void* /*buffer*/, int32_t size) {
    auto& seen = *static_cast<Seen*>(context);
    seen.sizes.push_back(size);
    if (seen.sizes.size() == seen.cancel_at)
        seen.progress->cancel = true;
}

TEST_F(ContainerTest, WritesAndReadsInChunks) {
    const std::string bytes(70'000, 'b');
    TFicheroITV file(Name("a"), FICH_WRITE);
    TProgreso progress;
    Seen seen{{}, &progress, 0};
    file.SetWriteObserver(Note, &seen);
    EXPECT_TRUE(file.Write(bytes.data(), 70'000, &progress, 0));
    EXPECT_EQ(seen.sizes, (std::vector<int32_t>{70'000, 32'000, 32'000, 6'000}));
    EXPECT_EQ(progress.done, 70'000);
    EXPECT_TRUE(file.Write("", 0, &progress, -5));
    seen = {{}, &progress, 3};
    EXPECT_FALSE(file.Write(bytes.data(), 8, &progress, 4));  // cancelled at the last chunk
    EXPECT_EQ(progress.done, 8);
    EXPECT_FALSE(file.Write(bytes.data(), -1) || file.Write(nullptr, 1));
    EXPECT_TRUE(file.close());
    EXPECT_EQ(Get("a").size(), 70'008U);
    progress.cancel = false;
    std::string read(70'008, '?');
    ASSERT_TRUE(file.Abre(Name("a"), FICH_READ));
    EXPECT_TRUE(file.Read(read.data(), 70'008, &progress, 1000));
    EXPECT_EQ(read, std::string(70'008, 'b'));
    EXPECT_FALSE(file.Read(read.data(), 1, &progress, 1));  // the end
    ASSERT_TRUE(file.close() && file.Abre("\\dev\\full", FICH_WRITE | FICH_PACKAGE));
    EXPECT_FALSE(file.Write("xyz", 3, &progress, 1));
    EXPECT_EQ(progress.done, 0);
}

// Serves "pack" as a package; what it is asked is written down.
struct TestHook : TPackageHook {
    TestHook() { SetPackageHook(this); }
    ~TestHook() { SetPackageHook(nullptr); }
    static bool EndsIn(const DString& text, const std::string& end) {
        return std::string(text.c_str()).ends_with(end);
    }
    bool Accepts(const DString& directory) override { return EndsIn(directory, "pack"); }
    bool Locate(TFicheroITV& container, const DString& package, const DString& member,
                int64_t& offset, int64_t& length, uint8_t& flag, DString* error) override {
        char byte = 0;
        container >> byte;  // binary, whatever the container was opened for
        calls += std::string("locate ") + member.c_str() + byte;
        offset = 2;
        length = 8;
        flag = 0;
        if (error != nullptr && !locates)
            *error = "not in it";
        return locates && EndsIn(package, "pack");
    }
    bool Open(const DString& package, const DString& member, TFicheroITV& container, bool& stop,
              uint8_t& flag, DString* /*error*/) override {
        calls += std::string("open ") + member.c_str() + " ";
        stop = stops;
        flag = 1;
        if (inner.IsOpen())
            container.SetHookStream(&inner);
        return inner.IsOpen() && EndsIn(package, "pack");
    }
    void Close(const DString& file_name) override {
        calls += EndsIn(file_name, "pack\\m") ? "close" : "?";
        inner.Close(nullptr);
    }
    bool Exists(const DString& path) override { return EndsIn(path, "member"); }

    bool stops = false, locates = true;
    TFicheroFILE inner;
    std::string calls;
};

TEST_F(ContainerTest, OpensMembersThroughTheHook) {
    std::filesystem::create_directory(Host("pack"));
    Put("pack/m", "##12 34\n5##");
    Put("keyed", "##\x9B\x98\xA0\x99##");  // "12\n3" by exclusive OR with 0xAA
    TestHook hook;
    TFicheroITV file;
    int first = 0;
    int second = 0;
    // The container opens the file itself, and the hook finds the member's region in it.
    ASSERT_TRUE(file.Abre(Name("pack\\m"), FICH_READ | FICH_TEXT, &error));
    EXPECT_EQ(hook.calls, "open m locate m#");
    file >> first >> second >> second;
    EXPECT_EQ(first * 100 + second + file.GetLength(), 1200 + 5 + 8);
    EXPECT_TRUE(file.close());
    hook.locates = false;
    EXPECT_FALSE(file.Abre(Name("pack\\m"), FICH_READ | FICH_TEXT, &error) || file.IsOpen());
    EXPECT_STREQ(error.c_str(), "not in it");
    hook.stops = true;
    EXPECT_FALSE(file.Abre(Name("pack\\m"), FICH_READ) || file.IsOpen());

    // The hook gives a stream of its own, whose text carries the key.
    ASSERT_TRUE(hook.inner.Open(Name("keyed"), &FICH_READ, nullptr));
    hook.calls.clear();
    TFicheroITV other;
    ASSERT_TRUE(other.Abre(Name("pack\\m"), FICH_READ | FICH_TEXT));
    other.SetDataRegion(2, 4);
    other.SetPos(0);
    other >> first >> second;
    EXPECT_EQ(first * 100 + second + other.EncodingMark(), 1203 - 1);
    EXPECT_TRUE(other.close() && other.close());
    EXPECT_TRUE(file.Abre(Name("pack\\new"), FICH_WRITE));  // only reading is the hook's
    EXPECT_EQ(hook.calls, "open m close");
    EXPECT_TRUE(FileExists(Name("member")));
    EXPECT_FALSE(FileExists(Name("none\\member")) || FileExists(Name("other")));
}

// Overrides nothing that reads.
class Counting : public TFicheroITV {
  public:
    bool Write(const void* buffer, int32_t size, TProgreso* progress, int32_t chunk) override {
        ++writes;
        return TFicheroITV::Write(buffer, size, progress, chunk);
    }
    int writes = 0;
};

class Reading : public TFicheroITV {
  public:
    int GetChar() override { return TFicheroITV::GetChar() | 0x20; }
};

TEST_F(ContainerTest, FetchesTextAheadUnlessADerivedClassReads) {
    std::string text = "ABC\nDEF\n";
    for (char& c : text)
        c = static_cast<char>(c ^ 0xAA);
    Put("m", text);
    for (const bool reads : {false, true}) {
        TestHook hook;
        ASSERT_TRUE(hook.inner.Open(Name("m"), &FICH_READ, nullptr));
        Counting counting;
        Reading reading;
        TFicheroITV& file = reads ? static_cast<TFicheroITV&>(reading) : counting;
        ASSERT_TRUE(file.Abre(Name("pack\\m"), FICH_READ | FICH_TEXT));
        DString line;
        file.ReadLine(line);
        EXPECT_EQ(hook.inner.GetPos(), reads ? 4 : 8);
        EXPECT_EQ(file.GetPos(), 4);
        EXPECT_TRUE(file.close());
    }
}

}  // namespace
}  // namespace zelto::test
