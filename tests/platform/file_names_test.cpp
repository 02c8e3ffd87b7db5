// What copying, moving and searching do to files of the host.

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

#include "tests/platform/host_files.h"

namespace zelto::test {
namespace {

class FileNames : public HostFiles {
  protected:
    void SetUp() override {
        Put("file", "data");
        Put("read-only", "fixed");
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

TEST_F(FileNames, CopyReplacesAsAWholeOrNotAtAll) {
    Put("target", "old");
    mkfifo(Host("pipe").c_str(), 0600);
    EXPECT_EQ(Copy("folder", {"target"}) + Copy("file", {"folder", "pipe"}), "5 5 5 ");
    Put("long", std::string(100'000, 'x'));
    const std::filesystem::directory_iterator none;
    const auto names = [&] {
        return std::distance(std::filesystem::directory_iterator(Host("")), none);
    };
    const auto before = names();
    {
        const SizeLimit limit(60'000);
        EXPECT_EQ(Copy("long", {"target", "copy"}), "112 112 ");
    }
    EXPECT_EQ(names(), before);  // nothing is left
    EXPECT_EQ(Get("target"), "old");
    std::filesystem::create_symlink(Host("target"), Host("link"));
    EXPECT_EQ(Copy("long", {"link"}), "ok ");
    EXPECT_EQ(Get("target"), std::string(100'000, 'x'));
    EXPECT_EQ(Copy("read-only", {"copy"}, TRUE), "ok ");
    EXPECT_EQ(GetFileAttributesW(Wide("copy").c_str()), DWORD{FILE_ATTRIBUTE_READONLY});
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

TEST_F(FileNames, CopyingClearsAwayWhatKilledCopiesLeft) {
    Put(".zelto-copy-killed", "half");
    Put(".zelto-copy-busy12", "half");
    const int busy = open(Host(".zelto-copy-busy12").c_str(), O_RDWR);
    ASSERT_EQ(flock(busy, LOCK_EX | LOCK_NB), 0);
    EXPECT_EQ(Copy("file", {"copy"}), "ok ");
    EXPECT_EQ(access(Host(".zelto-copy-killed").c_str(), F_OK), -1);
    EXPECT_EQ(access(Host(".zelto-copy-busy12").c_str(), F_OK), 0);
    close(busy);
    EXPECT_EQ(Copy("file", {"copy"}) + Get("copy"), "ok data");
    EXPECT_EQ(access(Host(".zelto-copy-busy12").c_str(), F_OK), -1);
}

}  // namespace
}  // namespace zelto::test
