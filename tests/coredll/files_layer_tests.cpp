// Opening, reading, writing and positions.

#include <sys/stat.h>

#include "tests/coredll/files_fixture.h"

namespace zelto::test {
namespace {

constexpr DWORD kReadWrite = GENERIC_READ | GENERIC_WRITE;
constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE;

class FileCalls : public FilesFixture {
  protected:
    std::string Read(HANDLE file, DWORD size, std::string& text) const {
        text.assign(size, '?');
        DWORD read = 99;
        std::string outcome =
            Outcome([&] { return ReadFile(file, text.data(), size, &read, nullptr); });
        text.resize(read);
        return outcome;
    }
    std::string Write(HANDLE file, const std::string& text, DWORD& written) const {
        written = 99;
        return Outcome([&] {
            return WriteFile(file, text.data(), static_cast<DWORD>(text.size()), &written, nullptr);
        });
    }
};

TEST_F(FileCalls, DispositionDecidesWhatHappensToAFile) {
    struct Case {
        DWORD disposition;
        const char* when_there;
        const char* then_holds;
        const char* when_missing;
        const char* missing_then_holds;
    };
    for (const Case& c : {Case{CREATE_NEW, "80", "old", "ok", ""},
                          {CREATE_ALWAYS, "ok 183", "", "ok 0", ""},
                          {OPEN_EXISTING, "ok", "old", "2", "(missing)"},
                          {OPEN_ALWAYS, "ok 183", "old", "ok 0", ""},
                          {TRUNCATE_EXISTING, "ok", "", "2", "(missing)"},
                          {0, "87", "old", "87", "(missing)"},
                          {6, "87", "old", "87", "(missing)"}}) {
        SCOPED_TRACE(c.disposition);
        Put("there", "old");
        std::filesystem::remove(Host("missing"));
        EXPECT_EQ(Open(Wide("there"), kReadWrite, 0, c.disposition), c.when_there);
        EXPECT_EQ(Get("there"), c.then_holds);
        EXPECT_EQ(Open(Wide("missing"), kReadWrite, 0, c.disposition), c.when_missing);
        EXPECT_EQ(Get("missing"), c.missing_then_holds);
    }
    Put("there", "old");
    EXPECT_EQ(Open(Wide("there"), GENERIC_READ, 0, TRUNCATE_EXISTING), "87");
    EXPECT_EQ(Get("there"), "old");
}

TEST_F(FileCalls, OpenTellsWhyNot) {
    Put("read-only", "x");
    chmod(Host("read-only").c_str(), 0444);
    const std::u16string long_name(259 - Wide("").size(), u'n');
    struct Case {
        std::u16string name;
        DWORD access;
        const char* outcome;
    };
    for (const Case& c : {Case{Wide("device"), GENERIC_READ, "5"},
                          {Wide("device"), GENERIC_WRITE, "5"},
                          {Wide("no/file"), GENERIC_WRITE, "3"},
                          {Wide("read-only"), GENERIC_WRITE, "5"},
                          {Wide("read-only"), GENERIC_READ, "ok 183"},
                          {Wide("read-only/file"), GENERIC_READ, "3"},
                          {Wide("a?b"), GENERIC_WRITE, "123"},
                          {Wide("a") + u'\xD800', GENERIC_WRITE, "123"},
                          {Wide("") + long_name, GENERIC_WRITE, "ok 0"},
                          {Wide("") + long_name + u"n", GENERIC_WRITE, "206"},
                          {u"", GENERIC_WRITE, "3"}}) {
        SCOPED_TRACE(c.name.size());
        EXPECT_EQ(Open(c.name, c.access, 0, OPEN_ALWAYS), c.outcome);
    }
    EXPECT_EQ(Outcome([] {
                  return CreateFileW(nullptr, 0, 0, nullptr, OPEN_EXISTING, 0, nullptr) !=
                         INVALID_HANDLE_VALUE;
              }),
              "87");
}

TEST_F(FileCalls, NamesAreUtf8FromTheRootWithEitherSlash) {
    std::u16string name = Wide("\xC3\xB1\xF0\x9F\x98\x80").substr(1);  // no leading backslash
    name[name.rfind(u'\\')] = u'/';
    EXPECT_EQ(Open(name, GENERIC_WRITE, 0, CREATE_NEW), "ok");
    EXPECT_EQ(Get("\xC3\xB1\xF0\x9F\x98\x80"), "");
}

TEST_F(FileCalls, OpeningAPipeWaitsForNobody) {
    ASSERT_EQ(mkfifo(Host("pipe").c_str(), 0600), 0);
    EXPECT_EQ(Open(Wide("pipe"), GENERIC_READ, 0, OPEN_EXISTING), "ok");
    EXPECT_EQ(Open(Wide("pipe"), GENERIC_WRITE, 0, OPEN_EXISTING), "ok");
}

TEST_F(FileCalls, ReadAndWriteKeepToTheirRights) {
    Put("file", "0123456789");
    HANDLE reader = nullptr;
    HANDLE writer = nullptr;
    ASSERT_EQ(Open(Wide("file"), GENERIC_READ, kShareAll, OPEN_EXISTING, &reader), "ok");
    ASSERT_EQ(Open(Wide("file"), GENERIC_WRITE, kShareAll, OPEN_EXISTING, &writer), "ok");
    std::string text;
    DWORD written = 0;
    EXPECT_EQ(Read(reader, 6, text), "ok");
    EXPECT_EQ(text, "012345");
    EXPECT_EQ(Read(reader, 6, text), "ok");
    EXPECT_EQ(text, "6789");
    EXPECT_EQ(Read(reader, 6, text), "ok");
    EXPECT_EQ(text, "");
    EXPECT_EQ(Read(writer, 6, text), "5");
    EXPECT_EQ(text, "");
    EXPECT_EQ(Write(reader, "abc", written), "5");
    EXPECT_EQ(written, 0u);
    EXPECT_EQ(Write(writer, "abc", written), "ok");
    EXPECT_EQ(written, 3u);
    EXPECT_EQ(Get("file"), "abc3456789");
    char byte = 0;
    EXPECT_EQ(Outcome([&] { return ReadFile(reader, &byte, 1, nullptr, nullptr); }), "87");
    EXPECT_EQ(Outcome([&] { return ReadFile(reader, nullptr, 1, &written, nullptr); }), "87");
    EXPECT_EQ(Outcome([&] { return WriteFile(writer, &byte, 1, &written, &byte); }), "87");
    EXPECT_EQ(Outcome([&] { return CloseHandle(reader); }), "ok");
    CloseHandle(writer);
    EXPECT_EQ(Read(reader, 1, text), "6");
    EXPECT_EQ(Outcome([&] { return CloseHandle(reader); }), "6");
}

TEST_F(FileCalls, AFullDiskTellsWhatReachedTheFile) {
    HANDLE file = nullptr;
    DWORD written = 0;
    ASSERT_EQ(Open(u"\\dev\\full", GENERIC_WRITE, 0, CREATE_ALWAYS, &file), "ok 183");
    EXPECT_EQ(Open(u"\\dev\\full", GENERIC_WRITE, 0, OPEN_EXISTING), "ok");  // shared by all
    EXPECT_EQ(Write(file, "abc", written), "112");
    EXPECT_EQ(written, 0u);
    CloseHandle(file);
    ASSERT_EQ(Open(Wide("file"), GENERIC_WRITE, 0, CREATE_NEW, &file), "ok");
    {
        const SizeLimit limit(60);
        EXPECT_EQ(Write(file, std::string(100, 'x'), written), "112");
        EXPECT_EQ(written, 60u);
    }
    CloseHandle(file);
    EXPECT_EQ(Get("file"), std::string(60, 'x'));
}

TEST_F(FileCalls, PositionsHave64Bits) {
    HANDLE file = nullptr;
    ASSERT_EQ(Open(Wide("sparse"), kReadWrite, 0, CREATE_NEW, &file), "ok");
    constexpr int64_t kFar = (int64_t{5} << 32) + 0xFFFFFFFF;
    LONG high = static_cast<LONG>(kFar >> 32);
    DWORD written = 0;
    EXPECT_EQ(SetFilePointer(file, -1, &high, FILE_BEGIN), 0xFFFFFFFFu);  // a good low half
    EXPECT_EQ(GetLastError(), DWORD{ERROR_SUCCESS});
    ASSERT_EQ(Write(file, "far", written), "ok");
    EXPECT_EQ(std::filesystem::file_size(Host("sparse")), static_cast<uint64_t>(kFar + 3));

    struct Case {
        LONG distance;
        bool wide;  // with a high half, which is `high`
        LONG high;
        DWORD method;
        const char* outcome;
        int64_t position;  // afterwards
    };
    int64_t position = kFar + 3;
    for (const Case& c : {Case{0, false, 0, FILE_CURRENT, "87", position},
                          {-3, true, -1, FILE_END, "ok 0", kFar},
                          {-4, true, -7, FILE_END, "131", kFar},
                          {0, true, 0, 3, "87", kFar},
                          {-1, false, 0, FILE_BEGIN, "131", kFar},
                          {0x7FFFFFFF, false, 0, FILE_BEGIN, "ok 0", 0x7FFFFFFF},
                          {0x7FFFFFFF, false, 0, FILE_CURRENT, "ok 0", 0xFFFFFFFE},
                          {2, false, 0, FILE_CURRENT, "87", 0xFFFFFFFE},
                          {-0xFF, false, 0, FILE_CURRENT, "ok 0", 0xFFFFFEFF},
                          {-1, true, 0x7FFFFFFF, FILE_CURRENT, "87", 0xFFFFFEFF}}) {
        SCOPED_TRACE(testing::Message() << c.distance << " by " << c.method);
        high = c.high;
        DWORD low = 0;
        EXPECT_EQ(Outcome([&] {
                      low = SetFilePointer(file, c.distance, c.wide ? &high : nullptr, c.method);
                      return low != INVALID_SET_FILE_POINTER || GetLastError() == ERROR_SUCCESS;
                  }),
                  c.outcome);
        if (c.wide && std::string(c.outcome) == "ok 0") {
            EXPECT_EQ(high, static_cast<LONG>(c.position >> 32));
        }
        high = 0;
        low = SetFilePointer(file, 0, &high, FILE_CURRENT);
        EXPECT_EQ((int64_t{high} << 32) + low, c.position);
    }
    CloseHandle(file);
    EXPECT_EQ(SetFilePointer(file, 0, nullptr, FILE_BEGIN), INVALID_SET_FILE_POINTER);
    EXPECT_EQ(GetLastError(), DWORD{ERROR_INVALID_HANDLE});
}

}  // namespace
}  // namespace zelto::test
