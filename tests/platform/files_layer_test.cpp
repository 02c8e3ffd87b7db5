// Opening, reading and writing.

#include <fcntl.h>
#include <sys/stat.h>

#include "tests/platform/host_files.h"

namespace zelto::test {
namespace {

constexpr DWORD kReadWrite = GENERIC_READ | GENERIC_WRITE;
constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE;

class FileCalls : public HostFiles {
  protected:
    // Outcome and the bytes: "ok abc".
    static std::string Read(HANDLE file, DWORD size) {
        std::string text(size, '?');
        DWORD read = 99;
        const std::string outcome =
            Outcome([&] { return ReadFile(file, text.data(), size, &read, nullptr); });
        return outcome + " " + text.substr(0, read);
    }
    // Outcome and the count: "112 60".
    static std::string Write(HANDLE file, const std::string& text) {
        DWORD done = 99;
        const auto size = static_cast<DWORD>(text.size());
        const std::string outcome =
            Outcome([&] { return WriteFile(file, text.data(), size, &done, nullptr); });
        return outcome + " " + std::to_string(done);
    }
};

TEST_F(FileCalls, OpenTakesOddNames) {
    mkfifo(Host("pipe").c_str(), 0600);  // opening one end waits for nobody
    const std::u16string longest = Wide("") + std::u16string(259 - Wide("").size(), u'n');
    std::u16string odd = Wide("\xC3\xB1\xF0\x9F\x98\x80").substr(1);  // from the root all the same
    odd[odd.rfind(u'\\')] = u'/';
    const auto open = [](const std::u16string& name) {
        const std::string read = Open(name, GENERIC_READ, 0, OPEN_ALWAYS);
        return read + ", " + Open(name, GENERIC_WRITE, 0, OPEN_ALWAYS);
    };
    EXPECT_EQ(open(Wide("pipe/file")), "3, 3");
    EXPECT_EQ(open(Wide("pipe")), "ok 183, ok 183");
    EXPECT_EQ(open(Wide("a") + u'\xD800'), "123, 123");
    EXPECT_EQ(open(longest), "ok 0, ok 183");
    EXPECT_EQ(open(u""), "3, 3");
    EXPECT_EQ(open(odd), "ok 0, ok 183");
    EXPECT_EQ(Get("\xC3\xB1\xF0\x9F\x98\x80"), "");
}

TEST_F(FileCalls, ReadAndWriteKeepToTheirRights) {
    Put("file", "0123456789");
    HANDLE reader = nullptr;
    HANDLE writer = nullptr;
    ASSERT_EQ(Open(Wide("file"), GENERIC_READ, kShareAll, OPEN_EXISTING, &reader), "ok");
    ASSERT_EQ(Open(Wide("file"), GENERIC_WRITE, kShareAll, OPEN_EXISTING, &writer), "ok");
    EXPECT_EQ(Read(writer, 6), "5 ");
    EXPECT_EQ(Write(reader, "abc"), "5 0");
    EXPECT_EQ(Write(writer, "abc"), "ok 3");
    EXPECT_EQ(Write(writer, ""), "ok 0");
    EXPECT_EQ(Get("file"), "abc3456789");
    char byte = 0;
    EXPECT_EQ(Outcome([&] { return ReadFile(reader, &byte, 1, nullptr, nullptr); }), "87");
    CloseHandle(reader);
    CloseHandle(writer);
}

TEST_F(FileCalls, AFullDiskTellsWhatReachedTheFile) {
    HANDLE file = nullptr;
    ASSERT_EQ(Open(u"\\dev\\full", GENERIC_WRITE, 0, CREATE_ALWAYS, &file), "ok 183");
    EXPECT_EQ(Open(u"\\dev\\full", GENERIC_WRITE, 0, OPEN_EXISTING), "ok");  // shared by all
    EXPECT_EQ(Write(file, "abc"), "112 0");
    CloseHandle(file);
    ASSERT_EQ(Open(Wide("file"), GENERIC_WRITE, 0, CREATE_NEW, &file), "ok 0");
    const SizeLimit limit(60);
    EXPECT_EQ(Write(file, std::string(100, 'x')), "112 60");
    CloseHandle(file);
}

TEST_F(FileCalls, StreamsKeepModesAndFarPositions) {
    const auto open = [&](const char16_t* mode) { return _wfopen(Wide("f").c_str(), mode); };
    for (const auto& [mode, after] :
         {std::pair{u"wb", "new"}, {u"a", "oldnew"}, {u"r+b", "new"}, {u"a+t", "oldnew"}}) {
        for (const auto& [how, text] : {std::pair{u"w+b", "old"}, {mode, "new"}}) {
            FILE* file = open(how);
            ASSERT_NE(file, nullptr);
            EXPECT_EQ(fcntl(fileno(file), F_GETFD) & FD_CLOEXEC, FD_CLOEXEC);
            std::fputs(text, file);
            std::fclose(file);
        }
        FILE* file = open(u"rb");
        char text[16] = "";
        EXPECT_NE(std::fgets(text, sizeof(text), file), nullptr);
        EXPECT_STREQ(text, after);
        const int64_t far = (int64_t{5} << 30) + 1;
        EXPECT_EQ(_fseeki64(file, far, SEEK_SET), 0);
        EXPECT_NE(_fseeki64(file, -1, SEEK_SET), 0);
        EXPECT_EQ(_ftelli64(file), far);
        std::fclose(file);
    }
}

}  // namespace
}  // namespace zelto::test
