// Calls on names: attributes, delete, copy, move, folders, searches.

#include <fcntl.h>
#include <set>
#include <sys/stat.h>

#include "tests/platform/host_files.h"

namespace zelto::test {
namespace {

using Names = std::multiset<std::string>;

class FileNames : public HostFiles {
  protected:
    void SetUp() override {
        Put("file", "data");
        Put("read-only", "fixed");
        Put(".hidden", "dot");
        chmod(Host("read-only").c_str(), 0444);
        mkdir(Host("folder").c_str(), 0755);
        Put("folder/inside", "x");
    }
    // The outcomes of a call on one name after the other.
    template <class Call>
    std::string Each(Call call, const std::vector<std::string>& names) const {
        std::string outcomes;
        for (const std::string& name : names)
            outcomes += Outcome([&] { return call(Wide(name).c_str()); }) + " ";
        return outcomes;
    }
    // Names that the search finds, a folder's with a slash.
    Names Find(const std::string& pattern) const {
        WIN32_FIND_DATAW data;
        Names names;
        HANDLE search = FindFirstFileW(Wide(pattern).c_str(), &data);
        if (search == INVALID_HANDLE_VALUE)
            return {"error " + std::to_string(GetLastError())};
        do {
            const bool is_folder = (data.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
            names.insert(std::filesystem::path(data.cFileName).string() + (is_folder ? "/" : ""));
        } while (FindNextFileW(search, &data) != FALSE);
        EXPECT_EQ(GetLastError(), DWORD{ERROR_NO_MORE_FILES});
        EXPECT_EQ(Outcome([&] { return FindClose(search); }), "ok");
        EXPECT_EQ(Outcome([&] { return FindNextFileW(search, &data); }), "6");
        return names;
    }
    std::string Copy(const std::string& from, const std::vector<std::string>& to,
                     BOOL fail_if_exists = FALSE) const {
        const std::u16string source = Wide(from);
        return Each([&](LPCWSTR name) { return CopyFileW(source.c_str(), name, fail_if_exists); },
                    to);
    }
    std::string Move(const std::string& from, const std::vector<std::string>& to) const {
        return Each([&](LPCWSTR name) { return MoveFileW(Wide(from).c_str(), name); }, to);
    }
};

TEST_F(FileNames, AttributesDeleteAndFolders) {
    const auto attributes = [this](const char* name) {
        return GetFileAttributesW(Wide(name).c_str());
    };
    EXPECT_EQ(attributes("file"), DWORD{FILE_ATTRIBUTE_NORMAL});
    EXPECT_EQ(attributes("read-only"), DWORD{FILE_ATTRIBUTE_READONLY});
    EXPECT_EQ(attributes(".hidden"), DWORD{FILE_ATTRIBUTE_HIDDEN});
    EXPECT_EQ(attributes("folder/"), DWORD{FILE_ATTRIBUTE_DIRECTORY});
    EXPECT_EQ(attributes("folder/.."), DWORD{FILE_ATTRIBUTE_DIRECTORY});
    const auto exists = [](LPCWSTR name) {
        return GetFileAttributesW(name) != INVALID_FILE_ATTRIBUTES;
    };
    EXPECT_EQ(Each(exists, {"file", "file/", "none", "none/file", "fi*"}), "ok 3 2 3 123 ");
    EXPECT_EQ(Each(DeleteFileW, {"none", "none/file", "read-only", "folder", "file", "file"}),
              "2 3 5 5 ok 2 ");
    const auto make = [](LPCWSTR name) { return CreateDirectoryW(name, nullptr); };
    EXPECT_EQ(Each(make, {"folder", "read-only", "none/new", "a<b", "new/"}), "183 183 3 123 ok ");
}

TEST_F(FileNames, CopyReplacesAsAWholeOrNotAtAll) {
    Put("target", "old");
    mkfifo(Host("pipe").c_str(), 0600);
    EXPECT_EQ(Copy("file", {"target"}, TRUE), "80 ");
    EXPECT_EQ(Copy("none", {"target"}) + Copy("folder", {"target"}), "2 5 ");
    EXPECT_EQ(Copy("file", {"folder", "read-only", ".hidden", "pipe", "none/copy"}), "5 5 5 5 3 ");
    Put("long", std::string(100'000, 'x'));
    const Names before = Find("*");
    {
        const SizeLimit limit(60'000);
        EXPECT_EQ(Copy("long", {"target", "copy"}), "112 112 ");
    }
    EXPECT_EQ(Find("*"), before);  // nothing is left
    EXPECT_EQ(Get("target"), "old");
    std::filesystem::create_symlink(Host("target"), Host("link"));
    EXPECT_EQ(Copy("long", {"link"}), "ok ");
    EXPECT_EQ(Get("target"), std::string(100'000, 'x'));
    EXPECT_EQ(Copy("read-only", {"copy"}, TRUE), "ok ");
    EXPECT_EQ(GetFileAttributesW(Wide("copy").c_str()), DWORD{FILE_ATTRIBUTE_READONLY});
}

TEST_F(FileNames, MoveNeverReplaces) {
    Put("target", "old");
    EXPECT_EQ(Move("none", {"new"}) + Move("none/file", {"new"}), "2 3 ");
    EXPECT_EQ(Move("file", {"target", "none/new"}), "183 3 ");
    EXPECT_EQ(Get("target") + Get("file"), "olddata");
    EXPECT_EQ(Move("file", {"new"}) + Move("folder", {"other"}), "ok ok ");
    EXPECT_EQ(Get("file") + Get("new") + Get("other/inside"), "(missing)datax");
}

TEST_F(FileNames, MoveToAnotherFileSystemCopiesFilesOnly) {
    struct stat here {
    }, there{};
    if (stat("/dev/shm", &there) != 0 || stat("/tmp", &here) != 0 || here.st_dev == there.st_dev)
        GTEST_SKIP() << "needs /dev/shm on another file system than /tmp";
    const std::string target = "../../dev/shm/zelto-move-" + std::to_string(getpid());
    EXPECT_EQ(Move("folder", {target}) + Move("file", {target}), "17 ok ");
    EXPECT_EQ(Get(target), "data");
    EXPECT_EQ(Move("read-only", {target}), "183 ");
    EXPECT_EQ(Get("file") + Get("read-only"), "(missing)fixed");
    std::filesystem::remove(Host(target));
}

TEST_F(FileNames, SearchMatchesByNameOnly) {
    for (const char* name : {"folder/a.txt", "folder/b.tx", "folder/.c"})
        Put(name, "");
    mkdir(Host("folder/sub.txt").c_str(), 0755);
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
    const std::string odd = "folder/\xFF odd \xC3";  // bytes that are not UTF-8
    Put(odd, "");
    std::filesystem::resize_file(Host(odd), (uint64_t{1} << 32) + 7);
    const timespec times[] = {{1, 0}, {1'000'000'000, 500}};
    utimensat(AT_FDCWD, Host(odd).c_str(), times, 0);
    WIN32_FIND_DATAW data;
    HANDLE search = FindFirstFileW(Wide("folder/*odd*").c_str(), &data);
    ASSERT_EQ(Outcome([&] { return FindClose(search); }), "ok");
    EXPECT_EQ((uint64_t{data.nFileSizeHigh} << 32) + data.nFileSizeLow, (uint64_t{1} << 32) + 7);
    const FILETIME& written = data.ftLastWriteTime;  // 2001-09-09 01:46:40 and 500 ns
    EXPECT_EQ((uint64_t{written.dwHighDateTime} << 32) + written.dwLowDateTime,
              126'444'736'000'000'005u);
    const std::u16string found = Wide("folder/") + data.cFileName;
    EXPECT_EQ(Outcome([&] { return DeleteFileW(found.c_str()); }), "ok");
}

}  // namespace
}  // namespace zelto::test
