// Share modes, in one process and between two.

#include <fcntl.h>
#include <sys/wait.h>

#include "platform/coredll/linux/files/file_sharing.h"
#include "tests/platform/host_files.h"

namespace zelto::test {
namespace {

constexpr DWORD kR = GENERIC_READ, kW = GENERIC_WRITE;
constexpr DWORD kShareR = FILE_SHARE_READ, kShareW = FILE_SHARE_WRITE, kShareRW = kShareR | kShareW;

class Sharing : public HostFiles {
  protected:
    void SetUp() override { Put("file", "data"); }

    std::string Open(DWORD access, DWORD share, DWORD disposition, HANDLE* file = nullptr) const {
        return HostFiles::Open(Wide("file"), access, share, disposition, file);
    }
    // From a process of its own.
    std::string OpenElsewhere(DWORD access, DWORD share, DWORD disposition) const {
        const pid_t child = fork();
        if (child == 0) {
            const std::string outcome = Open(access, share, disposition);
            _exit(outcome == "ok" ? 0 : std::stoi(outcome));
        }
        int status = 0;
        waitpid(child, &status, 0);
        return status == 0 ? "ok" : std::to_string(WEXITSTATUS(status));
    }
};

TEST_F(Sharing, BothSidesMustAgree) {
    struct Case {
        DWORD access, share, other_access, other_share;
        const char* outcome;
    };
    for (const Case& c : {Case{kR, kShareR, kR, kShareR, "ok"},
                          {kR, 0, kR, kShareR, "32"},
                          {kR, kShareR, kR, 0, "32"},
                          {kR, kShareR, kW, kShareRW, "32"},
                          {kR, kShareRW, kW, kShareR, "ok"},
                          {kR, kShareRW, kW, kShareW, "32"},
                          {kW, kShareRW, kR, kShareR, "32"},
                          {kW, kShareW, kW, kShareW, "ok"},
                          {kR | kW, kShareRW, kR | kW, kShareRW, "ok"},
                          {kR | kW, 0, 0, 0, "ok"},
                          {0, 0, kR | kW, 0, "ok"}}) {
        SCOPED_TRACE(testing::Message() << c.access << " " << c.share << " against "
                                        << c.other_access << " " << c.other_share);
        HANDLE first = nullptr;
        ASSERT_EQ(Open(c.access, c.share, OPEN_EXISTING, &first), "ok");
        EXPECT_EQ(Open(c.other_access, c.other_share, OPEN_EXISTING), c.outcome);
        EXPECT_EQ(OpenElsewhere(c.other_access, c.other_share, OPEN_EXISTING), c.outcome);
        CloseHandle(first);
        EXPECT_EQ(OpenElsewhere(kR | kW, 0, OPEN_EXISTING), "ok");
    }
}

TEST_F(Sharing, ARefusedOpenChangesNothingAndIsInNobodysWay) {
    HANDLE reader = nullptr;
    ASSERT_EQ(Open(kR, kShareR, OPEN_EXISTING, &reader), "ok");
    for (const DWORD disposition : {CREATE_ALWAYS, TRUNCATE_EXISTING})
        EXPECT_EQ(OpenElsewhere(kW, kShareR, disposition), "32");
    EXPECT_EQ(Open(kR, kShareR, CREATE_ALWAYS), "32");  // truncating is writing
    EXPECT_EQ(Get("file"), "data");
    CloseHandle(reader);
    // A refused claim is gone before the file is closed, so that it meets nobody.
    const int first = open(Host("file").c_str(), O_RDWR);
    const int refused = open(Host("file").c_str(), O_RDWR);
    const int third = open(Host("file").c_str(), O_RDWR);
    EXPECT_TRUE(coredll::ClaimUse(first, {true, false, false, true}));
    EXPECT_FALSE(coredll::ClaimUse(refused, {false, true, false, false}));
    EXPECT_TRUE(coredll::ClaimUse(third, {true, false, false, true}));
    close(first);
    close(third);
    EXPECT_EQ(Outcome([&] { return DeleteFileW(Wide("file").c_str()); }), "ok");
    close(refused);
}

TEST_F(Sharing, AKilledProcessKeepsNothing) {
    int ready[2];
    ASSERT_EQ(pipe(ready), 0);
    const pid_t child = fork();
    if (child == 0) {
        HANDLE file = nullptr;
        (void)!write(ready[1], Open(kR | kW, 0, OPEN_EXISTING, &file).data(), 2);
        pause();
    }
    char outcome[3] = "";
    ASSERT_EQ(read(ready[0], outcome, 2), 2);
    EXPECT_STREQ(outcome, "ok");
    EXPECT_EQ(Open(kR, kShareR, OPEN_EXISTING), "32");
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
    EXPECT_EQ(Open(kR | kW, 0, OPEN_EXISTING), "ok");
}

TEST_F(Sharing, AnOpenFileKeepsItsNameAndContent) {
    Put("other", "other");
    const std::u16string name = Wide("file"), other = Wide("other");
    for (const DWORD access : {kR, kW, DWORD{0}}) {
        SCOPED_TRACE(access);
        HANDLE file = nullptr;
        ASSERT_EQ(Open(access, kShareRW, OPEN_EXISTING, &file), "ok");
        EXPECT_EQ(Outcome([&] { return DeleteFileW(name.c_str()); }), "32");
        EXPECT_EQ(Outcome([&] { return MoveFileW(name.c_str(), Wide("new").c_str()); }), "32");
        EXPECT_EQ(Outcome([&] { return CopyFileW(other.c_str(), name.c_str(), FALSE); }), "32");
        const bool written = access == kW;
        EXPECT_EQ(Outcome([&] { return CopyFileW(name.c_str(), other.c_str(), FALSE); }),
                  written ? "32" : "ok");
        CloseHandle(file);
    }
    EXPECT_EQ(Outcome([&] { return CopyFileW(name.c_str(), name.c_str(), FALSE); }), "32");
    EXPECT_EQ(Get("file") + Get("other"), "datadata");
    EXPECT_EQ(Outcome([&] { return DeleteFileW(name.c_str()); }), "ok");
}

}  // namespace
}  // namespace zelto::test
