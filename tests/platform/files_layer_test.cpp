// Opening, reading, writing and positions.

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

TEST_F(FileCalls, DispositionDecidesWhatHappensToAFile) {
    struct Case {
        DWORD disposition;
        const char *when_there, *then_holds, *when_missing, *missing_then_holds;
    };
    for (const Case& c : {Case{CREATE_NEW, "80", "old", "ok 0", ""},
                          {CREATE_ALWAYS, "ok 183", "", "ok 0", ""},
                          {OPEN_EXISTING, "ok", "old", "2", "(missing)"},
                          {OPEN_ALWAYS, "ok 183", "old", "ok 0", ""},
                          {TRUNCATE_EXISTING, "ok", "", "2", "(missing)"},
                          {0, "87", "old", "87", "(missing)"},
                          {6, "ok", "", "2", "(missing)"},
                          {7, "87", "old", "87", "(missing)"}}) {
        SCOPED_TRACE(c.disposition);
        Put("there", "old");
        std::filesystem::remove(Host("missing"));
        EXPECT_EQ(Open(Wide("there"), kReadWrite, 0, c.disposition), c.when_there);
        EXPECT_EQ(Open(Wide("missing"), kReadWrite, 0, c.disposition), c.when_missing);
        EXPECT_EQ(Get("there"), c.then_holds);
        EXPECT_EQ(Get("missing"), c.missing_then_holds);
    }
    EXPECT_EQ(Open(Wide("there"), GENERIC_READ, 0, TRUNCATE_EXISTING), "87");
    EXPECT_EQ(Open(Wide("there"), GENERIC_READ, 0, 6), "87");
}

TEST_F(FileCalls, OpenTellsWhyNot) {
    Put("fixed", "x");
    chmod(Host("fixed").c_str(), 0444);
    mkfifo(Host("pipe").c_str(), 0600);  // opening one end waits for nobody
    const std::u16string longest = Wide("") + std::u16string(259 - Wide("").size(), u'n');
    std::u16string odd = Wide("\xC3\xB1\xF0\x9F\x98\x80").substr(1);  // from the root all the same
    odd[odd.rfind(u'\\')] = u'/';
    const auto open = [](const std::u16string& name) {
        const std::string read = Open(name, GENERIC_READ, 0, OPEN_ALWAYS);
        return read + ", " + Open(name, GENERIC_WRITE, 0, OPEN_ALWAYS);
    };
    EXPECT_EQ(open(Wide("device")), "5, 5");
    EXPECT_EQ(open(Wide("no/file")), "3, 3");
    EXPECT_EQ(open(Wide("fixed")), "ok 183, 5");
    EXPECT_EQ(open(Wide("fixed/file")), "3, 3");
    EXPECT_EQ(open(Wide("pipe")), "ok 183, ok 183");
    EXPECT_EQ(open(Wide("a?b")), "123, 123");
    EXPECT_EQ(open(Wide("a") + u'\xD800'), "123, 123");
    EXPECT_EQ(open(longest), "ok 0, ok 183");
    EXPECT_EQ(open(longest + u"n"), "206, 206");
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
    EXPECT_EQ(Read(reader, 6), "ok 012345");
    EXPECT_EQ(Read(reader, 6), "ok 6789");
    EXPECT_EQ(Read(reader, 6), "ok ");
    EXPECT_EQ(Read(writer, 6), "5 ");
    EXPECT_EQ(Write(reader, "abc"), "5 0");
    EXPECT_EQ(Write(writer, "abc"), "ok 3");
    EXPECT_EQ(Write(writer, ""), "ok 0");
    EXPECT_EQ(Get("file"), "abc3456789");
    char byte = 0;
    EXPECT_EQ(Outcome([&] { return ReadFile(reader, &byte, 1, nullptr, nullptr); }), "87");
    EXPECT_EQ(Outcome([&] { return CloseHandle(reader); }), "ok");
    CloseHandle(writer);
    EXPECT_EQ(Read(reader, 1), "6 ");
    EXPECT_EQ(Outcome([&] { return CloseHandle(reader); }), "6");
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

TEST_F(FileCalls, PositionsHave64Bits) {
    HANDLE file = nullptr;
    ASSERT_EQ(Open(Wide("sparse"), kReadWrite, 0, CREATE_NEW, &file), "ok 0");
    constexpr int64_t kFar = (int64_t{5} << 32) + 0xFFFFFFFF;
    LONG high = static_cast<LONG>(kFar >> 32);
    SetFilePointer(file, -1, &high, FILE_BEGIN);
    ASSERT_EQ(Write(file, "far"), "ok 3");
    EXPECT_EQ(std::filesystem::file_size(Host("sparse")), static_cast<uint64_t>(kFar + 3));

    struct Case {
        LONG distance;
        bool wide;  // with a high half, which is `high`
        LONG high;
        DWORD method;
        const char* outcome;
        int64_t position;  // afterwards
    };
    for (const Case& c : {Case{0, false, 0, FILE_CURRENT, "87", kFar + 3},
                          {-3, true, -1, FILE_END, "ok 0", kFar},  // 0xFFFFFFFF is a low half here
                          {-4, true, -7, FILE_END, "131", kFar},
                          {0, true, 0, 3, "87", kFar},
                          {-1, false, 0, FILE_BEGIN, "131", kFar},
                          {0x7FFFFFFF, false, 0, FILE_BEGIN, "ok 0", 0x7FFFFFFF},
                          {0x7FFFFFFF, false, 0, FILE_CURRENT, "ok 0", 0xFFFFFFFE},
                          {2, false, 0, FILE_CURRENT, "87", 0xFFFFFFFE},
                          {-1, true, 0x7FFFFFFF, FILE_CURRENT, "87", 0xFFFFFFFE}}) {
        SCOPED_TRACE(testing::Message() << c.distance << " by " << c.method);
        high = c.high;
        const std::string outcome = Outcome([&] {
            const DWORD low = SetFilePointer(file, c.distance, c.wide ? &high : nullptr, c.method);
            return low != INVALID_SET_FILE_POINTER || GetLastError() == ERROR_SUCCESS;
        });
        EXPECT_EQ(outcome, c.outcome);
        high = 0;
        const DWORD low = SetFilePointer(file, 0, &high, FILE_CURRENT);
        EXPECT_EQ((int64_t{high} << 32) + low, c.position);
    }
    CloseHandle(file);
    EXPECT_EQ(SetFilePointer(file, 0, nullptr, FILE_BEGIN), INVALID_SET_FILE_POINTER);
}

}  // namespace
}  // namespace zelto::test
