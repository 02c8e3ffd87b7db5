// Calls on names: attributes, delete, copy, move, folders, searches.

#include <set>
#include <fcntl.h>
#include <sys/stat.h>

#include "tests/coredll/files_fixture.h"

namespace zelto::test {
namespace {

class FileNames : public FilesFixture {
  protected:
    void SetUp() override {
        Put("file", "data");
        Put("read-only", "fixed");
        Put(".hidden", "dot");
        chmod(Host("read-only").c_str(), 0444);
        mkdir(Host("folder").c_str(), 0755);
        Put("folder/inside", "x");
    }
    // Names that the search finds, a folder's with a slash.
    std::multiset<std::string> Find(const std::string& pattern) const {
        WIN32_FIND_DATAW data;
        std::multiset<std::string> names;
        HANDLE search = FindFirstFileW(Wide(pattern).c_str(), &data);
        if (search == INVALID_HANDLE_VALUE)
            return {"error " + std::to_string(GetLastError())};
        do {
            const bool is_folder = (data.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
            names.insert(std::filesystem::path(data.cFileName).string() + (is_folder ? "/" : ""));
        } while (FindNextFileW(search, &data) != FALSE);
        EXPECT_EQ(GetLastError(), DWORD{ERROR_NO_MORE_FILES});
        EXPECT_EQ(Outcome([&] { return FindClose(search); }), "ok");
        EXPECT_EQ(Outcome([&] { return FindClose(search); }), "6");
        return names;
    }
    std::string Copy(const std::string& from, const std::string& to, BOOL fail) const {
        return Outcome([&] { return CopyFileW(Wide(from).c_str(), Wide(to).c_str(), fail); });
    }
    std::string Move(const std::string& from, const std::u16string& to) const {
        return Outcome([&] { return MoveFileW(Wide(from).c_str(), to.c_str()); });
    }
};

TEST_F(FileNames, Attributes) {
    struct Case {
        const char* name;
        DWORD attributes;
        const char* outcome;
    };
    for (const Case& c : {Case{"file", FILE_ATTRIBUTE_NORMAL, "ok"},
                          {"read-only", FILE_ATTRIBUTE_READONLY, "ok"},
                          {".hidden", FILE_ATTRIBUTE_HIDDEN, "ok"},
                          {"folder/", FILE_ATTRIBUTE_DIRECTORY, "ok"},
                          {"folder/..", FILE_ATTRIBUTE_DIRECTORY, "ok"},
                          {"file/", INVALID_FILE_ATTRIBUTES, "3"},
                          {"none", INVALID_FILE_ATTRIBUTES, "2"},
                          {"none/file", INVALID_FILE_ATTRIBUTES, "3"},
                          {"fi*", INVALID_FILE_ATTRIBUTES, "123"}}) {
        SCOPED_TRACE(c.name);
        DWORD attributes = 0;
        EXPECT_EQ(Outcome([&] {
                      attributes = GetFileAttributesW(Wide(c.name).c_str());
                      return attributes != INVALID_FILE_ATTRIBUTES;
                  }),
                  c.outcome);
        EXPECT_EQ(attributes, c.attributes);
    }
}

TEST_F(FileNames, DeleteAndFolders) {
    using NameCall = BOOL (*)(LPCWSTR);
    const NameCall make = [](LPCWSTR name) { return CreateDirectoryW(name, nullptr); };
    struct Case {
        NameCall call;
        const char* name;
        const char* outcome;
    };
    for (const Case& c : {Case{DeleteFileW, "none", "2"},
                          {DeleteFileW, "none/file", "3"},
                          {DeleteFileW, "read-only", "5"},
                          {DeleteFileW, "folder", "5"},
                          {DeleteFileW, "file", "ok"},
                          {DeleteFileW, "file", "2"},
                          {make, "folder", "183"},
                          {make, "read-only", "183"},
                          {make, "none/new", "3"},
                          {make, "a<b", "123"},
                          {make, "new/", "ok"},
                          {RemoveDirectoryW, "new", "ok"},
                          {RemoveDirectoryW, "new", "2"},
                          {RemoveDirectoryW, "none/new", "3"},
                          {RemoveDirectoryW, "read-only", "5"},
                          {RemoveDirectoryW, "folder", "145"}}) {
        EXPECT_EQ(Outcome([&] { return c.call(Wide(c.name).c_str()); }), c.outcome) << c.name;
    }
}

TEST_F(FileNames, CopyReplacesAsAWholeOrNotAtAll) {
    Put("target", "old");
    EXPECT_EQ(Copy("file", "target", TRUE), "80");
    EXPECT_EQ(Copy("none", "target", FALSE), "2");
    EXPECT_EQ(Copy("folder", "target", FALSE), "5");
    EXPECT_EQ(Copy("file", "folder", FALSE), "5");
    EXPECT_EQ(Copy("file", "read-only", FALSE), "5");
    EXPECT_EQ(Copy("file", ".hidden", FALSE), "5");
    EXPECT_EQ(Copy("file", "none/copy", FALSE), "3");
    Put("long", std::string(100'000, 'x'));
    const std::multiset<std::string> before = Find("*");
    {
        const SizeLimit limit(60'000);
        EXPECT_EQ(Copy("long", "target", FALSE), "112");
        EXPECT_EQ(Copy("long", "copy", FALSE), "112");
    }
    EXPECT_EQ(Find("*"), before);  // nothing is left
    EXPECT_EQ(Get("target"), "old");
    EXPECT_EQ(Copy("long", "target", FALSE), "ok");
    EXPECT_EQ(Get("target"), std::string(100'000, 'x'));
    EXPECT_EQ(Copy("read-only", "copy", TRUE), "ok");
    EXPECT_EQ(GetFileAttributesW(Wide("copy").c_str()), DWORD{FILE_ATTRIBUTE_READONLY});
    EXPECT_EQ(CopyFileW(Wide("file").c_str(), u"\\dev\\null", FALSE), FALSE);
    EXPECT_TRUE(std::filesystem::is_character_file("/dev/null"));
}

TEST_F(FileNames, CopyGoesThroughALink) {
    Put("real", "old");
    std::filesystem::create_symlink(Host("real"), Host("link"));
    EXPECT_EQ(Copy("file", "link", FALSE), "ok");
    EXPECT_TRUE(std::filesystem::is_symlink(Host("link")));
    EXPECT_EQ(Get("real"), "data");
}

TEST_F(FileNames, MoveNeverReplaces) {
    Put("target", "old");
    EXPECT_EQ(Move("file", Wide("target")), "183");
    EXPECT_EQ(Move("none", Wide("new")), "2");
    EXPECT_EQ(Move("none/file", Wide("new")), "3");
    EXPECT_EQ(Move("file", Wide("none/new")), "3");
    EXPECT_EQ(Get("target") + Get("file"), "olddata");
    EXPECT_EQ(Move("file", Wide("new")), "ok");
    EXPECT_EQ(Move("folder", Wide("other")), "ok");
    EXPECT_EQ(Get("file") + Get("new") + Get("other/inside"), "(missing)datax");
}

TEST_F(FileNames, MoveToAnotherFileSystemCopiesFilesOnly) {
    struct stat here {
    }, there{};
    if (stat("/dev/shm", &there) != 0 || stat(Host("").c_str(), &here) != 0 ||
        here.st_dev == there.st_dev)
        GTEST_SKIP() << "needs /dev/shm on another file system than /tmp";
    const std::string target = "/dev/shm/zelto-move-" + std::to_string(getpid());
    EXPECT_EQ(Move("folder", WidePath(target)), "17");
    EXPECT_EQ(Move("file", WidePath(target)), "ok");
    EXPECT_EQ(std::filesystem::file_size(target), 4u);
    EXPECT_EQ(Get("file"), "(missing)");
    EXPECT_EQ(Move("read-only", WidePath(target)), "183");
    EXPECT_EQ(Get("read-only"), "fixed");
    std::filesystem::remove(target);
}

TEST_F(FileNames, SearchMatchesByNameOnly) {
    Put("folder/a.txt", "");
    Put("folder/b.tx", "");
    Put("folder/.c", "");
    mkdir(Host("folder/sub.txt").c_str(), 0755);
    using Names = std::multiset<std::string>;
    const Names all = {"inside", "a.txt", "b.tx", ".c", "sub.txt/"};
    EXPECT_EQ(Find("folder/*"), all);
    EXPECT_EQ(Find("folder/*.*"), all);
    EXPECT_EQ(Find("folder/*.txt"), (Names{"a.txt", "sub.txt/"}));
    EXPECT_EQ(Find("folder/?.tx*"), (Names{"a.txt", "b.tx"}));
    EXPECT_EQ(Find("folder/*s*d*"), (Names{"inside"}));
    EXPECT_EQ(Find("folder"), (Names{"folder/"}));
    EXPECT_EQ(Find("folder/"), (Names{"error 2"}));
    EXPECT_EQ(Find("folder/none*"), (Names{"error 2"}));
    EXPECT_EQ(Find("none/*"), (Names{"error 3"}));
    EXPECT_EQ(Find("fol*/*"), (Names{"error 123"}));
}

TEST_F(FileNames, SearchTellsSizeTimesAndAnyName) {
    Put("folder/\xFF odd \xC3", "");  // bytes that are not UTF-8
    std::filesystem::resize_file(Host("folder/\xFF odd \xC3"), (uint64_t{1} << 32) + 7);
    const timespec times[] = {{1, 0}, {1'000'000'000, 500}};
    utimensat(AT_FDCWD, Host("folder/\xFF odd \xC3").c_str(), times, 0);
    WIN32_FIND_DATAW data;
    HANDLE search = FindFirstFileW(Wide("folder/*odd*").c_str(), &data);
    ASSERT_NE(search, INVALID_HANDLE_VALUE);
    FindClose(search);
    EXPECT_EQ(data.nFileSizeHigh, 1u);
    EXPECT_EQ(data.nFileSizeLow, 7u);
    const uint64_t written =
        (uint64_t{data.ftLastWriteTime.dwHighDateTime} << 32) + data.ftLastWriteTime.dwLowDateTime;
    EXPECT_EQ(written, 126'444'736'000'000'005u);  // 2001-09-09 01:46:40 and 500 ns
    const std::u16string found = Wide("folder/") + data.cFileName;
    EXPECT_EQ(Outcome([&] { return DeleteFileW(found.c_str()); }), "ok");
    EXPECT_EQ(Outcome([&] { return FindNextFileW(search, &data); }), "6");
}

}  // namespace
}  // namespace zelto::test
